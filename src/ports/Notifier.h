#pragma once

#include <functional>
#include <string>
#include <vector>

namespace veloria {

/// A message to the person at the desktop that can be overlooked, in plain text.
struct Notification {
  struct Action {
    std::string label;
    std::function<void()> chosen;
  };

  std::string title;
  std::string text;                ///< shown together with the actions
  std::vector<Action> actions;     ///< two at most are shown
  std::string textWithoutActions;  ///< shown instead where the desktop offers no actions
};

/// Port: shows notifications. Main thread; never waits for the desktop.
class Notifier {
 public:
  virtual ~Notifier() = default;
  /// `delivered` is called, later, when the desktop has taken it; never where there is nobody to take it. An action is
  /// called when it is chosen, as long as the notifier lives.
  virtual void show(Notification notification, std::function<void()> delivered) = 0;
};

}  // namespace veloria
