#pragma once

#include <functional>
#include <memory>

#include "ports/SettingsPresenter.h"
#include "settings/SettingsEditor.h"
#include "ui/CommandLineCard.h"
#include "ui/LoginItemCard.h"
#include "ui/PreviewGpu.h"
#include "ui/Readouts.h"
#include "ui/ScriptCard.h"
#include "ui/SystemFactsCard.h"

class QWidget;

namespace veloria {

/// The settings window of the running application: made when it is first asked for, then kept. Main thread, with a
/// QApplication that outlives it.
class SettingsHost final : public SettingsPresenter {
 public:
  struct Ports {
    SettingsEditor* settings = nullptr;
    ReadoutSource readouts;
    PreviewGpuFactory makeGpu;
    /// The record to preview: what is drawn now, or would be.
    std::function<NimbraConfig()> drivenConfig;
    CommandLinePorts commandLine;
    LoginItemPorts loginItem;
    SystemFactsPorts systemFacts;
    /// Told when the window opens and closes.
    std::function<void(bool)> visibleChanged;
  };

  explicit SettingsHost(Ports ports);
  ~SettingsHost() override;

  void show(const std::optional<Rect>& place) override;
  void close() override;
  bool isShown() const override;

  /// The window, made when it is first asked for, for a platform that shows it inside something of its own instead of
  /// calling show(). It stays this object's.
  QWidget& embeddable();

 private:
  struct Studio;
  class Window;
  Window& window(bool byIcon);

  Ports ports_;
  ScriptDraft draft_;
  std::unique_ptr<Studio> studio_;
  std::unique_ptr<Window> window_;
};

}  // namespace veloria
