// Notifications to a mocked notification service on a bus of its own.

#include "platform/linux/notifications/DesktopNotifier.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QVariant>
#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "PrivateBus.h"
#include "Process.h"
#include "app/FirstMinute.h"
#include "platform/linux/files/OnceMark.h"

namespace veloria::tests {
namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");

class MemoryStorage final : public SettingsStorage {
 public:
  std::optional<std::string> read(std::string_view) override { return std::nullopt; }
  bool write(std::string_view, std::string_view) override { return true; }
};

/// What the service was told.
struct Told {
  QString title, body;
  QStringList actions;
};

class DesktopNotifierTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (!PrivateBus::missing().empty()) return;
    folder_ = std::make_unique<TemporaryFolder>();
    bus_ = std::make_unique<PrivateBus>(*folder_, "bus");
    qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(bus_->address()));
    static int argc = 1;
    static char name[] = "veloria";
    static char* argv[] = {name, nullptr};
    application_ = std::make_unique<QCoreApplication>(argc, argv);
  }

  static void TearDownTestSuite() {
    application_.reset();
    bus_.reset();
    folder_.reset();
  }

  void SetUp() override {
    if (const auto missing = PrivateBus::missing(); !missing.empty()) GTEST_SKIP() << missing;
  }

  void startService(const std::string& capabilities) {
    program_ =
        bus_->serve(service, {"-t", "notification_daemon", "-p", R"({"capabilities": ")" + capabilities + "\"}"});
  }

  static bool waitFor(const std::function<bool()>& condition, double seconds = 20) {
    return desktop::poll(seconds, [&] {
      QCoreApplication::processEvents(QEventLoop::AllEvents);
      return condition();
    });
  }

  static void runFor(double seconds) {
    waitFor([] { return false; }, seconds);
  }

  /// Shows a notification with two actions, each of which notes its letter.
  void show(const std::string& text = "text") {
    notifier_->show({.title = "title",
                     .text = text,
                     .actions = {{"A", [this] { chosen_ += 'a'; }}, {"B", [this] { chosen_ += 'b'; }}},
                     .textWithoutActions = "plain"},
                    [this] { ++delivered_; });
  }

  std::vector<Told> told() {
    std::vector<Told> result;
    const auto reply = bus_->mock(service, path, "GetMethodCalls", {"Notify"});
    const auto calls = qvariant_cast<QDBusArgument>(reply.constFirst());
    for (calls.beginArray(); !calls.atEnd();) {
      qulonglong time = 0;
      QVariantList arguments;
      calls.beginStructure();
      calls >> time >> arguments;
      calls.endStructure();
      result.push_back({arguments.value(3).toString(), arguments.value(4).toString(), listOf(arguments.value(5))});
    }
    calls.endArray();
    return result;
  }

  static QStringList listOf(const QVariant& value) {
    if (value.typeId() == QMetaType::QStringList) return value.toStringList();
    QStringList list;
    for (const QVariant& each : qdbus_cast<QVariantList>(value)) list << each.toString();
    return list.isEmpty() ? qdbus_cast<QStringList>(value) : list;
  }

  static void send(const QString& signal, const QString& signature, const QVariantList& arguments) {
    bus_->mock(service, path, "EmitSignal", {service, signal, signature, QVariant(arguments)});
  }

  void choose(uint notification, const QString& key) { send("ActionInvoked", "us", {notification, key}); }

  inline static std::unique_ptr<TemporaryFolder> folder_;
  inline static std::unique_ptr<PrivateBus> bus_;
  inline static std::unique_ptr<QCoreApplication> application_;
  std::unique_ptr<desktop::ChildProcess> program_;
  int delivered_ = 0;
  std::string chosen_;
  std::unique_ptr<DesktopNotifier> notifier_ = std::make_unique<DesktopNotifier>();
};

