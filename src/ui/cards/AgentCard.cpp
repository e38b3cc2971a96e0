#include "ui/cards/AgentCard.h"

#include "ui/script/VerbatimText.h"

namespace veloria {

namespace {

constexpr const char* example =
    "nimbra busy\n"
    "pytest && nimbra ok || nimbra fail\n"
    "nimbra palette \"#ff0055\" \"#ffcc00\" \"#00ddff\"";

}  // namespace

AgentCard::AgentCard(QWidget* parent) : Card(tr("Agents and shells"), parent) {
  body().addWidget(makeSentence(tr("The nimbra command writes channels into a small JSON file that this app watches. "
                                   "Anything that can write a file can drive it."),
                                this));
  auto* text = new VerbatimText(tr("Example"), QString::fromLatin1(example), this);
  body().addWidget(text);
  body().addWidget(makeCopyButton(*text, this), 0, Qt::AlignLeading);
}

}  // namespace veloria
