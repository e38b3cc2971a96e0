// The status icon as a panel that hosts status notifiers sees it, over a real bus.

#include <gtest/gtest.h>

#include <QAbstractEventDispatcher>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QTimer>
#include <csignal>
#include <map>
#include <string>
#include <vector>

#include "TrayFixture.h"
#include "settings/LookPreset.h"

namespace veloria::tests {
namespace {

const QString watcher = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");
const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");

/// A line of the menu as the host gets it.
struct Line {
  int id = 0;
  QVariantMap properties;
  std::vector<Line> children;

  QString label() const { return properties.value("label").toString(); }
  bool separator() const { return properties.value("type").toString() == "separator"; }
  bool enabled() const { return properties.value("enabled", true).toBool(); }
  bool checked() const { return properties.value("toggle-state").toInt() == 1; }
};

Line readLine(const QDBusArgument& argument) {
  Line line;
  QVariantList children;
  argument.beginStructure();
  argument >> line.id >> line.properties >> children;
  argument.endStructure();
  for (const QVariant& child : children) line.children.push_back(readLine(qvariant_cast<QDBusArgument>(child)));
  return line;
}

std::vector<QString> labels(const Line& menu) {
  std::vector<QString> result;
  for (const Line& line : menu.children) result.push_back(line.separator() ? "---" : line.label());
  return result;
}

std::vector<QString> checkedLabels(const Line& menu) {
  std::vector<QString> result;
  for (const Line& line : menu.children) {
    if (line.checked()) result.push_back(line.label());
  }
  return result;
}

Line lineCalled(const Line& menu, const QString& label) {
  for (const Line& line : menu.children) {
    if (line.label() == label) return line;
    if (const Line inner = lineCalled(line, label); inner.id != 0) return inner;
  }
  return {};
}

using Labels = std::vector<QString>;

/// One picture of the icon: rows of pixels of four bytes, alpha first.
struct Picture {
  int width = 0;
  int height = 0;
  QByteArray pixels;

  /// The mean brightness, 0 to 255, of what is opaque; -1 when nothing is.
  int brightness() const {
    int sum = 0;
    int count = 0;
    for (qsizetype i = 0; i + 3 < pixels.size(); i += 4) {
      if (static_cast<uchar>(pixels[i]) < 250) continue;
      sum += static_cast<uchar>(pixels[i + 2]);
      ++count;
    }
    return count > 0 ? sum / count : -1;
  }
};

std::vector<Picture> readPictures(const QVariant& value) {
  std::vector<Picture> pictures;
  const auto argument = qvariant_cast<QDBusArgument>(value);
  for (argument.beginArray(); !argument.atEnd();) {
    Picture& picture = pictures.emplace_back();
    argument.beginStructure();
    argument >> picture.width >> picture.height >> picture.pixels;
    argument.endStructure();
  }
  argument.endArray();
  return pictures;
}

class StatusNotifierTest : public TrayTest {
 protected:
  void SetUp() override {
    TrayTest::SetUp();
    if (IsSkipped()) return;
    host_ = QDBusConnection::connectToBus(QString::fromStdString(bus().address()), "host");
  }

  void TearDown() override {
    if (IsSkipped()) return;
    TrayTest::TearDown();
    program_.reset();
    QDBusConnection::disconnectFromBus("host");
  }

  void startWatcher(bool withHost = true) {
    program_ = bus().serve(
        watcher, {"-t", VELORIA_TEST_DATA "/watcher.py", "-p", withHost ? R"({"host": true})" : R"({"host": false})"});
  }

  bool isRegistered() {
    return waitFor([&] { return registrations() > 0; });
  }
  int registrations() { return bus().calls(watcher, watcherPath, "RegisterStatusNotifierItem"); }

  void start() {
    startWatcher();
    startIcon();
    ASSERT_TRUE(isRegistered());
    item_ = itemName();
    ASSERT_FALSE(item_.isEmpty());
  }

