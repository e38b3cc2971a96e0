#pragma once

#include <functional>
#include <string>
#include <vector>

namespace veloria {

/// A message in plain text to the user, which may go unnoticed.
struct Notification {
  struct Action {
    std::string label;
    std::function<void()> chosen;
  };

  std::string title;
  std::string text;                ///< shown together with the actions
  std::vector<Action> actions;     ///< two at most are shown
  std::string textWithoutActions;  ///< shown instead if the desktop has no actions
};

/// Port: shows notifications. Main thread; never waits for the desktop.
class Notifier {
 public:
  virtual ~Notifier() = default;
  /// `delivered` is called later, once the desktop has accepted the notification; never without a notification service.
  /// A chosen action is called as long as the notifier exists.
  virtual void show(Notification notification, std::function<void()> delivered) = 0;
};

}  // namespace veloria
