#include "main/linux/LinuxAlert.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QMessageBox>
#include <QTimer>
#include <memory>

#include "base/Log.h"
#include "ui/QtText.h"

namespace veloria {

namespace {

constexpr int notificationPatienceMs = 5000;

void showBox(const std::string& message, const std::string& informative) {
  QMessageBox box(QMessageBox::Critical, QStringLiteral("Veloria"), toQString(message), QMessageBox::Close);
  box.setInformativeText(toQString(informative));
  box.setTextFormat(Qt::PlainText);
  box.exec();
}

void notify(Notifier& notifier, const std::string& message, const std::string& informative) {
  const auto wait = std::make_shared<QEventLoop>();  // the desktop may answer when nobody waits any more
  notifier.show({.title = message, .text = informative, .actions = {}, .textWithoutActions = informative},
                [wait] { wait->quit(); });
  QTimer::singleShot(notificationPatienceMs, wait.get(), &QEventLoop::quit);
  wait->exec();
}

}  // namespace

void showCriticalAlert(Notifier& notifier, const std::string& message, const std::string& informative) {
  systemLog(message + "\n" + informative);
  if (QGuiApplication::platformName() == QLatin1String("offscreen")) return notify(notifier, message, informative);
  showBox(message, informative);
}

}  // namespace veloria
