#include <gmock/gmock.h>

#include <csignal>

#include "PrivateBus.h"
#include "platform/linux/bus/BusCall.h"
#include "platform/linux/bus/BusService.h"
#include "platform/linux/gnome/GnomePanelClearing.h"
#include "platform/linux/gnome/ShellFacts.h"

namespace veloria::tests {
namespace {

using testing::HasSubstr;
using Way = PanelClearing::Way;

const QString service = "org.gnome.Shell";
const QString path = "/org/gnome/Shell";
const QString extensions = "org.gnome.Shell.Extensions";
const QString factsPath = "/com/tollmere/Veloria/Shell";
const QString facts = "com.tollmere.Veloria.Shell";
const QString wantedName = "com.tollmere.Veloria.Panel";

class GnomeTest : public BusTest {
 protected:
  GnomeTest() {
    variables_ = {{"XDG_CURRENT_DESKTOP", "ubuntu:GNOME"},
                  {"XDG_STATE_HOME", folder_.file("state")},
                  {"XDG_DATA_HOME", folder_.file("own")},
                  {"XDG_DATA_DIRS", "relative:" + folder_.file("data")}};
  }

  void startShell(const std::string& parameters) {
    services_.clear();
    serve(service, {"-t", std::string(VELORIA_TEST_DATA) + "/shell.py", "-p", "{" + parameters + "}"});
  }
  void start() {
    clearing_ = makeGnomePanelClearing(environment());
    ASSERT_TRUE(clearing_);
    clearing_->setChangeHandler([this] { ++changes_; });
  }
  bool offers(Way way, const std::string& words = {}) {
    return waitFor([&] {
      const auto offer = clearing_->offer();
      return offer.way == way && (way != Way::none || !offer.text.empty()) &&
             offer.text.find(words) != std::string::npos;
    });
  }
  bool shows(bool light, bool restorable) {
    return waitFor([&] { return clearing_->letsLightThrough() == light && clearing_->canRestore() == restorable; });
  }
  /// "problem|note" of clear() or restore().
  std::string ask(void (PanelClearing::*what)(PanelClearing::Answer)) {
    std::optional<std::string> heard;
    (clearing_.get()->*what)(
        [&](const std::string& problem, const std::string& note) { heard = problem + "|" + note; });
    EXPECT_FALSE(heard) << "later";
    EXPECT_TRUE(waitFor([&] { return heard.has_value(); }));
    return heard.value_or("no answer");
  }
  std::string clear() { return ask(&PanelClearing::clear); }
  std::string restore() { return ask(&PanelClearing::restore); }
  std::size_t calls(const QString& method) { return bus().calls(service, path, method).size(); }
  bool allOn() {
    const auto bus = QDBusConnection::sessionBus();
    auto message = QDBusMessage::createMethodCall(service, path, "org.freedesktop.DBus.Properties", "Get");
    message.setArguments({extensions, "UserExtensionsEnabled"});
    return variantIn(bus.call(message)).toBool();
  }

  void tell(const QString& values) {
    auto message = QDBusMessage::createMethodCall(service, path, extensions, "Export");
    message.setArguments({values});
    const auto reply = QDBusConnection::sessionBus().call(message);
    ASSERT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
  }
  void move(const QString& signature, const QVariantList& position) {
    bus().sendSignal(service, factsPath, facts, "Pointer", signature, position);
  }
  bool isAsked(const QVariantList& area) {
    return waitFor([&] {
      const auto all = bus().calls(service, factsPath, "WatchPointer");
      return !all.empty() && all.back() == area;
    });
  }