  /// What the icon told the watcher to find it by.
  QString itemName() {
    const auto reply = bus().mock(watcher, watcherPath, "GetMethodCalls", {"RegisterStatusNotifierItem"});
    const auto calls = qvariant_cast<QDBusArgument>(reply.constFirst());
    QVariantList arguments;
    for (calls.beginArray(); !calls.atEnd();) {
      qulonglong time = 0;
      calls.beginStructure();
      calls >> time >> arguments;
      calls.endStructure();
    }
    calls.endArray();
    return arguments.value(0).toString();
  }

  /// What the icon's own program replies to the host, while it runs its event loop.
  QVariantList ask(const QString& service, const QString& path, const QString& interface, const QString& method,
                   const QVariantList& arguments) {
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    const QDBusPendingCall call = host_.asyncCall(message);
    EXPECT_TRUE(waitFor([&] { return call.isFinished(); })) << method.toStdString();
    EXPECT_FALSE(call.isError()) << method.toStdString() << ": " << call.error().message().toStdString();
    return call.reply().arguments();
  }

  QVariant property(const QString& name) {
    return qvariant_cast<QDBusVariant>(ask(item_, itemPath, properties, "Get", {itemInterface, name}).value(0))
        .variant();
  }

  QString menuPath() { return qvariant_cast<QDBusObjectPath>(property("Menu")).path(); }

  Line layout() {
    const QVariantList reply = ask(item_, menuPath(), menuInterface, "GetLayout", {0, -1, QStringList()});
    return readLine(qvariant_cast<QDBusArgument>(reply.value(1)));
  }

  void choose(const QString& label) {
    const Line line = lineCalled(layout(), label);
    ASSERT_NE(line.id, 0) << label.toStdString();
    ask(item_, menuPath(), menuInterface, "Event",
        {line.id, "clicked", QVariant::fromValue(QDBusVariant(0)), QVariant::fromValue(0U)});
  }

  void click(const QString& method) { ask(item_, itemPath, itemInterface, method, {100, 10}); }

