#pragma once

#include <memory>

#include "ports/Notifier.h"

namespace veloria {

/// Notifications as small windows of the program's own, which stay until they are closed and block nothing. Main
/// thread, with a QApplication that outlives it.
class DialogNotifier final : public Notifier {
 public:
  DialogNotifier();
  ~DialogNotifier() override;

  void show(Notification notification, std::function<void()> delivered) override;

 private:
  struct Windows;
  std::unique_ptr<Windows> windows_;
};

}  // namespace veloria
