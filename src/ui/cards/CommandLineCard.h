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

/// What the card asks for. Each may take seconds: they are called on threads of the pool, one at a time, and must be
/// good for as long as the program runs. What they throw is shown.
struct CommandLinePorts {
  std::function<CommandLineToolState()> look;
  std::function<void()> install;
  std::function<void()> uninstall;
};

/// The command that installs Veloria, nimbra included, from a package; empty on systems that have none.
extern const std::string packageCommand;

/// Puts the nimbra command onto the PATH, or tells how to.
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
  /// Does `action`, which may be empty, and looks afterwards.
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