  TemporaryFolder folder_;
  std::unique_ptr<PanelClearing> clearing_;
  int changes_ = 0;
};

constexpr const char* found = R"("known": ["panel-42@veloria.tollmere.com"])";

TEST_F(GnomeTest, ClearsThePanelAndPutsItBack) {
  startShell(found);
  start();
  EXPECT_TRUE(offers(Way::oneClick));
  EXPECT_TRUE(shows(false, false));
  EXPECT_EQ(clear(), "|");
  EXPECT_TRUE(clearing_->letsLightThrough() && clearing_->canRestore());
  EXPECT_EQ(clear(), "|");
  EXPECT_EQ(calls("EnableExtension"), 1U);
  EXPECT_GT(changes_, 0);
  start();  // the next run
  EXPECT_TRUE(shows(true, true));
  EXPECT_EQ(restore(), "|");
  EXPECT_TRUE(!clearing_->letsLightThrough() && !clearing_->canRestore());
  EXPECT_EQ(restore(), "|");
  EXPECT_EQ(calls("DisableExtension"), 1U);
}

TEST_F(GnomeTest, LeavesAloneWhatTheUserHasChanged) {
  startShell(found);
  start();
  ASSERT_TRUE(offers(Way::oneClick));
  const auto userSwitches = [](const QString& method) {
    auto message = QDBusMessage::createMethodCall(service, path, extensions, method);
    message.setArguments({"panel-42@veloria.tollmere.com"});
    QDBusConnection::sessionBus().send(message);
  };
  userSwitches("EnableExtension");
  EXPECT_TRUE(shows(true, false)) << "nothing to take back";
  userSwitches("DisableExtension");
  EXPECT_TRUE(shows(false, false));
  EXPECT_EQ(clear(), "|");
  userSwitches("DisableExtension");
  EXPECT_TRUE(shows(false, false));
  EXPECT_EQ(restore(), "|");
  EXPECT_EQ(calls("DisableExtension"), 2U);
}

TEST_F(GnomeTest, OffersWhatTheShellCanDo) {
  for (const auto& [parameters, way, words] : {
           std::tuple{R"("version": "41.3")", Way::none, "this is 41.3"},
           {R"("version": "nonsense")", Way::none, "this is nonsense"},
           {R"("version": 7)", Way::none, "for GNOME Shell"},
           {R"("version": "45.beta", "known": ["panel@veloria.tollmere.com"])", Way::oneClick, ""},
           {R"("version": "60.0", "known": ["panel@veloria.tollmere.com"], "state": 4)", Way::none, "this is 60.0"},
           {R"("known": ["panel-42@veloria.tollmere.com"], "state": 3)", Way::none, "it broke"},
           {R"("known": ["panel-42@veloria.tollmere.com"], "state": 1e300)", Way::none, "not installed"},
           {R"("known": ["panel@veloria.tollmere.com"])", Way::none, "not installed"},
       }) {
    startShell(parameters);
    start();
    EXPECT_TRUE(offers(way, words)) << parameters << ": " << clearing_->offer().text;
    const std::string refusal = clearing_->offer().text + "|";
    EXPECT_EQ(way == Way::none ? clear() : refusal, refusal) << parameters;
  }
  services_.clear();
  EXPECT_TRUE(offers(Way::none, "does not answer"));
  variables_["XDG_CURRENT_DESKTOP"] = "KDE";
  EXPECT_FALSE(makeGnomePanelClearing(environment()));
}

TEST_F(GnomeTest, ANewExtensionIsSwitchedOnAfterTheNextLogIn) {
  const std::string home = "data/gnome-shell/extensions/panel-42@veloria.tollmere.com";
  std::filesystem::create_directories(folder_.file(home));
  folder_.write(home + "/metadata.json", "{}");
  startShell("");
  start();
  EXPECT_TRUE(offers(Way::oneClick));
  EXPECT_THAT(clear(), HasSubstr("|Log out"));
  EXPECT_TRUE(shows(false, true));
  EXPECT_THAT(clear(), HasSubstr("|Log out"));
  EXPECT_EQ(restore(), "|");
  EXPECT_TRUE(shows(false, false));
  EXPECT_THAT(clear(), HasSubstr("|Log out"));
  startShell(std::string(found) + R"(, "allOn": false)");
  EXPECT_TRUE(offers(Way::afterAsking));
  runFor(0.2);
  EXPECT_FALSE(allOn()) << "nobody has agreed to that";
  startShell(found);
  EXPECT_TRUE(shows(true, true));
  EXPECT_EQ(restore(), "|");
  EXPECT_TRUE(shows(false, false));
}

TEST_F(GnomeTest, SwitchesGnomesExtensionsOnOnlyWhenAsked) {
  startShell(std::string(found) + R"(, "allOn": false)");
  start();
  EXPECT_TRUE(offers(Way::afterAsking, "every other"));
  EXPECT_FALSE(allOn());
  EXPECT_EQ(clear(), "|");
  EXPECT_TRUE(allOn() && clearing_->letsLightThrough());
  start();
  EXPECT_TRUE(shows(true, true));
  EXPECT_EQ(restore(), "|");
  EXPECT_FALSE(allOn());
  EXPECT_TRUE(shows(false, false));
}

TEST_F(GnomeTest, FailuresAreOneSentenceAndChangeNothing) {
  startShell(std::string(found) + R"(, "allOn": false, "refusal": "no, thanks")");
  start();
  ASSERT_TRUE(offers(Way::afterAsking));
  EXPECT_EQ(clear(), "GNOME Shell refuses: no, thanks|");
  EXPECT_FALSE(allOn()) << "taken back";
  EXPECT_FALSE(clearing_->canRestore());

  startShell(found);
  folder_.write("file", "");
  variables_["XDG_STATE_HOME"] = folder_.file("file");
  start();
  ASSERT_TRUE(offers(Way::oneClick));
  EXPECT_THAT(clear(), HasSubstr("note what it changes"));
  EXPECT_EQ(calls("EnableExtension"), 0U);

  variables_["XDG_STATE_HOME"] = folder_.file("state");
  for (const std::string& content : {std::string("enabled"), std::string("nonsense\n"), std::string(1000, 'x')}) {
    folder_.write("state/Veloria/gnome-panel", content);
    start();
    ASSERT_TRUE(offers(Way::oneClick));
    EXPECT_FALSE(clearing_->canRestore()) << content;
  }
  services_[service]->signal(SIGSTOP);
  EXPECT_THAT(clear(), HasSubstr("GNOME Shell"));
  services_[service]->signal(SIGKILL);
  EXPECT_TRUE(offers(Way::none, "does not answer"));
  EXPECT_EQ(clear(), "GNOME Shell does not answer.|");
}

TEST_F(GnomeTest, SaysOnTheBusWhetherThePanelShouldBeClear) {
  start();
  auto other = QDBusConnection::connectToBus(QString::fromStdString(bus().address()), "other");
  const QString home = "/com/tollmere/Veloria/Panel";
  std::optional<bool> wanted;
  QObject owner;
  const auto read = [&] {
    callOnBus(other, {wantedName, home, "org.freedesktop.DBus.Properties", "GetAll"}, {wantedName}, &owner,
              [&](const QDBusMessage& reply) {
                if (const auto values = propertiesIn(reply)) wanted = asBool(values->value("Wanted"));
              });
  };
  const auto reads = [&](bool value) {
    return waitFor([&] {
      read();
      return wanted == value;
    });
  };
  EXPECT_TRUE(reads(false));
  int told = 0;
  BusSignal changes(other, {wantedName, home, "org.freedesktop.DBus.Properties", "PropertiesChanged"},
                    [&](const QDBusMessage& message) {
                      told += qdbus_cast<QVariantMap>(message.arguments().at(1)).value("Wanted").toBool() ? 1 : 100;
                    });
  for (const bool each : {true, true, false}) clearing_->setWanted(each);
  EXPECT_TRUE(waitFor([&] { return told == 101; }));
  clearing_->setWanted(true);
  EXPECT_TRUE(reads(true));
  clearing_.reset();
  EXPECT_TRUE(waitFor([&] { return !other.interface()->isServiceRegistered(wantedName).value(); }));
  QDBusConnection::disconnectFromBus("other");
}

TEST_F(GnomeTest, FollowsWhatTheExtensionTells) {
  ShellFacts shell;
  int changes = 0;
  shell.setChangeHandler([&] { ++changes; });
  shell.watchPointer({0, 0, 1, 0.25});
  startShell(found);
  runFor(0.2);
  EXPECT_FALSE(shell.answers());
  tell("{'Panel': struct(0, .5, .5, .0625), 'FullScreen': places((0, 0, .5, 1), (0, 0, 2, 1), (.5, 0, .5, 1))}");
  EXPECT_TRUE(waitFor([&] { return shell.answers(); }));
  EXPECT_EQ(shell.panel(), (Rect{0, 0.5, 0.5, 0.0625}));
  EXPECT_THAT(shell.fullScreen(), testing::ElementsAre(Rect{0, 0, 0.5, 1}, Rect{0.5, 0, 0.5, 1}));
  EXPECT_EQ(changes, 1);
  EXPECT_TRUE(isAsked({0.0, 0.0, 1.0, 0.25}));
  move("dd", {0.25, 0.125});
  EXPECT_TRUE(waitFor([&] { return shell.pointer() == Point{0.25, 0.125}; }));
  for (const QVariantList& wrong : {QVariantList{1.5, 0.0}, {0.0, -1.0}, {std::nan(""), 0.0}}) move("dd", wrong);
  move("ss", {"0", "0"});
  runFor(0.3);
  EXPECT_EQ(shell.pointer(), (Point{0.25, 0.125}));
  shell.watchPointer({});
  EXPECT_TRUE(isAsked({0.0, 0.0, 0.0, 0.0}));
  EXPECT_FALSE(shell.pointer());

  for (const char* wrong :
       {"{'Panel': struct(0, 0, 1), 'FullScreen': 'all'}", "{'Panel': struct(0, 0, float('nan'), .1)}",
        "{'Panel': struct(0, 0, 1, -1), 'FullScreen': places((0, 0, float('inf'), 1))}", "{'Panel': 1}"}) {
    tell("{'Panel': struct(0, 0, 1, .03125)}");
    EXPECT_TRUE(waitFor([&] { return shell.panel().has_value(); }));
    tell(wrong);
    EXPECT_TRUE(waitFor([&] { return !shell.panel(); })) << wrong;
    EXPECT_TRUE(shell.answers() && shell.fullScreen().empty()) << wrong;
  }
  services_.clear();
  EXPECT_TRUE(waitFor([&] { return !shell.answers(); }));
}

TEST(ShellShares, TurnIntoPixelsAndBack) {
  const PixelRect desktop{-100, 0, 3000, 1000};
  EXPECT_EQ(pixelsOf({0, 0, 0.5, 0.032}, desktop), (PixelRect{-100, 0, 1500, 32}));
  EXPECT_EQ(pixelsOf({0.50001, 0.5, 0.49999, 0.5}, desktop), (PixelRect{1400, 500, 1500, 500}));
  EXPECT_EQ(pixelsOf(sharesOf({7, 11, 13, 17}, desktop), desktop), (PixelRect{7, 11, 13, 17}));
  EXPECT_TRUE(sharesOf({0, 0, 1, 1}, {}).empty());
  const std::vector<Rect> left{{0, 0, 0.5, 1}};
  EXPECT_TRUE(coverMonitor(left, {-100, 0, 1500, 1000}, desktop));
  EXPECT_FALSE(coverMonitor(left, {1400, 0, 1500, 1000}, desktop));
  EXPECT_FALSE(coverMonitor({}, desktop, desktop));
}

}  // namespace
}  // namespace veloria::tests
