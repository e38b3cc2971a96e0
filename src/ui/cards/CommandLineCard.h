#pragma once

#include <QPushButton>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "system/CommandLineTool.h"
#include "ui/cards/Card.h"
#include "ui/script/VerbatimText.h"

namespace veloria {

/// What the card calls. Each may take seconds: they run on pool threads, one at a time, and must stay valid until the
/// program ends. Exceptions are shown.
struct CommandLinePorts {
  std::function<CommandLineToolState()> look;
  std::function<void()> install;
  std::function<void()> uninstall;
};

/// The command that installs Veloria, with nimbra, from a package; empty on systems without one.
extern const std::string packageCommand;

/// Installs the nimbra command on the PATH, or explains how to.
class CommandLineCard : public Card {
  Q_OBJECT

 public:
  CommandLineCard(CommandLinePorts ports, std::string byPackage, QWidget* parent = nullptr);

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  struct Outcome {
    std::optional<CommandLineToolState> view;
    std::string error;
  };
  struct Command {
    QWidget* box = nullptr;
    VerbatimText* text = nullptr;
  };

  Command addCommand(const QString& name);
  static void showCommand(const Command& command, const std::string& text);
  /// Runs `action` (may be empty), then looks up the state.
  void run(std::function<void()> action);
  void finish(const Outcome& outcome);
  void showView(const CommandLineToolState& view);

  std::shared_ptr<const CommandLinePorts> ports_;
  std::string byPackage_;
  bool busy_ = false;
  QLabel* state_;
  QLabel* error_;
  QPushButton* install_;
  QPushButton* uninstall_;
  Command manual_, package_;
};

/// What the card says about a view.
QString commandLineSentence(const CommandLineToolState& view);

}  // namespace veloria
