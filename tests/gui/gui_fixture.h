#pragma once
// One QApplication on the offscreen platform for every GUI test, and a
// settings folder of each test's own.

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QString>
#include <cstdlib>
#include <filesystem>

#include "support/temp_dir.h"

namespace tunebox::test {

// How long the QApplication took to come up, for the start-up figure.
inline qint64 applicationStartNanoseconds = 0;

inline QApplication& guiApplication() {
    static int argc = 1;
    static char name[] = "tunebox_test_gui";
    static char* argv[] = {name, nullptr};
    static const bool offscreen = setenv("QT_QPA_PLATFORM", "offscreen", 0) == 0;
    static QElapsedTimer clock = [] {
        QElapsedTimer started;
        started.start();
        return started;
    }();
    static QApplication application(argc, argv);
    static const bool timed = [] {
        applicationStartNanoseconds = clock.nsecsElapsed();
        return true;
    }();
    static_cast<void>(offscreen);
    static_cast<void>(timed);
    return application;
}

class GuiTest : public ::testing::Test {
  protected:
    // Before any widget member of a derived fixture is built.
    GuiTest() { guiApplication(); }
    void SetUp() override { setenv("TUNEBOX_CONFIG_DIR", config_.path().c_str(), 1); }
    const std::filesystem::path& configDir() const { return config_.path(); }

  private:
    TempDir config_;
};

}  // namespace tunebox::test
