#include "ui/VisibilityWatch.h"

#include <QEvent>
#include <utility>

namespace veloria {

VisibilityWatch::VisibilityWatch(QWidget* watched, std::function<void(bool seen)> changed)
    : watched_(watched), changed_(std::move(changed)) {
  watched->installEventFilter(this);
}

bool VisibilityWatch::eventFilter(QObject* object, QEvent* event) {
  const bool ofWatched = object == watched_;
  if (ofWatched && event->type() == QEvent::Show) update(true);
  if (ofWatched && event->type() == QEvent::Hide) update(false);
  if (object == window_ && event->type() == QEvent::WindowStateChange) update(watched_->isVisible());
  return false;
}

void VisibilityWatch::update(bool shown) {
  if (QWidget* window = watched_->window(); window != window_) {
    if (window_ && window_ != watched_) window_->removeEventFilter(this);
    window_ = window;
    window->installEventFilter(this);
  }
  const bool seen = shown && !window_->isMinimized();
  if (std::exchange(seen_, seen) != seen) changed_(seen);
}

}  // namespace veloria
