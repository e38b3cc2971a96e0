#pragma once

#include <string>
#include <vector>

#include "ui/cards/Card.h"
#include "ui/cards/Readouts.h"

namespace veloria {

/// A card of sentences about the running program. Hidden while there are none.
class ReadoutCard : public Card {
  Q_OBJECT

 public:
  ReadoutCard(const QString& title, ReadoutTicker& ticker, QWidget* parent = nullptr);

  /// Adds a line that shows one of the readouts; empty while the readout is.
  void addLine(std::string Readouts::*line);
  /// Shown while all lines are empty.
  void setFallback(const QString& sentence);

  /// Why nothing is drawn or visible, performance figures, and why the bar's text is not kept.
  static ReadoutCard* makeStatus(ReadoutTicker& ticker, QWidget* parent = nullptr);
  /// The camera housing.
  static ReadoutCard* makeNotch(ReadoutTicker& ticker, QWidget* parent = nullptr);
  /// Why HDR glow has no effect.
  static ReadoutCard* makeGlow(ReadoutTicker& ticker, QWidget* parent = nullptr);
  static ReadoutCard* makeWeather(ReadoutTicker& ticker, QWidget* parent = nullptr);
  static ReadoutCard* makeAudio(ReadoutTicker& ticker, QWidget* parent = nullptr);
  /// Why the pointer is not followed.
  static ReadoutCard* makePointer(ReadoutTicker& ticker, QWidget* parent = nullptr);

 private:
  struct Line {
    std::string Readouts::*text;
    QLabel* label;
  };
  void showFacts(const Readouts& readouts);
  void setSilent(bool silent);

  std::vector<Line> lines_;
  QLabel* fallback_;
  QString fallbackText_;
  Readouts last_;
  bool silent_ = false;
  Subscription subscription_;
};

}  // namespace veloria
