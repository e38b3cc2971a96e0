#include "platform/qt/DescriptorWatch.h"

#include <QSocketNotifier>
#include <utility>

namespace veloria {

std::shared_ptr<void> watchDescriptor(int descriptor, std::function<void()> onReadable) {
  auto notifier = std::make_shared<QSocketNotifier>(descriptor, QSocketNotifier::Read);
  auto action = std::make_shared<std::function<void()>>(std::move(onReadable));
  QObject::connect(notifier.get(), &QSocketNotifier::activated, [action] {
    // The watch, and this closure with it, may end inside the call.
    const auto kept = action;  // NOLINT(performance-unnecessary-copy-initialization)
    (*kept)();
  });
  return notifier;
}

}  // namespace veloria
