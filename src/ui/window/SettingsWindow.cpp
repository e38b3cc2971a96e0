#include "ui/window/SettingsWindow.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QScrollBar>
#include <QShortcut>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <utility>

#include "ui/controls/GlyphButton.h"
#include "ui/window/Pages.h"
#include "ui/window/TabStrip.h"

namespace veloria {

namespace {

constexpr int previewHeight = 48;

Qt::WindowFlags flagsOf(SettingsWindow::Kind kind) {
  return kind == SettingsWindow::Kind::popup ? Qt::Tool | Qt::FramelessWindowHint : Qt::Window;
}

}  // namespace

SettingsWindow::SettingsWindow(SettingsEditor& editor, Kind kind)
    : QWidget(nullptr, flagsOf(kind)), editor_(editor), kind_(kind), column_(new QVBoxLayout(this)) {
  setWindowTitle(tr("Veloria settings"));
  column_->setContentsMargins(10, 10, 4, 4);
  column_->setSpacing(8);
  addHeader();
  previewSlot_ = new QHBoxLayout;
  previewSlot_->setContentsMargins(0, 0, 6, 0);
  column_->addLayout(previewSlot_);
  addPages();
  addShortcuts();
  subscription_ = editor_.subscribe([this](const NimbraConfig&) { showUndoable(); });
  if (kind_ == Kind::popup) {
    // Queued: by then the newly active window is known.
    connect(qApp, &QGuiApplication::focusWindowChanged, this, &SettingsWindow::closeWhenLeft, Qt::QueuedConnection);
  }
  setMinimumSize(360, 400);
  resize(400, 520);
}

void SettingsWindow::setPreview(QWidget* preview) {
  preview->setFixedHeight(previewHeight);
  previewSlot_->addWidget(preview);
}

void SettingsWindow::addCard(const CardPlacement& placement) {
  page(placement.tab).addCard(placement);
  if (!placement.title.isEmpty()) found_->addLink(placement.tab, placement.title, placement.synonyms);
}

void SettingsWindow::addHeader() {
  search_ = new QLineEdit(this);
  search_->setPlaceholderText(tr("Search settings"));
  search_->setAccessibleName(tr("Search settings"));
  search_->setClearButtonEnabled(true);
  search_->installEventFilter(this);
  undo_ = new GlyphButton(Glyph::undo, tr("Undo"), this);
  redo_ = new GlyphButton(Glyph::redo, tr("Redo"), this);
  auto* header = new QHBoxLayout;
  header->setContentsMargins(0, 0, 6, 0);
  header->setSpacing(2);
  header->addWidget(search_, 1);
  header->addSpacing(4);
  header->addWidget(undo_);
  header->addWidget(redo_);
  column_->addLayout(header);
  connect(search_, &QLineEdit::textChanged, this, &SettingsWindow::onSearchChanged);
  connect(undo_, &QToolButton::clicked, this, [this] { editor_.undo(); });
  connect(redo_, &QToolButton::clicked, this, [this] { editor_.redo(); });
}

void SettingsWindow::addPages() {
  QStringList titles;
  pages_ = new QStackedWidget(this);
  for (int i = 0; i < settingTabCount; ++i) {
    const auto tab = static_cast<SettingTab>(i);
    titles += SettingCatalogue::tr(SettingCatalogue::tabTitle(tab));
    auto* page = new TabPage(tab, editor_, pages_);
    tabPages_[static_cast<std::size_t>(i)] = page;
    pages_->addWidget(page);
  }
  found_ = new SearchPage(editor_, pages_);
  pages_->addWidget(found_);
  tabs_ = new TabStrip(titles, this);
  tabs_->setCurrent(0);
  column_->addWidget(tabs_);
  column_->addWidget(pages_, 1);
  connect(tabs_, &TabStrip::chosen, this, [this](int index) { showTab(static_cast<SettingTab>(index)); });
  connect(found_, &SearchPage::cardWanted, this, &SettingsWindow::showCard);
}

void SettingsWindow::addShortcuts() {
  const auto on = [this](const QKeySequence& keys, auto action) {
    connect(new QShortcut(keys, this), &QShortcut::activated, this, action);
  };
  on(QKeySequence::Find, [this] {
    search_->setFocus(Qt::ShortcutFocusReason);
    search_->selectAll();
  });
  on(QKeySequence(Qt::CTRL | Qt::Key_Z), [this] { editor_.undo(); });
  on(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), [this] { editor_.redo(); });
  on(QKeySequence(Qt::CTRL | Qt::Key_Tab), [this] { turnTabs(1); });
  on(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Tab), [this] { turnTabs(-1); });
  on(QKeySequence(Qt::CTRL | Qt::Key_PageDown), [this] { turnTabs(1); });
  on(QKeySequence(Qt::CTRL | Qt::Key_PageUp), [this] { turnTabs(-1); });
}

