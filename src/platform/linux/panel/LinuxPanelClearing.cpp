#include "platform/linux/panel/LinuxPanelClearing.h"

#include <QMetaObject>
#include <QObject>
#include <optional>
#include <utility>

#include "base/MediaClock.h"
#include "platform/linux/panel/PanelChange.h"
#include "platform/linux/panel/RunningPanel.h"
#include "platform/qt/WorkerThread.h"

namespace veloria {

namespace {

using enum PanelKind;
using Way = PanelClearing::Way;
using Offer = PanelClearing::Offer;

constexpr double scanSeconds = 5;
constexpr double lookSeconds = 30;

std::unique_ptr<PanelSettings> settingsOf(PanelKind kind, const Environment& environment) {
  switch (kind) {
    case xfce:
      return xfcePanel(environment);
    case mate:
      return matePanel(environment);
    case plasma:
      return plasmaPanel(environment);
    case cinnamon:
      return cinnamonPanel(environment);
    default:
      return nullptr;
  }
}

/// In the journal. Null: this panel has no settings that can be changed from here.
const char* nameOf(PanelKind kind) {
  switch (kind) {
    case xfce:
      return "xfce";
    case mate:
      return "mate";
    case plasma:
      return "plasma";
    case cinnamon:
      return "cinnamon";
    default:
      return nullptr;
  }
}

Offer offerFor(std::optional<PanelKind> kind) {
  if (!kind) {
    return {Way::none,
            "Veloria does not know this desktop's panel: make it transparent in its own settings, or choose the layer "
            "\"Over the bar\".",
            ""};
  }
  switch (*kind) {
    case gnome:
      return {Way::none, "Veloria can't make GNOME's panel clear.", ""};
    case xfce:
      return {Way::oneClick, "The panels become clear and their text light. They restart for a moment.", ""};
    case mate:
      return {Way::oneClick, "The panel becomes clear and its text light. It restarts for a moment.", ""};
    case plasma:
      return {Way::oneClick,
              "Plasma gets a style that is like yours, but has a clear panel and light text, in its menus too.", ""};
    case cinnamon:
      return {Way::oneClick, "Cinnamon gets a small extension that makes its panels clear.", ""};
    case lxqt:
      return {
          Way::byHand,
          "Right-click the panel and choose Configure Panel. Under Styling, switch on the background colour and set "
          "its opacity to 0.",
          ""};
    case tint2:
      return {
          Way::byHand,
          "In ~/.config/tint2/tint2rc, replace the lines that begin with disable_transparency and panel_background_id "
          "by these. Then run: killall -SIGUSR1 tint2",
          "disable_transparency = 0\npanel_background_id = 0"};
    case polybar:
      return {
          Way::byHand,
          "In ~/.config/polybar/config.ini, replace the line that begins with background in the section of your bar "
          "by this one. Then run: polybar-msg cmd restart",
          "background = #00000000"};
    case waybar:
      return {Way::byHand,
              "Add these lines to the end of ~/.config/waybar/style.css; if there is no such file, copy "
              "/etc/xdg/waybar/style.css there first. Then run: killall -SIGUSR2 waybar",
              "window#waybar {\n  background: transparent;\n  border: none;\n}"};
    case swaybar:
      return {
          Way::byHand,
          "In ~/.config/sway/config, put this line into the block colors of the block bar. Then run: swaymsg reload",
          "background #00000000"};
  }
  return {};
}

/// On the thread that may wait.
class PanelWorker final : public QObject {
 public:
  using Work = PanelOutcome (*)(PanelSettings&, const PanelJournal&);

  explicit PanelWorker(Environment environment) : environment_(std::move(environment)) {}

  PanelOutcome run(PanelKind kind, Work work) {
    if (kind_ != kind) settings_ = settingsOf(kind, environment_);
    kind_ = kind;
    return work(*settings_, PanelJournal(environment_, nameOf(kind)));
  }
  void stop() {
    settings_.reset();
    kind_.reset();
  }

 private:
  Environment environment_;
  std::optional<PanelKind> kind_;
  std::unique_ptr<PanelSettings> settings_;
};

}  // namespace

class LinuxPanelClearing::Parts final : public QObject {
 public:
  Parts(const Environment& environment, std::filesystem::path processes)
      : environment_(environment), processes_(std::move(processes)), thread_(environment) {
    update();
  }

