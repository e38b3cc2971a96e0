#pragma once

#include <functional>
#include <memory>

#include "app/AppStatus.h"
#include "ports/PanelClearing.h"
#include "ports/ScreenProvider.h"
#include "ports/SettingsPresenter.h"
#include "settings/SettingsEditor.h"
#include "system/LoginItem.h"
#include "ui/cards/CommandLineCard.h"
#include "ui/cards/Readouts.h"
#include "ui/cards/SystemFactsCard.h"
#include "ui/preview/PreviewGpu.h"
#include "ui/script/ScriptCard.h"

class QWidget;
namespace veloria {

/// The settings window of the running application: made on first use, then kept. Main thread, with a
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
    LoginItem* loginItem = nullptr;
    SystemState* system = nullptr;
    SystemPanes panes{};
    PanelClearing* panel = nullptr;  ///< null: no card for it
    /// Called when the window opens and closes.
    std::function<void(bool)> visibleChanged;
  };

  explicit SettingsHost(Ports ports);
  ~SettingsHost() override;

  void show(const std::optional<Rect>& place) override;
  void close() override;
  bool isShown() const override;

  /// The window, made on first use, for a platform that embeds it instead of calling show(). This object owns it.
  QWidget& embeddable();

 private:
  struct Previews;
  class Window;
  Window& window(bool byIcon);

  Ports ports_;
  ScriptDraft draft_;
  std::unique_ptr<Previews> previews_;
  std::unique_ptr<Window> window_;
};

/// What the settings window shows of this status. The figures are those of `mainScreen`, which may be null; there are
/// none while nothing is drawn.
Readouts readoutsOf(const AppStatus& status, const Screen* mainScreen);

}  // namespace veloria
