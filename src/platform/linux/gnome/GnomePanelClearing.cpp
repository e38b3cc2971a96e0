#include "platform/linux/gnome/GnomePanelClearing.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QTimer>
#include <QVariantList>
#include <functional>
#include <string>
#include <utility>

#include "ClearingMark.h"
#include "ShellExtension.h"
#include "WantedService.h"
#include "platform/linux/bus/BusCall.h"
#include "platform/linux/bus/BusService.h"
#include "platform/linux/files/DesktopNames.h"
#include "platform/posix/files/UserFolders.h"

namespace veloria {

namespace {

using State = ShellExtension::State;
using Stage = ClearingMark::Stage;

const auto shellPath = QStringLiteral("/org/gnome/Shell");
const auto extensions = QStringLiteral("org.gnome.Shell.Extensions");
const auto properties = QStringLiteral("org.freedesktop.DBus.Properties");
const auto allExtensions = QStringLiteral("UserExtensionsEnabled");
constexpr int patienceMs = 5000;

constexpr const char* silent = "GNOME Shell does not answer.";
constexpr const char* busy = "The panel is being changed already.";
constexpr const char* logOut =
    "Log out and in again: GNOME finds new extensions only then. The panel is clear from then on.";

std::string problemIn(const QDBusMessage& reply) {
  if (reply.type() == QDBusMessage::ReplyMessage) return {};
  constexpr const char* silence[] = {"NoReply", "Timeout", "ServiceUnknown", "NameHasNoOwner", "Disconnected"};
  const QString name = reply.errorName().section(QLatin1Char('.'), -1);
  for (const char* each : silence) {
    if (name == QLatin1String(each)) return silent;
  }
  return "GNOME Shell refuses: " + reply.errorMessage().toStdString();
}

class GnomePanelClearing final : public PanelClearing {
 public:
  explicit GnomePanelClearing(const Environment& environment)
      : environment_(environment),
        bus_(QDBusConnection::sessionBus()),
        mark_(stateFolder(environment)),
        wanted_(bus_),
        runs_(
            bus_, shellService, [this] { return followShell(); }, [this] { forgetShell(); }) {
    patience_.setSingleShot(true);
    QObject::connect(&patience_, &QTimer::timeout, &patience_,
                     [this] { arrive("GNOME Shell did not switch Veloria's extension."); });
  }

  Offer offer() const override;
  bool letsLightThrough() const override { return extension_.state == State::enabled; }
  bool canRestore() const override;
  void clear(Answer answer) override;
  void restore(Answer answer) override;
  void setWanted(bool wanted) override { wanted_.setWanted(wanted); }
  void setChangeHandler(std::function<void()> handler) override {
    changed_ = std::make_shared<std::function<void()>>(std::move(handler));
  }

 private:
  using Next = std::function<void(const std::string& problem)>;

  std::unique_ptr<QObject> followShell();
  void forgetShell();
  void acceptShell(const QDBusMessage& reply);
  void acceptExtension(const QDBusMessage& reply);
  void noteChange();

  bool isWaiting() const { return mark_.value() && mark_.value()->stage == Stage::waiting; }
  void enable(Answer answer);
  void takeBack(Answer answer, const std::string& problem);
  void takeBackSwitch(const Answer& answer, const std::string& problem);
  void finish(const Answer& answer, const std::string& problem);
  void later(Answer answer, const std::string& problem, const std::string& note = {});

  void switchExtension(bool on, Next next);
  void switchAll(bool on, const Next& next);
  void arrive(const std::string& problem);
  void call(const QString& interface, const char* method, const QVariantList& arguments,
            std::function<void(const QDBusMessage&)> then) {
    callOnBus(bus_, {shellService, shellPath, interface, QString::fromLatin1(method)}, arguments, &context_,
              std::move(then));
  }

  struct Seen {
    Offer offer;
    bool clear = false;
    bool canRestore = false;
    bool operator==(const Seen&) const = default;
  };

  Environment environment_;
  QDBusConnection bus_;
  ClearingMark mark_;
  WantedService wanted_;

  bool asked_ = false;    ///< the shell has answered, or is known not to
  bool answers_ = false;  ///< the last answer was good
  bool allOn_ = false;    ///< GNOME's switch for all extensions
  QString version_;
  std::optional<QString> uuid_;
  bool extensionKnown_ = false;
  bool installed_ = false;
  ShellExtension extension_;

