#include <unistd.h>

#include <QCommandLineParser>
#include <QEventLoop>
#include <QTimer>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>

#include "base/Text.h"
#include "main/Platform.h"
#include "main/commands/Command.h"

namespace veloria {

namespace {

using Way = PanelClearing::Way;

// Longer than any desktop is given to answer.
constexpr int answerMilliseconds = 120'000;
constexpr int newsMilliseconds = 1000;

/// What the desktop says once it was asked; what is known at first if it has nothing else to say.
PanelClearing::Offer settledOffer(PanelClearing& panel) {
  QEventLoop loop;
  panel.setChangeHandler([&loop] { loop.quit(); });
  const auto offer = panel.offer();
  if (offer.way != Way::byHand) {
    QTimer::singleShot(newsMilliseconds, &loop, &QEventLoop::quit);
    loop.exec();
  }
  panel.setChangeHandler({});
  return panel.offer();
}

/// Throws WorkError with the problem, if there is one.
void waitFor(const std::function<void(PanelClearing::Answer)>& action, const char* success) {
  QEventLoop loop;
  std::optional<std::string> problem;
  std::string note;
  action([&](const std::string& what, const std::string& hint) {
    problem = what;
    note = hint;
    loop.quit();
  });
  QTimer::singleShot(answerMilliseconds, &loop, &QEventLoop::quit);
  if (!problem) loop.exec();
  if (!problem) throw WorkError("the desktop does not answer");
  if (!problem->empty()) throw WorkError(printable(*problem));
  std::puts(note.empty() ? success : printable(note).c_str());
}

void printOffer(const PanelClearing::Offer& offer) {
  if (!offer.text.empty()) std::printf("%s\n", offer.text.c_str());
  if (!offer.lines.empty()) std::printf("\n%s\n", offer.lines.c_str());
}

void agree(const PanelClearing::Offer& offer, bool agreed) {
  if (offer.way != Way::afterAsking || agreed) return;
  if (::isatty(STDIN_FILENO) == 0) {
    throw UsageError(offer.text + " If you agree: veloria panel clear --yes");
  }
  std::printf("%s Go on? [y/N] ", offer.text.c_str());
  std::fflush(stdout);
  const int answer = std::getchar();
  if (answer != 'y' && answer != 'Y') throw WorkError("nothing was changed");
}

int show(PanelClearing& panel) {
  const auto offer = settledOffer(panel);
  if (panel.letsLightThrough()) std::puts("The panel is clear.");
  printOffer(offer);
  const bool can = offer.way == Way::oneClick || offer.way == Way::afterAsking;
  if (can && !panel.letsLightThrough()) std::puts("To do it: veloria panel clear");
  if (panel.canRestore()) std::puts("To put the panel back: veloria panel restore");
  return done;
}

int clear(PanelClearing& panel, bool agreed) {
  const auto offer = settledOffer(panel);
  if (offer.way == Way::none) throw WorkError(offer.text);
  if (offer.way == Way::byHand) {
    printOffer(offer);
    return failed;
  }
  agree(offer, agreed);
  waitFor([&](auto answer) { panel.clear(std::move(answer)); },
          "The panel lets the light through. To put it back: veloria panel restore");
  return done;
}

int restore(PanelClearing& panel) {
  settledOffer(panel);
  waitFor([&](auto answer) { panel.restore(std::move(answer)); }, "The panel is as it was.");
  return done;
}

}  // namespace

int runPanel(const QStringList& arguments) {
  QCommandLineParser parser;
  parser.setApplicationDescription(
      "Makes the desktop's own panel clear, so that the light shows behind its text, or puts it back as it was. "
      "Without an action: says what can be done here.");
  parser.addOption({"yes", "Clear the panel without asking, if that has side effects."});
  if (!parseArguments(parser, "veloria panel", arguments, 1, "[clear|restore]")) return done;
  const QString action = parser.positionalArguments().value(0);
  if (!action.isEmpty() && action != "clear" && action != "restore") {
    throw UsageError("unknown action '" + printable(action.toStdString()) + "'. Actions: clear, restore.");
  }
  const auto platform = makePlatform(processEnvironment());
  const auto panel = platform->makePanelClearing();
  if (!panel) throw WorkError("the panel of this system can't be changed");
  if (action == "clear") return clear(*panel, parser.isSet("yes"));
  return action == "restore" ? restore(*panel) : show(*panel);
}

}  // namespace veloria
