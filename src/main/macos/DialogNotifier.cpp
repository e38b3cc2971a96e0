#include "main/macos/DialogNotifier.h"

#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QWidget>
#include <utility>

#include "ui/QtText.h"

namespace veloria {

/// Owns the windows; never shown itself.
struct DialogNotifier::Windows {
  QWidget parent;
};

DialogNotifier::DialogNotifier() : windows_(std::make_unique<Windows>()) {}

DialogNotifier::~DialogNotifier() = default;

void DialogNotifier::show(Notification notification, std::function<void()> delivered) {
  auto* box = new QMessageBox(QMessageBox::Information, toQString(notification.title), toQString(notification.title),
                              QMessageBox::Close, &windows_->parent);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setModal(false);
  box->setTextFormat(Qt::PlainText);
  box->setInformativeText(toQString(notification.text));
  for (auto& action : notification.actions) {
    const auto* button = box->addButton(toQString(action.label), QMessageBox::AcceptRole);
    QObject::connect(button, &QPushButton::clicked, box, std::move(action.chosen));
  }
  box->show();
  QTimer::singleShot(0, &windows_->parent, std::move(delivered));
}

}  // namespace veloria