  bool working_ = false;
  bool goal_ = false;
  Next next_;  ///< waits for `goal_`
  Seen seen_;
  std::shared_ptr<std::function<void()>> changed_ = std::make_shared<std::function<void()>>();

  QObject context_;  ///< owns the calls under way
  QTimer patience_;
  std::unique_ptr<BusReader> extensionReader_;
  ServiceRuns runs_;
};

PanelClearing::Offer GnomePanelClearing::offer() const {
  if (!asked_) return {};
  if (!answers_) return {Way::none, silent, {}};
  if (!uuid_ || extension_.state == State::outOfDate) {
    return {Way::none, "Veloria's extension is for GNOME Shell 42 to 49; this is " + version_.toStdString() + ".", {}};
  }
  if (!extensionKnown_) return {};
  if (extension_.state == State::failed) {
    return {Way::none, "GNOME Shell cannot run Veloria's extension: " + extension_.error, {}};
  }
  if (extension_.state == State::unknown && !installed_) {
    return {Way::none,
            "GNOME's panel becomes clear by an extension that comes with Veloria, and that is not installed here.",
            {}};
  }
  if (extension_.state == State::unknown && isWaiting()) return {Way::none, logOut, {}};
  if (!allOn_) {
    return {Way::afterAsking,
            "GNOME's extensions are switched off. This switches them on, with every other one that you had chosen.",
            {}};
  }
  return {Way::oneClick, {}, {}};
}

bool GnomePanelClearing::canRestore() const {
  if (!mark_.value()) return false;
  return isWaiting() || extension_.state == State::enabled || (mark_.value()->switchedOn && allOn_);
}

void GnomePanelClearing::clear(Answer answer) {
  if (working_) return later(std::move(answer), busy);
  if (extension_.state == State::enabled) return later(std::move(answer), {});
  if (isWaiting() && extension_.state == State::unknown) return later(std::move(answer), {}, logOut);
  const Offer now = offer();
  if (now.way == Way::none) return later(std::move(answer), now.text.empty() ? silent : now.text);
  if (extension_.state != State::unknown) return enable(std::move(answer));
  const auto noted = mark_.set({Stage::waiting, !allOn_});
  later(std::move(answer), noted ? std::string() : noted.error(), noted ? logOut : "");
  noteChange();
}

void GnomePanelClearing::enable(Answer answer) {
  if (const auto noted = mark_.set({Stage::enabled, !allOn_}); !noted) return later(std::move(answer), noted.error());
  working_ = true;
  const auto enableIt = [this, answer](const std::string& problem) {
    if (!problem.empty()) return takeBack(answer, problem);
    switchExtension(true, [this, answer](const std::string& failure) {
      failure.empty() ? finish(answer, {}) : takeBack(answer, failure);
    });
  };
  allOn_ ? enableIt({}) : switchAll(true, enableIt);
}

void GnomePanelClearing::restore(Answer answer) {
  if (working_) return later(std::move(answer), busy);
  if (!mark_.value()) return later(std::move(answer), {});
  if (isWaiting()) {
    mark_.clear();
    later(std::move(answer), {});
    return noteChange();
  }
  if (!answers_) return later(std::move(answer), silent);
  takeBack(std::move(answer), {});
}

/// Answers with `problem`, or with what goes wrong now.
void GnomePanelClearing::takeBack(Answer answer, const std::string& problem) {
  working_ = true;
  if (extension_.state != State::enabled) return takeBackSwitch(answer, problem);
  switchExtension(false, [this, answer, problem](const std::string& failure) {
    failure.empty() ? takeBackSwitch(answer, problem) : finish(answer, failure);
  });
}

void GnomePanelClearing::takeBackSwitch(const Answer& answer, const std::string& problem) {
  const auto end = [this, answer, problem](const std::string& failure) {
    if (failure.empty()) mark_.clear();
    finish(answer, problem.empty() ? failure : problem);
  };
  mark_.value() && mark_.value()->switchedOn&& allOn_ ? switchAll(false, end) : end({});
}

void GnomePanelClearing::finish(const Answer& answer, const std::string& problem) {
  working_ = false;
  noteChange();
  later(answer, problem);
}

void GnomePanelClearing::later(Answer answer, const std::string& problem, const std::string& note) {
  if (!answer) return;
  QTimer::singleShot(0, &context_, [answer = std::move(answer), problem, note] { answer(problem, note); });
}

/// `next` is called when the shell has done it.
void GnomePanelClearing::switchExtension(bool on, Next next) {
  goal_ = on;
  next_ = std::move(next);
  patience_.start(patienceMs);
  call(extensions, on ? "EnableExtension" : "DisableExtension", {*uuid_}, [this](const QDBusMessage& reply) {
    const std::string problem = problemIn(reply);
    if (!problem.empty()) return arrive(problem);
    if (!isReply(reply, "b") || !reply.arguments().constFirst().toBool()) return arrive("GNOME Shell refuses.");
    if (extensionReader_) extensionReader_->read();
  });
}

void GnomePanelClearing::arrive(const std::string& problem) {
  patience_.stop();
  if (next_) std::exchange(next_, {})(problem);
}

void GnomePanelClearing::switchAll(bool on, const Next& next) {
  call(properties, "Set", {extensions, allExtensions, QVariant::fromValue(QDBusVariant(on))},
       [this, on, next](const QDBusMessage& reply) {
         const std::string problem = problemIn(reply);
         if (problem.empty()) allOn_ = on;
         next(problem);
       });
}

std::unique_ptr<QObject> GnomePanelClearing::followShell() {
  const BusSignalName changed{shellService, shellPath, properties, QStringLiteral("PropertiesChanged"), {extensions}};
  return std::make_unique<BusReader>(bus_, BusMethod{shellService, shellPath, properties, QStringLiteral("GetAll")},
                                     QVariantList{extensions}, std::vector{changed},
                                     [this](const QDBusMessage& reply) { acceptShell(reply); });
}

void GnomePanelClearing::forgetShell() {
  extensionReader_.reset();
  extension_ = {};
  uuid_.reset();
  asked_ = true;
  answers_ = extensionKnown_ = false;
  arrive(silent);
  noteChange();
}

void GnomePanelClearing::acceptShell(const QDBusMessage& reply) {
  const auto values = propertiesIn(reply);
  asked_ = true;
  answers_ = values.has_value();
  if (values) {
    version_ = values->value(QStringLiteral("ShellVersion")).toString().left(32);
    allOn_ = asBool(values->value(allExtensions)).value_or(false);
  }
  const auto uuid = values ? shellExtensionFor(version_) : std::nullopt;
  if (uuid != uuid_) {
    uuid_ = uuid;
    extension_ = {};
    extensionKnown_ = false;
    extensionReader_.reset();
  }
  if (uuid_ && !extensionReader_) {
    const BusSignalName changed{shellService, shellPath, extensions, QStringLiteral("ExtensionStateChanged"), {*uuid_}};
    extensionReader_ = std::make_unique<BusReader>(
        bus_, BusMethod{shellService, shellPath, extensions, QStringLiteral("GetExtensionInfo")}, QVariantList{*uuid_},
        std::vector{changed}, [this](const QDBusMessage& answer) { acceptExtension(answer); });
  }
  noteChange();
}

void GnomePanelClearing::acceptExtension(const QDBusMessage& reply) {
  const auto info = propertiesIn(reply);
  if (!info) return;
  extension_ = shellExtensionIn(*info);
  extensionKnown_ = true;
  installed_ = extension_.state != State::unknown || isShellExtensionInstalled(*uuid_, environment_);
  if (next_ && (extension_.state == State::enabled) == goal_) arrive({});
  if (next_ && goal_ && extension_.state == State::failed) arrive(offer().text);
  const bool agreed = isWaiting() && (allOn_ || mark_.value()->switchedOn);
  if (!working_ && agreed && extension_.state == State::disabled) enable({});
  if (!working_ && isWaiting() && extension_.state == State::enabled) mark_.clear();
  noteChange();
}

void GnomePanelClearing::noteChange() {
  const Seen now{offer(), letsLightThrough(), canRestore()};
  if (now == std::exchange(seen_, now)) return;
  const auto handler = changed_;
  if (*handler) (*handler)();
}

}  // namespace

std::unique_ptr<PanelClearing> makeGnomePanelClearing(const Environment& environment) {
  if (!isDesktop(environment, "gnome")) return nullptr;
  return std::make_unique<GnomePanelClearing>(environment);
}

}  // namespace veloria
