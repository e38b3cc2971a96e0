#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "PrivateBus.h"
#include "Process.h"
#include "app/MenuBarController.h"
#include "desktop/DesktopSession.h"
#include "desktop/SwaySession.h"
#include "platform/linux/tray/TrayIcon.h"

namespace veloria::tests {

class MemoryStorage final : public SettingsStorage {
 public:
  std::optional<std::string> read(std::string_view) override { return std::nullopt; }
  bool write(std::string_view, std::string_view) override { return true; }
};

class CountingPresenter final : public SettingsPresenter {
 public:
  void show(const std::optional<Rect>& at) override {
    shown = true;
    place = at;
    ++shows;
  }
  void close() override { shown = false; }
  bool isShown() const override { return shown; }

  bool shown = false;
  int shows = 0;
  std::optional<Rect> place;
};

/// The status icon of a real application on a desktop and a session bus of their own, with the controller behind it.
/// The application lives as long as the test program: what the library finds out about the desktop it keeps. Each suite
/// starts one of the desktops.
class TrayTest : public testing::Test {
 protected:
  static void startOnX11();
  static void startOnWayland();
  static void TearDownTestSuite();
  void SetUp() override;
  void TearDown() override;

  void startIcon();
  /// Runs the event loop until the condition holds.
  static bool waitFor(const std::function<bool()>& condition, double seconds = 20);
  /// Runs the event loop for a while in which nothing may happen.
  static void runFor(double seconds) {
    waitFor([] { return false; }, seconds);
  }
  static bool menuIsOpen() { return QApplication::activePopupWidget() != nullptr; }
  static void closeMenu();
  /// The desktop of startOnX11().
  static desktop::DesktopSession& desktop() { return *x11_; }
  static PrivateBus& bus() { return *bus_; }

  const NimbraConfig& config() const { return settings_.config(); }

  SettingsStore settings_{std::make_unique<MemoryStorage>(), [](std::string_view) { return std::nullopt; }};
  SettingsEditor editor_{settings_};
  CountingPresenter presenter_;
  std::vector<std::string> log_;
  int resets_ = 0;
  int ends_ = 0;
  std::unique_ptr<TrayIcon> icon_;
  std::unique_ptr<MenuBarController> controller_;

 private:
  static void startBus();
  static void startApplication(const char* platform, const std::map<std::string, std::string>& environment);

  inline static std::string missing_;
  inline static std::unique_ptr<TemporaryFolder> folder_;
  inline static std::unique_ptr<PrivateBus> bus_;
  inline static std::unique_ptr<desktop::DesktopSession> x11_;
  inline static std::unique_ptr<desktop::SwaySession> wayland_;
  inline static std::unique_ptr<QApplication> application_;
};

}  // namespace veloria::tests