  Offer offer() {
    update();
    return offerFor(kind_);
  }
  bool letsLightThrough() const { return isClear_; }
  bool canRestore() const { return canRestore_; }

  void clear(Answer answer) {
    update();
    hasSettings() ? run(clearPanel, std::move(answer)) : answerLater(std::move(answer), offerFor(kind_).text, "");
  }
  void restore(Answer answer) {
    update();
    hasSettings() ? run(restorePanel, std::move(answer))
                  : answerLater(std::move(answer), "", "There is nothing to put back.");
  }

  void setChangeHandler(std::function<void()> handler) { handler_ = std::move(handler); }

 private:
  bool hasSettings() const { return kind_ && nameOf(*kind_) != nullptr; }

  void update() {
    const double now = mediaTime();
    if (scanned_ && now - *scanned_ < scanSeconds) return;
    scanned_ = now;
    const auto kind = runningPanel(environment_, processes_);
    const bool isNew = kind != kind_;
    kind_ = kind;
    if (isNew) {
      const auto memories = hasSettings() ? PanelJournal(environment_, nameOf(*kind_)).read() : PanelMemories();
      canRestore_ = isClear_ = memories && !memories->empty();  // until the desktop has told
    }
    if (!hasSettings() || (!isNew && now - lookedAt_ < lookSeconds)) return;
    lookedAt_ = now;
    run(lookAtPanel, {});
  }

  void run(PanelWorker::Work work, Answer answer) {
    thread_.post([this, kind = *kind_, work, answer = std::move(answer)](PanelWorker& worker) {
      QMetaObject::invokeMethod(
          this, [this, kind, outcome = worker.run(kind, work), answer] { accept(kind, outcome, answer); });
    });
  }

  void answerLater(Answer answer, const std::string& problem, const std::string& note) {
    QMetaObject::invokeMethod(
        this, [answer = std::move(answer), problem, note] { answer(problem, note); }, Qt::QueuedConnection);
  }

  void accept(PanelKind kind, const PanelOutcome& outcome, const Answer& answer) {
    const bool changed = kind == kind_ && (isClear_ != outcome.isClear || canRestore_ != outcome.canRestore);
    if (changed) {
      isClear_ = outcome.isClear;
      canRestore_ = outcome.canRestore;
    }
    const auto handler = changed ? handler_ : nullptr;
    if (handler) handler();
    if (answer) answer(outcome.problem, outcome.note);
  }

  Environment environment_;
  std::filesystem::path processes_;
  std::function<void()> handler_;
  std::optional<double> scanned_;
  double lookedAt_ = 0;
  std::optional<PanelKind> kind_;
  bool isClear_ = false;
  bool canRestore_ = false;
  WorkerThread<PanelWorker> thread_;  ///< last: it reports to the other members until it ends
};

LinuxPanelClearing::LinuxPanelClearing(const Environment& environment, const std::filesystem::path& processes)
    : parts_(std::make_unique<Parts>(environment, processes)) {}

LinuxPanelClearing::~LinuxPanelClearing() = default;

Offer LinuxPanelClearing::offer() const {
  return parts_->offer();
}

bool LinuxPanelClearing::letsLightThrough() const {
  return parts_->letsLightThrough();
}

bool LinuxPanelClearing::canRestore() const {
  return parts_->canRestore();
}

void LinuxPanelClearing::clear(Answer answer) {
  parts_->clear(std::move(answer));
}

void LinuxPanelClearing::restore(Answer answer) {
  parts_->restore(std::move(answer));
}

void LinuxPanelClearing::setChangeHandler(std::function<void()> handler) {
  parts_->setChangeHandler(std::move(handler));
}

std::unique_ptr<PanelClearing> makePanelClearing(const Environment& environment,
                                                 const std::function<std::unique_ptr<PanelClearing>()>& makeForGnome) {
  if (makeForGnome && runningPanel(environment) == gnome) return makeForGnome();
  return std::make_unique<LinuxPanelClearing>(environment);
}

}  // namespace veloria
