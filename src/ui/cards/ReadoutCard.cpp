#include "ui/cards/ReadoutCard.h"

#include <algorithm>
#include <utility>

#include "ui/QtText.h"

namespace veloria {

namespace {

#ifdef __APPLE__
constexpr const char* whatIsHeard = QT_TRANSLATE_NOOP(
    "veloria::ReadoutCard",
    "System audio is tapped through ScreenCaptureKit, so it hears what you are actually playing rather than a "
    "microphone. This app's own audio is excluded. Needs Screen Recording permission; nothing is recorded or sent "
    "anywhere.");
#else
constexpr const char* whatIsHeard = QT_TRANSLATE_NOOP("veloria::ReadoutCard",
                                                      "The music mode taps the monitor of the default sound output, so "
                                                      "it hears what you are actually playing and never a "
                                                      "microphone. Nothing is recorded or sent anywhere.");
#endif

}  // namespace

ReadoutTicker::ReadoutTicker(QWidget* window, ReadoutSource source)
    : QObject(window), source_(std::move(source)), watch_(window, [this](bool seen) { setRunning(seen); }) {
  timer_.setInterval(intervalMs);
  timer_.setTimerType(Qt::CoarseTimer);
  connect(&timer_, &QTimer::timeout, this, &ReadoutTicker::ask);
  if (window->isVisible()) setRunning(true);
}

void ReadoutTicker::setRunning(bool on) {
  if (!on) return timer_.stop();
  ask();
  timer_.start();
}

void ReadoutTicker::ask() {
  if (source_) last_.set(source_());
}

ReadoutCard::ReadoutCard(const QString& title, ReadoutTicker& ticker, QWidget* parent)
    : Card(title, parent), fallback_(makeSentence({}, this)) {
  body().addWidget(fallback_);
  subscription_ = ticker.subscribe([this](const Readouts& readouts) {
    last_ = readouts;
    showFacts(last_);
  });
}

void ReadoutCard::addLine(std::string Readouts::*line) {
  lines_.push_back({line, makeSentence({}, this)});
  body().addWidget(lines_.back().label);
  showFacts(last_);
}

void ReadoutCard::setFallback(const QString& sentence) {
  fallbackText_ = sentence;
  showFacts(last_);
}

void ReadoutCard::showFacts(const Readouts& readouts) {
  bool empty = true;
  for (const Line& line : lines_) {
    const std::string& text = readouts.*line.text;
    setSentence(*line.label, breakable(toQString(text)));
    empty = empty && text.empty();
  }
  setSentence(*fallback_, empty ? fallbackText_ : QString());
  setSilent(empty && fallbackText_.isEmpty());
}

// Acts on changes only; otherwise it would undo four times a second what others hide.
void ReadoutCard::setSilent(bool silent) {
  if (silent == silent_) return;
  silent_ = silent;
  if (silent || !isWindow()) setVisible(!silent);
}

ReadoutCard* ReadoutCard::makeStatus(ReadoutTicker& ticker, QWidget* parent) {
  auto* card = new ReadoutCard(tr("Status"), ticker, parent);
  for (const auto line : {&Readouts::darkness, &Readouts::hint, &Readouts::figures, &Readouts::capture}) {
    card->addLine(line);
  }
  card->setFallback(tr("Nothing has been drawn yet."));
  return card;
}

ReadoutCard* ReadoutCard::makeNotch(ReadoutTicker& ticker, QWidget* parent) {
  auto* card = new ReadoutCard(tr("Camera housing"), ticker, parent);
  card->addLine(&Readouts::cutout);
  return card;
}

ReadoutCard* ReadoutCard::makeGlow(ReadoutTicker& ticker, QWidget* parent) {
  auto* card = new ReadoutCard(tr("HDR glow"), ticker, parent);
  card->addLine(&Readouts::hdr);
  return card;
}

ReadoutCard* ReadoutCard::makeWeather(ReadoutTicker& ticker, QWidget* parent) {
  auto* card = new ReadoutCard(tr("Weather now"), ticker, parent);
  card->addLine(&Readouts::weather);
  card->addLine(&Readouts::weatherError);
  card->setFallback(tr("No weather data yet. It is fetched only in Weather and Wind modes."));
  return card;
}

ReadoutCard* ReadoutCard::makeAudio(ReadoutTicker& ticker, QWidget* parent) {
  auto* card = new ReadoutCard(tr("Sound"), ticker, parent);
  card->body().insertWidget(0, makeSentence(tr(whatIsHeard), card));
  card->addLine(&Readouts::audio);
  card->setFallback(tr("Not listening. Veloria listens only in Music mode."));
  return card;
}

ReadoutCard* ReadoutCard::makePointer(ReadoutTicker& ticker, QWidget* parent) {
  auto* card = new ReadoutCard(tr("Pointer"), ticker, parent);
  card->addLine(&Readouts::pointer);
  return card;
}

}  // namespace veloria
