#include "NotifyArguments.h"

#include <QVariantMap>
#include <algorithm>

namespace veloria {

namespace {

constexpr std::size_t mostActions = 2;
constexpr int expiryMilliseconds = 30000;
constexpr uchar normalUrgency = 1;

}  // namespace

QString actionKey(std::size_t index) {
  return QStringLiteral("veloria-%1").arg(index);
}

QVariantList notifyArguments(const Notification& notification, const QStringList& capabilities) {
  const bool withActions = capabilities.contains(QStringLiteral("actions"));
  QString body = QString::fromStdString(withActions ? notification.text : notification.textWithoutActions);
  if (capabilities.contains(QStringLiteral("body-markup"))) body = body.toHtmlEscaped();
  QStringList actions;
  const std::size_t count = withActions ? std::min(notification.actions.size(), mostActions) : 0;
  for (std::size_t i = 0; i < count; ++i) {
    actions << actionKey(i) << QString::fromStdString(notification.actions[i].label);
  }
  return {QStringLiteral("Veloria"),
          0U,
          QStringLiteral("veloria"),
          QString::fromStdString(notification.title),
          body,
          actions,
          QVariantMap{{QStringLiteral("urgency"), QVariant::fromValue(normalUrgency)}},
          expiryMilliseconds};
}

}  // namespace veloria
