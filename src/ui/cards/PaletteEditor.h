#pragma once

#include <QLineEdit>
#include <QPushButton>
#include <array>

#include "settings/SettingsEditor.h"
#include "ui/cards/Card.h"

namespace veloria {

/// Edits the user's own palette of four colours, from the first to the last of the gradient. While there is none it
/// shows the palette in use, and changing a colour makes an own palette from it.
class PaletteEditor : public Card {
  Q_OBJECT

 public:
  /// The editor must outlive it.
  explicit PaletteEditor(SettingsEditor& editor, QWidget* parent = nullptr);
  ~PaletteEditor() override;

 private:
  static constexpr std::size_t stopCount = 4;
  struct Stop {
    QPushButton* button = nullptr;
    QLineEdit* hex = nullptr;
  };

  QWidget* makeStop(std::size_t index);
  QWidget* makeButtons();
  void showRecord(const NimbraConfig& config);
  void showStop(std::size_t index, const ColorStop& stop);
  void setStop(std::size_t index, const ColorStop& stop);
  void openDialog(std::size_t index);
  void readHex(std::size_t index, bool finished);

  SettingsEditor& editor_;
  std::array<Stop, stopCount> stops_;
  QLabel* state_;
  QLabel* error_;
  QPushButton* copy_ = nullptr;
  QPushButton* aside_ = nullptr;
  Subscription subscription_;
};

}  // namespace veloria
