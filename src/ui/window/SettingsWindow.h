#pragma once

#include <QWidget>
#include <array>

#include "settings/SettingsEditor.h"
#include "ui/window/Pages.h"

class QHBoxLayout;
class QLineEdit;
class QStackedWidget;
class QVBoxLayout;

namespace veloria {

class GlyphButton;
class SearchPage;
class TabStrip;

/// The settings window: a header with the search and undo, a preview, and six tabs of cards. Ctrl+F focuses the search,
/// Ctrl+Z and Ctrl+Shift+Z undo and redo, Ctrl+Tab shows the next tab, and Escape clears the search, then closes the
/// window. Main thread; the editor must outlive it.
class SettingsWindow : public QWidget {
  Q_OBJECT

 public:
  enum class Kind {
    ordinary,
    popup,  ///< frameless; closes when another window becomes active; the caller places it
  };

  explicit SettingsWindow(SettingsEditor& editor, Kind kind = Kind::ordinary);

  /// Places the live preview above the tabs, 48 points high. The window becomes its parent.
  void setPreview(QWidget* preview);
  /// Adds a card to a tab that has not been shown yet.
  void addCard(const CardPlacement& placement);

  void showTab(SettingTab tab);
  /// Types into the search field.
  void search(const QString& words);

  void setVisible(bool visible) override;

 Q_SIGNALS:
  /// The window was opened or closed. Work that only feeds the display can start or stop.
  void visibleChanged(bool visible);

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void addHeader();
  void addPages();
  void addShortcuts();
  void onSearchChanged(const QString& text);
  void showPage();
  TabPage& page(SettingTab tab) { return *tabPages_.at(static_cast<std::size_t>(tab)); }
  void showCard(SettingTab tab, const QString& title);
  void turnTabs(int by);
  void showUndoable();
  void closeWhenLeft();

  SettingsEditor& editor_;
  Kind kind_;
  SettingTab tab_ = SettingTab::look;  ///< shown unless a search is active
  QVBoxLayout* column_;
  QHBoxLayout* previewSlot_;
  QLineEdit* search_ = nullptr;
  GlyphButton* undo_ = nullptr;
  GlyphButton* redo_ = nullptr;
  TabStrip* tabs_ = nullptr;
  QStackedWidget* pages_ = nullptr;
  std::array<TabPage*, settingTabCount> tabPages_{};
  SearchPage* found_ = nullptr;
  Subscription subscription_;
};

}  // namespace veloria
