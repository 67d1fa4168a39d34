// The window tests on a real X server: Xvfb started here, Qt on its xcb
// platform. Where Xvfb is not installed the tests skip; where it is, a
// server that does not come up is a failure.

#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>
#include <memory>

#include "gui/xvfb/xvfb_server.h"
#include "gui/xvfb/xvfb_state.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const auto program = tunebox::test::findXvfb();
    if (!program) {
        tunebox::test::xvfbState = tunebox::test::XvfbState::kMissing;
        return RUN_ALL_TESTS();
    }
    const tunebox::test::XvfbServer server(*program);
    if (server.display().empty()) {
        tunebox::test::xvfbState = tunebox::test::XvfbState::kFailed;
        return RUN_ALL_TESTS();
    }
    setenv("DISPLAY", server.display().c_str(), 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    tunebox::test::xvfbState = tunebox::test::XvfbState::kRunning;
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
