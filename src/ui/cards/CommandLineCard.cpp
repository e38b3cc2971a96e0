#include "ui/cards/CommandLineCard.h"

#include <exception>
#include <utility>

#include "ui/Background.h"
#include "ui/QtText.h"
#include "ui/controls/Tile.h"

namespace veloria {

#ifdef __APPLE__
const std::string packageCommand = "brew install --cask tollmere/tap/veloria";
#else
const std::string packageCommand;
#endif

namespace {

QString pathText(const std::filesystem::path& path) {
  return QString::fromStdString(path.string());
}

bool isReady(const CommandLineToolState& view) {
  return view.installedHere || view.ownFileOnPath;
}

bool offersInstall(const CommandLineToolState& view) {
  return !isReady(view) && view.installDirectory.has_value();
}

bool needsHand(const CommandLineToolState& view) {
  return !isReady(view) && !view.installDirectory;
}

}  // namespace

QString commandLineSentence(const CommandLineToolState& view) {
  if (needsHand(view)) {
    return CommandLineCard::tr("No directory on your PATH is writable. Use the command below instead.");
  }
  if (isReady(view)) {
    return view.resolvedPath ? CommandLineCard::tr("nimbra is ready to use: %1").arg(pathText(*view.resolvedPath))
                             : CommandLineCard::tr("nimbra is ready to use.");
  }
  const QString directory = pathText(*view.installDirectory);
  if (!view.resolvedPath) return CommandLineCard::tr("The nimbra command can be installed in %1.").arg(directory);
  return CommandLineCard::tr("Another nimbra is installed: %1. This version can be installed in %2.")
      .arg(pathText(*view.resolvedPath), directory);
}

CommandLineCard::CommandLineCard(CommandLinePorts ports, std::string byPackage, QWidget* parent)
    : Card(tr("The nimbra command"), parent),
      ports_(std::make_shared<const CommandLinePorts>(std::move(ports))),
      byPackage_(std::move(byPackage)),
      state_(makeSentence({}, this)),
      error_(makeSentence({}, this)) {
  state_->setObjectName(QStringLiteral("commandState"));
  error_->setObjectName(QStringLiteral("commandError"));
  body().addWidget(makeSentence(tr("Lets shells and coding agents drive the band."), this));
  body().addWidget(state_);
  body().addWidget(error_);
  auto* buttons = new QWidget(this);
  auto* layout = new TileLayout(TileLayout::Width::natural, buttons);
  install_ = new QPushButton(tr("Install the command"), buttons);
  install_->setObjectName(QStringLiteral("install"));
  uninstall_ = new QPushButton(tr("Remove the command"), buttons);
  uninstall_->setObjectName(QStringLiteral("uninstall"));
  layout->addWidget(install_);
  layout->addWidget(uninstall_);
  body().addWidget(buttons);
  for (QPushButton* button : {install_, uninstall_}) button->hide();
  manual_ = addCommand(tr("Command to run by hand"));
  package_ = addCommand(tr("Command of the package manager"));
  connect(install_, &QPushButton::clicked, this, [this] { run(ports_->install); });
  connect(uninstall_, &QPushButton::clicked, this, [this] { run(ports_->uninstall); });
}

CommandLineCard::Command CommandLineCard::addCommand(const QString& name) {
  Command command{new QWidget(this), nullptr};
  auto* column = new QVBoxLayout(command.box);
  column->setContentsMargins(0, 0, 0, 0);
  command.text = new VerbatimText(name, {}, command.box);
  column->addWidget(command.text);
  column->addWidget(makeCopyButton(*command.text, command.box), 0, Qt::AlignLeading);
  command.box->hide();
  body().addWidget(command.box);
  return command;
}

void CommandLineCard::showCommand(const Command& command, const std::string& text) {
  command.text->setPlainText(toQString(text));
  command.box->setVisible(!text.empty());
}

void CommandLineCard::showEvent(QShowEvent* event) {
  Card::showEvent(event);
  run({});
}

void CommandLineCard::run(std::function<void()> action) {
  if (busy_) return;
  busy_ = true;
  if (state_->text().isEmpty()) setSentence(*state_, tr("Looking for it…"));
  for (QPushButton* button : {install_, uninstall_}) button->setEnabled(false);
  const auto work = [ports = ports_, action = std::move(action)] {
    Outcome outcome;
    try {
      if (action) action();
    } catch (const std::exception& error) {
      outcome.error = error.what();
    }
    try {
      outcome.view = ports->look();
    } catch (const std::exception& error) {
      if (outcome.error.empty()) outcome.error = error.what();
    }
    return outcome;
  };
  runInBackground(this, work, [this](const Outcome& outcome) { finish(outcome); });
}

void CommandLineCard::finish(const Outcome& outcome) {
  busy_ = false;
  setSentence(*error_, breakable(toQString(outcome.error)));
  for (QPushButton* button : {install_, uninstall_}) button->setEnabled(true);
  if (outcome.view) return showView(*outcome.view);
  setSentence(*state_, {});
}

void CommandLineCard::showView(const CommandLineToolState& view) {
  setSentence(*state_, breakable(commandLineSentence(view)));
  install_->setVisible(offersInstall(view));
  uninstall_->setVisible(view.installedHere);
  showCommand(manual_, needsHand(view) ? view.manualCommand : std::string());
  showCommand(package_, needsHand(view) ? byPackage_ : std::string());
}

}  // namespace veloria
