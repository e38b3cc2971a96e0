#pragma once

#include <QWidget>
#include <array>
#include <functional>
#include <vector>

#include "ui/Readouts.h"
#include "ui/SettingsEditor.h"
#include "ui/TabPage.h"

class QLineEdit;
class QStackedWidget;
class QTimer;

namespace veloria {

class GlyphButton;
class SearchPage;
class TabStrip;

/// The settings window: a header with the search and undo, a preview, and six tabs of cards. Ctrl+F goes to the search,
/// Ctrl+Z and Ctrl+Shift+Z take back and make again, Ctrl+Tab goes to the next tab, Escape clears the search and then
/// closes. Main thread; the editor must outlive it.
class SettingsWindow : public QWidget {
  Q_OBJECT

 public:
  enum class Kind {
    ordinary,
    popup,  ///< without a frame; closes when another window is used. Its place is up to the caller.
  };

  /// What is put into it. Whatever is left out is not there.
  struct Ports {
    ReadoutSource readouts;
    /// The live picture above the tabs, 48 points high, made at once. The slot becomes its parent.
    std::function<QWidget*()> preview;
    std::vector<CardPlacement> cards;
  };

  SettingsWindow(SettingsEditor& editor, Ports ports, Kind kind = Kind::ordinary);

  void showTab(SettingTab tab);
  /// Types into the search field.
  void search(const QString& words);

 Q_SIGNALS:
  /// It was opened or closed: work that only serves to be seen should begin or end.
  void visibleChanged(bool visible);
  /// What the running program tells now, a few times a second while it is open and at once when it opens.
  void readoutsArrived(const veloria::Readouts& readouts);

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void build();
  void addNotes();
  void addHeader(class QVBoxLayout& column);
  void addPages(QVBoxLayout& column);
  void addShortcuts();
  void onSearchChanged(const QString& text);
  void showCard(int tab, const QString& title);
  void turnTabs(int by);
  void showUndoable();
  void readOut();
  void closeWhenLeft();

  SettingsEditor& editor_;
  Ports ports_;
  Kind kind_;
  QLineEdit* search_ = nullptr;
  GlyphButton* undo_ = nullptr;
  GlyphButton* redo_ = nullptr;
  TabStrip* tabs_ = nullptr;
  QStackedWidget* pages_ = nullptr;
  std::array<TabPage*, settingTabCount> tabPages_{};
  SearchPage* found_ = nullptr;
  QTimer* readoutTimer_ = nullptr;
  Subscription subscription_;
};

}  // namespace veloria