TEST_F(DesktopNotifierTest, theActionThatIsChosenIsDone) {
  startService("body actions");
  show();
  ASSERT_TRUE(waitFor([&] { return delivered_ == 1; }));
  const auto all = told();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].title, "title");
  EXPECT_EQ(all[0].body, "text");
  ASSERT_EQ(all[0].actions.size(), 4) << all[0].actions.join(" ").toStdString();
  EXPECT_EQ(all[0].actions[1], "A");
  EXPECT_EQ(all[0].actions[3], "B");

  choose(7, all[0].actions[0]);
  choose(1, "default");
  choose(1, "");
  send("ActionInvoked", "s", {"1"});
  send("ActionInvoked", "usu", {1U, all[0].actions[0], 1U});
  send("NotificationClosed", "uu", {7U, 2U});
  choose(1, all[0].actions[2]);
  ASSERT_TRUE(waitFor([&] { return !chosen_.empty(); }));
  EXPECT_EQ(chosen_, "b") << "and nothing else";
  send("NotificationClosed", "uu", {1U, 2U});
  choose(1, all[0].actions[0]);
  runFor(0.3);
  EXPECT_EQ(chosen_, "b") << "it is closed";
}

TEST_F(DesktopNotifierTest, theTextSuitsTheService) {
  const std::string text = "<b>1 & 2</b>";
  struct Case {
    const char* capabilities;
    QString body;
    int actions;
  };
  for (const Case& c : {Case{"body actions body-markup", "&lt;b&gt;1 &amp; 2&lt;/b&gt;", 4},
                        Case{"actions", "<b>1 & 2</b>", 4}, Case{"body", "plain", 0}, Case{"", "plain", 0}}) {
    program_.reset();
    startService(c.capabilities);
    delivered_ = 0;
    show(text);
    ASSERT_TRUE(waitFor([&] { return delivered_ == 1; })) << c.capabilities;
    EXPECT_EQ(told().at(0).body, c.body) << c.capabilities;
    EXPECT_EQ(told().at(0).actions.size(), c.actions) << c.capabilities;
  }
}

TEST_F(DesktopNotifierTest, withoutAServiceNothingHappens) {
  show();
  runFor(0.5);
  EXPECT_EQ(delivered_, 0);
}

TEST_F(DesktopNotifierTest, aServiceThatNeverAnswersHoldsNothingUp) {
  startService("body actions");
  program_->signal(SIGSTOP);
  const double began = desktop::now();
  show();
  show();
  runFor(0.3);
  notifier_.reset();
  EXPECT_LT(desktop::now() - began, 5);
  program_->signal(SIGCONT);
  runFor(0.3);
  EXPECT_EQ(delivered_, 0) << "the one who wanted to know is gone";
}

TEST_F(DesktopNotifierTest, answersThatAreNoneAreIgnored) {
  startService("body");
  const QString broken = "org.freedesktop.Notifications";
  bus_->mock(service, path, "AddMethod", {broken, "GetCapabilities", "", "s", "ret = 'actions'"});
  show();
  runFor(0.3);
  EXPECT_TRUE(told().empty());
  bus_->mock(service, path, "AddMethod", {broken, "GetCapabilities", "", "as", "ret = ['actions']"});
  bus_->mock(service, path, "AddMethod", {broken, "Notify", "susssasa{sv}i", "s", "ret = 'one'"});
  show();
  EXPECT_TRUE(waitFor([&] { return told().size() == 1; }));
  runFor(0.3);
  EXPECT_EQ(delivered_, 0);
}

TEST_F(DesktopNotifierTest, aNewcomerIsToldOnceAndOneClickBringsTheLight) {
  SettingsStore settings(std::make_unique<MemoryStorage>(), [](std::string_view) { return std::nullopt; });
  const OnceMark mark(folder_->file("state/Veloria"), "first-minute");
  const auto newcomer = [&] {
    return std::make_unique<FirstMinute>(FirstMinute::Ports{.settings = &settings,
                                                            .notifier = notifier_.get(),
                                                            .textCanBeKept = [] { return true; },
                                                            .wasTold = [&] { return mark.isSet(); },
                                                            .rememberTold = [&] { mark.set(); }});
  };
  const auto early = newcomer();
  early->lightIsHidden();
  runFor(0.5);
  EXPECT_FALSE(mark.isSet()) << "nobody was there to show it";
  startService("body actions");
  const auto first = newcomer();
  first->lightIsHidden();
  ASSERT_TRUE(waitFor([&] { return mark.isSet(); }));
  choose(1, told().at(0).actions.at(0));
  EXPECT_TRUE(waitFor([&] { return settings.config().layerMode == LayerMode::aboveMenuBar; }));
  EXPECT_TRUE(settings.config().preserveMenuBarText);

  settings.setConfig(NimbraConfig());
  newcomer()->lightIsHidden();
  runFor(0.5);
  EXPECT_EQ(told().size(), 1U);
}

}  // namespace
}  // namespace veloria::tests
