#include "ui/cards/SystemFactsCard.h"

#include "ui/QtText.h"

namespace veloria {

SystemFactsCard::SystemFactsCard(SystemState& system, const SystemPanes& panes, QWidget* parent)
    : Card(tr("System settings that affect the band"), parent), system_(system), error_(makeSentence({}, this)) {
  transparency_ = addFact();
  addButton(tr("Change transparency…"), "openTransparency", panes.transparency);
  contrast_ = addFact();
  addButton(tr("Change contrast…"), "openContrast", SystemPane::accessibilityDisplay);
  if (panes.tintsGlass) {
    tint_ = addFact();
    addButton(tr("Change the tint…"), "openTint", SystemPane::appearance);
  }
  addButton(tr("Change the bar…"), "openMenuBar", SystemPane::menuBar);
  addButton(tr("Change the wallpaper…"), "openWallpaper", SystemPane::wallpaper);
  body().addWidget(error_);
  subscription_ = system_.facts().subscribe([this](const SystemFacts& facts) { showFacts(facts); });
}

QLabel* SystemFactsCard::addFact() {
  auto* label = makeSentence({}, this);
  body().addWidget(label);
  return label;
}

void SystemFactsCard::addButton(const QString& text, const char* name, SystemPane pane) {
  auto* button = new QPushButton(text, this);
  button->setObjectName(QLatin1String(name));
  body().addWidget(button, 0, Qt::AlignLeading);
  connect(button, &QPushButton::clicked, this, [this, pane] {
    const auto opened = system_.open(pane);
    setSentence(*error_, opened ? QString() : breakable(toQString(opened.error())));
  });
}

void SystemFactsCard::showFacts(const SystemFacts& facts) {
  setSentence(*transparency_,
              facts.reduceTransparency
                  ? tr("Transparency is reduced. The bar may hide the band behind it; over the bar it stays visible.")
                  : tr("Transparency is not reduced."));
  setSentence(*contrast_, facts.increaseContrast
                              ? tr("Contrast is increased. The bar may be less transparent and the band fainter.")
                              : tr("Contrast is not increased."));
  if (tint_ == nullptr) return;
  setSentence(*tint_, facts.glassTint > 0
                          ? tr("Glass is tinted (%1). A stronger tint hides more of the band behind the bar.")
                                .arg(facts.glassTint, 0, 'f', 2)
                          : tr("Glass is not tinted."));
}

}  // namespace veloria
