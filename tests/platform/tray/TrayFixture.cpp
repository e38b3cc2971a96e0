#include "TrayFixture.h"

#include <QMenu>

namespace veloria::tests {

void TrayTest::startOnX11() {
  missing_ = desktop::DesktopSession::missing({"xdotool"});
  startBus();
  if (!missing_.empty()) return;
  x11_ = std::make_unique<desktop::DesktopSession>();
  x11_->setIdle([] { QApplication::processEvents(QEventLoop::AllEvents); });
  startApplication("xcb", x11_->environment());
}

void TrayTest::startOnWayland() {
  missing_ = desktop::SwaySession::missing();
  startBus();
  if (!missing_.empty()) return;
  wayland_ = std::make_unique<desktop::SwaySession>(desktop::SwaySession::Options{});
  startApplication("wayland", wayland_->environment());
}

void TrayTest::startBus() {
  if (missing_.empty()) missing_ = PrivateBus::missing();
  if (!missing_.empty()) return;
  folder_ = std::make_unique<TemporaryFolder>();
  bus_ = std::make_unique<PrivateBus>(*folder_, "bus");
  qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(bus_->address()));
}

void TrayTest::startApplication(const char* platform, const std::map<std::string, std::string>& environment) {
  for (const auto& [name, value] : environment) qputenv(name.c_str(), QByteArray::fromStdString(value));
  qputenv("QT_QPA_PLATFORM", platform);
  static int argc = 1;
  static char name[] = "veloria";
  static char* argv[] = {name, nullptr};
  QApplication::setQuitOnLastWindowClosed(false);
  application_ = std::make_unique<QApplication>(argc, argv);
}

void TrayTest::TearDownTestSuite() {
  application_.reset();
  x11_.reset();
  wayland_.reset();
  bus_.reset();
  folder_.reset();
}

void TrayTest::SetUp() {
  if (!missing_.empty()) GTEST_SKIP() << missing_;
}

void TrayTest::TearDown() {
  if (IsSkipped()) return;
  closeMenu();
  controller_.reset();
  icon_.reset();
}

void TrayTest::startIcon() {
  icon_ = std::make_unique<TrayIcon>([this](std::string_view text) { log_.emplace_back(text); });
  controller_ = std::make_unique<MenuBarController>(MenuBarController::Ports{.settings = &editor_,
                                                                             .statusItem = icon_.get(),
                                                                             .presenter = &presenter_,
                                                                             .terminate = [this] { ++ends_; },
                                                                             .version = "1.2"});
  controller_->onResetSim = [this] { ++resets_; };
}

bool TrayTest::waitFor(const std::function<bool()>& condition, double seconds) {
  return desktop::poll(seconds, [&] {
    QApplication::processEvents(QEventLoop::AllEvents);
    return condition();
  });
}

void TrayTest::closeMenu() {
  while (QWidget* popup = QApplication::activePopupWidget()) popup->close();
}

}  // namespace veloria::tests
