#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>

#include "desktop/look/theme.h"

int main(int argumentCount, char** arguments) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  testing::InitGoogleMock(&argumentCount, arguments);
  QApplication application(argumentCount, arguments);
  // Tests close all windows and go on.
  QApplication::setQuitOnLastWindowClosed(false);
  corvane::desktop::theme::apply(corvane::Appearance::light);
  return RUN_ALL_TESTS();
}
