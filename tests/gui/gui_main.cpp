// The GUI tests run inside one QApplication on the offscreen platform, made
// before any test and gone after the last, while Qt is still whole.

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <cstdlib>

#include "gui/gui_fixture.h"

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QElapsedTimer clock;
    clock.start();
    QApplication application(argc, argv);
    tunebox::test::applicationStartNanoseconds = clock.nsecsElapsed();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
