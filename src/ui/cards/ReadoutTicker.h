#pragma once

#include <QTimer>
#include <functional>

#include "base/Observable.h"
#include "ui/VisibilityWatch.h"
#include "ui/cards/Readouts.h"

namespace veloria {

/// Asks the running program how it is while a window is seen, four times a second, and hands the answers on: one timer
/// for all that shows facts. Main thread.
class ReadoutTicker : public QObject {
  Q_OBJECT

 public:
  static constexpr int intervalMs = 250;

  /// Belongs to `window`, and asks at once when that is shown.
  ReadoutTicker(QWidget* window, ReadoutSource source);

  /// Calls `show` at once with the last answer (empty before the first) and then with each new one.
  Subscription subscribe(std::function<void(const Readouts&)> show) { return last_.subscribe(std::move(show)); }

 private:
  void setRunning(bool on);
  void ask();

  ReadoutSource source_;
  Observable<Readouts> last_{Readouts()};
  QTimer timer_;
  VisibilityWatch watch_;
};

}  // namespace veloria
