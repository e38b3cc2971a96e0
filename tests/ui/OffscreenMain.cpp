#include <gtest/gtest.h>

#include <QApplication>

// Widgets without a display, in a style that is everywhere the same.
int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  QApplication application(argc, argv);
  QApplication::setStyle(QStringLiteral("Fusion"));
  return RUN_ALL_TESTS();
}
