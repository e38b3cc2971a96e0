#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QWidget>
#include <memory>
#include <string>
#include <utility>

#include "app/NimbraWindow.h"
#include "base/Log.h"
#include "gpu/metal/MetalFactory.h"
#include "main/GpuSetup.h"
#include "main/Platform.h"
#include "main/SettingsHost.h"
#include "platform/macos/capture/MacBarCaptureStream.h"
#include "platform/macos/shell/MacApplication.h"
#include "platform/macos/shell/MacStatusItem.h"
#include "platform/macos/shell/SettingsPopover.h"
#include "platform/macos/sources/MacAudioTap.h"
#include "platform/macos/sources/MacDesktopPicture.h"
#include "platform/macos/system/MacActivity.h"
#include "platform/macos/system/MacSystem.h"
#include "platform/macos/system/SystemRules.h"
#include "platform/macos/system/UserDefaultsStorage.h"
#include "platform/macos/windows/MacOverlayPanelFactory.h"
#include "platform/macos/windows/MacScreens.h"
#include "platform/macos/windows/WindowRules.h"
#include "ports/Notifier.h"
#include "ui/QtText.h"

namespace veloria {

std::unique_ptr<gpu::Device> makeDevice(const std::string& gpu, unsigned) {
  return gpu::metal::makeMetalDevice({.gpu = gpu});
}

std::vector<std::string> deviceLines() {
  std::vector<std::string> lines;
  for (const auto& device : gpu::metal::listDevices()) {
    lines.push_back(std::to_string(device.index) + "  " + device.name);
  }
  return lines;
}

namespace {

/// Notifications as small windows of the program's own, which stay until they are closed and block nothing.
class DialogNotifier final : public Notifier {
 public:
  void show(Notification notification, std::function<void()> delivered) override {
    auto* box = new QMessageBox(QMessageBox::Information, toQString(notification.title), toQString(notification.title),
                                QMessageBox::Close, &parent_);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setModal(false);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(toQString(notification.text));
    for (auto& action : notification.actions) {
      const auto* button = box->addButton(toQString(action.label), QMessageBox::AcceptRole);
      QObject::connect(button, &QPushButton::clicked, box, std::move(action.chosen));
    }
    box->show();
    QTimer::singleShot(0, &parent_, std::move(delivered));
  }

 private:
  QWidget parent_;  ///< owns the windows; never shown
};

/// The settings window as the content of the Mac's popover.
class PopoverSettings final : public SettingsContent {
 public:
  explicit PopoverSettings(SettingsHost& host) : host_(host) {}

  // On the Mac winId() is the address of the window's view.
  void* view() override { return reinterpret_cast<void*>(host_.embeddable().winId()); }
  // A window that is shown before its view is in the popover gets a frame of its own.
  void appeared() override { host_.embeddable().show(); }
  void disappeared() override { host_.embeddable().hide(); }

 private:
  SettingsHost& host_;
};

/// The Mac's screens, overlay windows and menu bar, and the GPU that draws into them.
class MacDesktop final : public Desktop {
 public:
  explicit MacDesktop(const Environment& environment)
      : panels_([this](void* layer) { return gpu::metal::makeSurface(*device_, layer); },
                debugWindowLevel(environment("NIMBRA_DEBUG_LEVEL"))),
        capture_([this] { return device_; }) {}

  const char* name() const override { return "macos"; }
  ScreenProvider& screens() override { return screens_; }
  std::optional<Screen> mainScreen() override { return screens_.mainScreen(); }
  OverlayPanelFactory& panels() override { return panels_; }
  std::unique_ptr<gpu::Device> makeDevice() override {
    auto device = veloria::makeDevice({});
    device_ = device.get();
    return device;
  }
  BarCaptureStream* captureStream() override { return &capture_; }
  PointerSource pointerSource() override { return macPointerSource(); }
  bool isFullScreen() override { return isFullScreenSpace(screens_.screens()); }

 private:
  gpu::Device* device_ = nullptr;
  MacScreenProvider screens_;
  MacOverlayPanelFactory panels_;
  MacBarCaptureStream capture_;
};

class MacPlatform final : public Platform {
 public:
  explicit MacPlatform(const Environment& environment) : environment_(environment) { setSystemLog(writeToSystemLog); }

  std::unique_ptr<SettingsStorage> makeSettingsStorage() override { return std::make_unique<UserDefaultsStorage>(); }

  std::unique_ptr<Desktop> openDesktop(TimerFactory&) override {
    becomeAccessory();
    return std::make_unique<MacDesktop>(environment_);
  }

  std::unique_ptr<DesktopPicture> makeDesktopPicture() override { return std::make_unique<MacDesktopPicture>(); }
  std::unique_ptr<AudioTap> makeAudioTap() override { return std::make_unique<MacAudioTap>(); }
  std::unique_ptr<SystemActivity> makeActivity() override { return std::make_unique<MacActivity>(); }
  std::unique_ptr<Notifier> makeNotifier() override { return std::make_unique<DialogNotifier>(); }

  std::unique_ptr<StatusItem> makeStatusItem() override {
    auto item = std::make_unique<MacStatusItem>();
    statusItem_ = item.get();
    return item;
  }
  std::unique_ptr<SettingsPresenter> makePopover(SettingsHost& host) override {
    content_ = std::make_unique<PopoverSettings>(host);
    return std::make_unique<SettingsPopover>(*content_, [this] { return statusItem_->anchor(); });
  }

  std::unique_ptr<SystemPort> makeSystem(Desktop&) override { return std::make_unique<MacSystem>(); }
  std::unique_ptr<LoginItemPort> makeLoginItem() override { return std::make_unique<MacLoginItem>(); }
  SystemServices::Ports services() const override { return {.command = bundledCommand(mainBundle())}; }
  SystemPanes panes() const override { return {.transparency = SystemPane::accessibilityDisplay, .tintsGlass = true}; }

  void alert(Notifier&, const std::string& message, const std::string& informative) override {
    showCriticalAlert(message, informative);
  }

 private:
  Environment environment_;
  MacStatusItem* statusItem_ = nullptr;
  std::unique_ptr<PopoverSettings> content_;
};

}  // namespace

std::unique_ptr<Platform> makePlatform(const Environment& environment) {
  return std::make_unique<MacPlatform>(environment);
}

void runAsHelper(int, char**) {}

}  // namespace veloria
