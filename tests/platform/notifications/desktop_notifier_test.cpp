#include "platform/linux/notifications/DesktopNotifier.h"

#include <csignal>

#include "PrivateBus.h"

namespace veloria::tests {
namespace {

const QString service = "org.freedesktop.Notifications";
const QString path = "/org/freedesktop/Notifications";

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

  static QStringList actions() { return qdbus_cast<QStringList>(shown().at(0).at(5)); }

  static void choose(const QString& key) { send("ActionInvoked", "us", {1U, key}); }
  static void send(const QString& signal, const QString& signature, const QVariantList& arguments) {
    bus().sendSignal(service, path, service, signal, signature, arguments);
  }

  int delivered_ = 0;
  std::string chosen_;
  std::unique_ptr<DesktopNotifier> notifier_ = std::make_unique<DesktopNotifier>();
};

TEST_F(DesktopNotifierTest, RunsTheActionThatIsChosen) {
  show();  // to nobody
  startService("body actions");
  show();
  ASSERT_TRUE(waitFor([&] { return delivered_ == 1; }));
  const QStringList offered = actions();
  ASSERT_EQ(offered.size(), 4) << "two at most";
  EXPECT_EQ(offered[1] + offered[3], "AB");
  for (const QString& key : {QString("default"), offered[2], offered[0]}) choose(key);
  send("ActionInvoked", "s", {"1"});
  send("NotificationClosed", "u", {1U});
  EXPECT_TRUE(waitFor([&] { return chosen_ == "ba"; }));
  send("NotificationClosed", "uu", {1U, 2U});
  choose(offered[0]);
  runFor(0.3);
  EXPECT_EQ(chosen_, "ba") << "it is closed";
}

TEST_F(DesktopNotifierTest, SuitsTheTextToTheService) {
  for (const auto& [capabilities, body, count] :
       {std::tuple{"body actions body-markup", "&lt;b&gt;1 &amp; 2&lt;/b&gt;", 4},
        {"actions", "<b>1 & 2</b>", 4},
        {"body", "plain", 0}}) {
    services_.clear();
    startService(capabilities);
    delivered_ = 0;
    show("<b>1 & 2</b>");
    ASSERT_TRUE(waitFor([&] { return delivered_ == 1; })) << capabilities;
    EXPECT_EQ(shown().at(0).at(4), body) << capabilities;
    EXPECT_EQ(actions().size(), count) << capabilities;
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
