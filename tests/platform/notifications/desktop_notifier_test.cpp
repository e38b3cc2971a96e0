#include "platform/linux/notifications/DesktopNotifier.h"

#include <QDBusArgument>
#include <csignal>

#include "PrivateBus.h"

namespace veloria::tests {
namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");

class DesktopNotifierTest : public BusTest {
 protected:
  void startService(const std::string& capabilities) {
    serve(service, {"-t", "notification_daemon", "-p", R"({"capabilities": ")" + capabilities + "\"}"});
  }

  /// Shows a notification with three actions, each of which notes its letter.
  void show(const std::string& text = "text") {
    notifier_->show({.title = "title",
                     .text = text,
                     .actions = {{"A", [this] { chosen_ += 'a'; }}, {"B", [this] { chosen_ += 'b'; }}, {"C", [] {}}},
                     .textWithoutActions = "plain"},
                    [this] { ++delivered_; });
  }

  static std::vector<QVariantList> shown() { return bus().calls(service, path, "Notify"); }

  static QStringList actionsOf(const QVariantList& arguments) {
    const QVariant& actions = arguments.at(5);
    return actions.typeId() == QMetaType::QStringList ? actions.toStringList() : qdbus_cast<QStringList>(actions);
  }

  static void send(const QString& signal, const QString& signature, const QVariantList& arguments) {
    bus().sendSignal(service, path, service, signal, signature, arguments);
  }
  static void choose(uint notification, const QString& key) { send("ActionInvoked", "us", {notification, key}); }

  int delivered_ = 0;
  std::string chosen_;
  std::unique_ptr<DesktopNotifier> notifier_ = std::make_unique<DesktopNotifier>();
};

TEST_F(DesktopNotifierTest, RunsTheActionThatIsChosen) {
  show();  // to nobody
  startService("body actions");
  show();
  ASSERT_TRUE(waitFor([&] { return delivered_ == 1; }));
  EXPECT_EQ(shown().at(0).at(3), "title");
  const QStringList actions = actionsOf(shown().at(0));
  ASSERT_EQ(actions.size(), 4) << "two at most";
  EXPECT_EQ(actions[1] + actions[3], "AB");

  choose(1, "default");
  send("ActionInvoked", "s", {"1"});
  choose(1, actions[2]);
  ASSERT_TRUE(waitFor([&] { return !chosen_.empty(); }));
  EXPECT_EQ(chosen_, "b") << "and nothing else";
  send("NotificationClosed", "u", {1U});
  choose(1, actions[0]);
  EXPECT_TRUE(waitFor([&] { return chosen_ == "ba"; }));
  send("NotificationClosed", "uu", {1U, 2U});
  choose(1, actions[0]);
  runFor(0.3);
  EXPECT_EQ(chosen_, "ba") << "it is closed";
}

TEST_F(DesktopNotifierTest, SuitsTheTextToTheService) {
  for (const auto& [capabilities, body, actions] :
       {std::tuple{"body actions body-markup", "&lt;b&gt;1 &amp; 2&lt;/b&gt;", 4},
        {"actions", "<b>1 & 2</b>", 4},
        {"body", "plain", 0}}) {
    services_.clear();
    startService(capabilities);
    delivered_ = 0;
    show("<b>1 & 2</b>");
    ASSERT_TRUE(waitFor([&] { return delivered_ == 1; })) << capabilities;
    EXPECT_EQ(shown().at(0).at(4), body) << capabilities;
    EXPECT_EQ(actionsOf(shown().at(0)).size(), actions) << capabilities;
  }
}

TEST_F(DesktopNotifierTest, ASilentServiceIsHarmless) {
  startService("body actions");
  services_[service]->signal(SIGSTOP);
  const double began = now();
  show();
  runFor(0.3);
  notifier_.reset();
  EXPECT_LT(now() - began, 5);
  services_[service]->signal(SIGCONT);
  runFor(0.3);
  EXPECT_EQ(delivered_, 0);
}

}  // namespace
}  // namespace veloria::tests
