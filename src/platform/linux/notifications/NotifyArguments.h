#pragma once

#include <QString>
#include <QStringList>
#include <QVariantList>

#include "ports/Notifier.h"

namespace veloria {

/// What an action is called on the bus; `index` is its place in the notification.
QString actionKey(std::size_t index);

/// The arguments of the service's Notify for a service with these capabilities: the text is escaped where it would be
/// read as markup, and where no actions are shown the other text goes out.
QVariantList notifyArguments(const Notification& notification, const QStringList& capabilities);

}  // namespace veloria
