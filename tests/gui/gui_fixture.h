#pragma once
// A settings folder of each GUI test's own; the QApplication they all share
// is made in gui_main.cpp.

#include <gtest/gtest.h>

#include <QString>
#include <QtGlobal>
#include <cstdlib>
#include <filesystem>

#include "support/temp_dir.h"

namespace tunebox::test {

// How long the QApplication took to come up, for the start-up figure.
inline qint64 applicationStartNanoseconds = 0;

class GuiTest : public ::testing::Test {
  protected:
    void SetUp() override { setenv("TUNEBOX_CONFIG_DIR", config_.path().c_str(), 1); }
    const std::filesystem::path& configDir() const { return config_.path(); }

  private:
    TempDir config_;
};

}  // namespace tunebox::test
