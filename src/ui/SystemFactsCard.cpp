#include "ui/SystemFactsCard.h"

#include <utility>

#include "ui/QtText.h"

namespace veloria {

SystemFactsCard::SystemFactsCard(SystemFactsPorts ports, ReadoutTicker& ticker, QWidget* parent)
    : Card(tr("What the system does to the band"), parent), ports_(std::move(ports)) {
  transparency_ = addFact(tr("Change transparency…"), QStringLiteral("openTransparency"), ports_.openTransparency);
  contrast_ = addFact(tr("Change contrast…"), QStringLiteral("openContrast"), ports_.openContrast);
  error_ = makeSentence({}, this);
  body().addWidget(error_);
  subscription_ = ticker.subscribe([this](const Readouts&) { showFacts(); });
}

QLabel* SystemFactsCard::addFact(const QString& buttonText, const QString& buttonName,
                                 const std::function<std::string()>& open) {
  auto* label = makeSentence({}, this);
  body().addWidget(label);
  if (!open) return label;
  auto* button = new QPushButton(buttonText, this);
  button->setObjectName(buttonName);
  body().addWidget(button, 0, Qt::AlignLeading);
  connect(button, &QPushButton::clicked, this, [this, open] { setSentence(*error_, breakable(toQString(open()))); });
  return label;
}

void SystemFactsCard::showFacts() {
  const SystemFacts facts = ports_.facts();
  setSentence(
      *transparency_,
      facts.reduceTransparency
          ? tr("Transparency is reduced. The bar may hide a band that lies behind it; one over the bar is seen.")
          : tr("Transparency is not reduced."));
  setSentence(*contrast_, facts.increaseContrast
                              ? tr("Contrast is increased. The bar may be less see-through, and the band fainter.")
                              : tr("Contrast is not increased."));
}

}  // namespace veloria
