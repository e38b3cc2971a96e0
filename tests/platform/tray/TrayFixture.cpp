#include "TrayFixture.h"

#include <QMenu>

namespace veloria::tests {

void TrayTest::SetUpTestSuite() {
  if (!PrivateBus::missing().empty() || !desktop::DesktopSession::missing({"xdotool"}).empty()) return;
  folder_ = std::make_unique<TemporaryFolder>();
  bus_ = std::make_unique<PrivateBus>(*folder_, "bus");
  desktop_ = std::make_unique<desktop::DesktopSession>();
  qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(bus_->address()));
  for (const auto& [name, value] : desktop_->environment()) qputenv(name.c_str(), QByteArray::fromStdString(value));
  qputenv("QT_QPA_PLATFORM", "xcb");
  static int argc = 1;
  static char name[] = "veloria";
  static char* argv[] = {name, nullptr};
  QApplication::setQuitOnLastWindowClosed(false);
  application_ = std::make_unique<QApplication>(argc, argv);
  desktop_->setIdle([] { QApplication::processEvents(QEventLoop::AllEvents); });
}

void TrayTest::TearDownTestSuite() {
  application_.reset();
  desktop_.reset();
  bus_.reset();
  folder_.reset();
}

void TrayTest::SetUp() {
  if (const auto missing = PrivateBus::missing(); !missing.empty()) GTEST_SKIP() << missing;
  if (const auto missing = desktop::DesktopSession::missing({"xdotool"}); !missing.empty()) GTEST_SKIP() << missing;
}

void TrayTest::TearDown() {
  closeMenu();
  controller_.reset();
  icon_.reset();
}

void TrayTest::startIcon() {
  icon_ = std::make_unique<TrayIcon>([this](std::string_view text) { log_.emplace_back(text); });
  controller_ = std::make_unique<MenuBarController>(MenuBarController::Ports{.settings = &settings_,
                                                                             .statusItem = icon_.get(),
                                                                             .presenter = &presenter_,
                                                                             .terminate = [this] { ++ends_; },
                                                                             .version = "1.2"});
  controller_->onResetSim = [this] { ++resets_; };
}

bool TrayTest::waitFor(const std::function<bool()>& condition, double seconds) {
  return desktop_->waitUntil(condition, seconds);
}

void TrayTest::closeMenu() {
  while (QWidget* popup = QApplication::activePopupWidget()) popup->close();
}

}  // namespace veloria::tests