void SettingsWindow::showTab(SettingTab tab) {
  tab_ = tab;
  search_->clear();
  showPage();
}

void SettingsWindow::search(const QString& words) {
  search_->setText(words);
}

void SettingsWindow::onSearchChanged(const QString& text) {
  if (text.trimmed().isEmpty()) return showPage();
  found_->search(text);
  found_->verticalScrollBar()->setValue(0);
  tabs_->setCurrent(-1);
  pages_->setCurrentWidget(found_);
}

void SettingsWindow::showPage() {
  if (isVisible()) page(tab_).build();
  tabs_->setCurrent(static_cast<int>(tab_));
  pages_->setCurrentIndex(static_cast<int>(tab_));
}

void SettingsWindow::setVisible(bool visible) {
  if (visible) page(tab_).build();
  QWidget::setVisible(visible);
}

void SettingsWindow::showCard(SettingTab tab, const QString& title) {
  showTab(tab);
  page(tab).showCard(title);
}

void SettingsWindow::turnTabs(int by) {
  showTab(static_cast<SettingTab>((static_cast<int>(tab_) + by + settingTabCount) % settingTabCount));
}

void SettingsWindow::showUndoable() {
  undo_->setEnabled(editor_.canUndo());
  redo_->setEnabled(editor_.canRedo());
}

void SettingsWindow::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  if (event->spontaneous()) return;
  search_->setFocus();
  Q_EMIT visibleChanged(true);
}

void SettingsWindow::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  if (event->spontaneous()) return;
  Q_EMIT visibleChanged(false);
}

void SettingsWindow::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Escape) return QWidget::keyPressEvent(event);
  if (search_->text().isEmpty()) {
    close();
  } else {
    search_->clear();
    search_->setFocus();
  }
}

/// In the search field undo acts on the window if nothing was typed, and Down moves to the first result.
bool SettingsWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched != search_) return QWidget::eventFilter(watched, event);
  if (event->type() == QEvent::ShortcutOverride) {
    const auto& key = static_cast<QKeyEvent&>(*event);
    if (key.matches(QKeySequence::Undo) && !search_->isUndoAvailable()) return true;
    if (key.matches(QKeySequence::Redo) && !search_->isRedoAvailable()) return true;
  }
  if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent&>(*event).key() == Qt::Key_Down) {
    QWidget* page = pages_->currentWidget();
    QWidget* next = page->nextInFocusChain();
    while (next != page && !(page->isAncestorOf(next) && next->isVisible() && next->focusPolicy() & Qt::TabFocus)) {
      next = next->nextInFocusChain();
    }
    if (next != page) next->setFocus(Qt::TabFocusReason);
    return true;
  }
  return QWidget::eventFilter(watched, event);
}

/// Its own dialogs and pop-up lists don't count as leaving it.
void SettingsWindow::closeWhenLeft() {
  const QWidget* active = QApplication::activeWindow();
  while (active != nullptr && active != this) active = active->parentWidget();
  if (active == nullptr && QApplication::activePopupWidget() == nullptr &&
      QApplication::activeModalWidget() == nullptr) {
    close();
  }
}

void SettingsWindow::paintEvent(QPaintEvent* event) {
  QWidget::paintEvent(event);
  if (kind_ != Kind::popup) return;
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::Mid));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

}  // namespace veloria