  QDBusConnection host_{"host"};
  std::unique_ptr<desktop::ChildProcess> program_;
  QString item_;
};

TEST_F(StatusNotifierTest, theHostSeesIconToolTipAndMenu) {
  start();
  if (HasFatalFailure()) return;
  EXPECT_TRUE(icon_->isAvailable());
  EXPECT_TRUE(log_.empty());
  EXPECT_EQ(property("Status"), "Active");
  EXPECT_EQ(property("Category"), "ApplicationStatus");
  EXPECT_NE(property("Title"), "");
  EXPECT_FALSE(property("ItemIsMenu").toBool()) << "a plain click is ours";

  const Line menu = layout();
  EXPECT_EQ(labels(menu),
            (Labels{"Veloria 1.2", "---", "Pause Nimbra", "---", "Preset", "Colour", "Pointer interaction", "---",
                    "Settings…", "Restart Simulation", "---", "Quit Veloria"}));
  EXPECT_FALSE(menu.children.at(0).enabled());
  EXPECT_TRUE(menu.children.at(2).enabled());
  EXPECT_EQ(labels(lineCalled(menu, "Preset")).size(), LookPreset::all().size());
  EXPECT_EQ(labels(lineCalled(menu, "Pointer interaction")),
            (Labels{"None", "Glow follow", "Push the fluid", "Swirl", "Calm"}));
  EXPECT_EQ(checkedLabels(lineCalled(menu, "Pointer interaction")), Labels{"Swirl"});
  EXPECT_EQ(checkedLabels(lineCalled(menu, "Colour")), Labels{"Classic Nimbra"});
  EXPECT_EQ(checkedLabels(lineCalled(menu, "Preset")), Labels{});

  const auto keys = [&](const QString& label) {
    std::vector<QStringList> result;
    const QVariant value = lineCalled(menu, label).properties.value("shortcut");
    if (value.isValid()) qvariant_cast<QDBusArgument>(value) >> result;
    return result;
  };
  EXPECT_EQ(keys("Settings…"), (std::vector<QStringList>{{"Control", ","}}));
  EXPECT_EQ(keys("Quit Veloria"), (std::vector<QStringList>{{"Control", "Q"}}));
  EXPECT_TRUE(keys("Restart Simulation").empty());
}

TEST_F(StatusNotifierTest, theMenuDoesWhatItSays) {
  start();
  if (HasFatalFailure()) return;
  const LookPreset& preset = LookPreset::all().back();
  const struct {
    QString label;
    std::function<bool()> done;
  } steps[] = {
      {"Pause Nimbra", [&] { return !config().enabled; }},
      {"Resume Nimbra", [&] { return config().enabled; }},
      {QString::fromUtf8(preset.name.data(), static_cast<qsizetype>(preset.name.size())),
       [&] { return config() == veloria::choose(NimbraConfig(), preset); }},
      {"Nebula", [&] { return config().paletteName == "Nebula"; }},
      {"Push the fluid", [&] { return config().pointerMode == PointerMode::push; }},
      {"Restart Simulation", [&] { return resets_ == 1; }},
      {"Settings…", [&] { return presenter_.shows == 1; }},
      {"Quit Veloria", [&] { return ends_ == 1; }},
  };
  for (const auto& step : steps) {
    choose(step.label);
    EXPECT_TRUE(waitFor(step.done)) << step.label.toStdString();
  }
  EXPECT_EQ(checkedLabels(lineCalled(layout(), "Colour")), Labels{"Nebula"});
  choose("Push the fluid");
  runFor(0.3);
  EXPECT_EQ(config().pointerMode, PointerMode::push);
  EXPECT_EQ(checkedLabels(lineCalled(layout(), "Pointer interaction")), Labels{"Push the fluid"}) << "still";
}

TEST_F(StatusNotifierTest, theMenuFollowsTheSettings) {
  start();
  if (HasFatalFailure()) return;
  NimbraConfig changed;
  changed.enabled = false;
  changed.paletteName = "none of ours";
  changed.pointerMode = PointerMode::none;
  settings_.setConfig(changed);
  const Line menu = layout();
  EXPECT_NE(lineCalled(menu, "Resume Nimbra").id, 0);
  EXPECT_EQ(lineCalled(menu, "Pause Nimbra").id, 0);
  EXPECT_EQ(checkedLabels(lineCalled(menu, "Colour")), Labels{});
  EXPECT_EQ(checkedLabels(lineCalled(menu, "Pointer interaction")), Labels{"None"});
}

TEST_F(StatusNotifierTest, theIconStandsOutFromThePanelThatTheDesktopIsTakenToHave) {
  const auto brightness = [&] {
    const auto pictures = readPictures(property("IconPixmap"));
    return pictures.empty() ? -1 : pictures.front().brightness();
  };
  start();
  if (HasFatalFailure()) return;
  const auto pictures = readPictures(property("IconPixmap"));
  ASSERT_FALSE(pictures.empty());
  for (const Picture& picture : pictures) {
    EXPECT_EQ(picture.width, picture.height);
    EXPECT_EQ(picture.pixels.size(), 4 * picture.width * picture.height);
    EXPECT_GT(picture.brightness(), 180) << picture.width << ": light, while nothing is known of the panel";
  }

  const auto program = bus().serve(portal, {"-t", VELORIA_TEST_DATA "/portal.py"});
  EXPECT_TRUE(waitFor([&] { return brightness() < 80; })) << "dark, where the desktop prefers light windows";
  const auto prefer = [&](const QString& space, const QVariant& value) {
    bus().mock(portal, portalPath, "EmitSignal",
               {"org.freedesktop.portal.Settings", "SettingChanged", "ssv",
                QVariant(QVariantList{space, "color-scheme", QVariant::fromValue(QDBusVariant(value))})});
  };
  prefer("org.example.other", 1U);
  runFor(0.3);
  EXPECT_LT(brightness(), 80) << "another setting of the same name";
  prefer("org.freedesktop.appearance", 1U);
  EXPECT_TRUE(waitFor([&] { return brightness() > 180; })) << "and light, where it prefers dark ones";
  prefer("org.freedesktop.appearance", 2U);
  EXPECT_TRUE(waitFor([&] { return brightness() < 80; }));
  prefer("org.freedesktop.appearance", "nonsense");
  EXPECT_TRUE(waitFor([&] { return brightness() > 180; }));
}

TEST_F(StatusNotifierTest, aClickTogglesTheSettingsAndTheMenuNeverDoes) {
  start();
  if (HasFatalFailure()) return;
  desktop().runToEnd({"xdotool", "mousemove", "300", "200"});
  click("Activate");
  EXPECT_TRUE(presenter_.shown);
  EXPECT_EQ(presenter_.place, (Rect{300, 200, 1, 1})) << "where the pointer is";
  EXPECT_FALSE(menuIsOpen());
  click("ContextMenu");
  EXPECT_TRUE(presenter_.shown);
  EXPECT_TRUE(menuIsOpen());
  closeMenu();
  click("SecondaryActivate");
  EXPECT_TRUE(presenter_.shown) << "the middle button is nobody's";
  click("Activate");
  EXPECT_FALSE(presenter_.shown);
  click("ContextMenu");
  EXPECT_FALSE(presenter_.shown);
}

TEST_F(StatusNotifierTest, aClickWithTheControlKeyIsForTheMenu) {
  start();
  if (HasFatalFailure()) return;
  desktop().runToEnd({"xdotool", "keydown", "Control_L"});
  click("Activate");
  desktop().runToEnd({"xdotool", "keyup", "Control_L"});
  EXPECT_FALSE(presenter_.shown);
  EXPECT_TRUE(menuIsOpen());
  closeMenu();
  click("Activate");
  EXPECT_TRUE(presenter_.shown);
  EXPECT_FALSE(menuIsOpen());
}

TEST_F(StatusNotifierTest, aHostThatComesLaterIsUsedAndOneThatRestartsGetsItAgain) {
  startIcon();
  ASSERT_TRUE(waitFor([&] { return !log_.empty(); }));
  EXPECT_NE(log_.front().find("start veloria again"), std::string::npos);
  EXPECT_FALSE(icon_->isAvailable());
  startWatcher(false);
  runFor(0.5);
  EXPECT_EQ(registrations(), 0) << "nobody shows it";
  EXPECT_FALSE(icon_->isAvailable());
  bus().mock(watcher, watcherPath, "UpdateProperties",
             {watcher, QVariantMap{{"IsStatusNotifierHostRegistered", true}}});
  bus().mock(watcher, watcherPath, "EmitSignal",
             {watcher, "StatusNotifierHostRegistered", "", QVariant(QVariantList())});
  EXPECT_TRUE(isRegistered());
  EXPECT_TRUE(waitFor([&] { return icon_->isAvailable(); }));
  program_.reset();
  EXPECT_TRUE(waitFor([&] { return !icon_->isAvailable(); }));
  startWatcher();
  EXPECT_TRUE(isRegistered()) << "the panel started again";
  EXPECT_TRUE(waitFor([&] { return icon_->isAvailable(); }));
  EXPECT_EQ(log_.size(), 1U) << "said once";
}

TEST_F(StatusNotifierTest, aWatcherThatDoesNotAnswerHoldsNothingUp) {
  // It owns the name and never looks at its messages.
  program_ = bus().serve(watcher, {"-t", VELORIA_TEST_DATA "/watcher.py"});
  program_->signal(SIGSTOP);
  const double began = desktop::now();
  startIcon();
  runFor(0.5);
  EXPECT_LT(desktop::now() - began, 5);
  EXPECT_FALSE(icon_->isAvailable());
  program_->signal(SIGCONT);
  EXPECT_TRUE(isRegistered());
}

TEST_F(StatusNotifierTest, wakesNobodyWhileNothingHappens) {
  start();
  if (HasFatalFailure()) return;
  runFor(1);
  int wakeUps = 0;
  QObject counter;
  QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, &counter,
                   [&] { ++wakeUps; });
  QTimer::singleShot(3000, &counter, [] { QApplication::exit(); });
  QApplication::exec();
  EXPECT_LE(wakeUps, 4) << "the end of the wait, and no more";
}

}  // namespace
}  // namespace veloria::tests
