#include "platform/settings.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/scoped_environment.h"
#include "support/temp_dir.h"
#include "support/test_files.h"

namespace tunebox {
namespace {

using test::ScopedEnvironment;

TEST(SettingsPath, ConfigDirectoryOverridesXdgWhichOverridesHome) {
    ScopedEnvironment home("HOME", "/home/singer");
    ScopedEnvironment xdg("XDG_CONFIG_HOME", nullptr);
    {
        ScopedEnvironment config("TUNEBOX_CONFIG_DIR", nullptr);
        EXPECT_EQ(settingsPath(), "/home/singer/.config/tunebox/Tunebox.INI");
        ScopedEnvironment relative("XDG_CONFIG_HOME", "relative/dir");
        EXPECT_EQ(settingsPath(), "/home/singer/.config/tunebox/Tunebox.INI");
        ScopedEnvironment absolute("XDG_CONFIG_HOME", "/xdg");
        EXPECT_EQ(settingsPath(), "/xdg/tunebox/Tunebox.INI");
    }
    ScopedEnvironment config("TUNEBOX_CONFIG_DIR", "/etc/karaoke");
    EXPECT_EQ(settingsPath(), "/etc/karaoke/Tunebox.INI");
}

class SettingsTest : public ::testing::Test {
  protected:
    void writeFile(const std::string& text) {
        std::filesystem::create_directories(configDir_);
        std::ofstream(settingsPath(), std::ios::binary) << text;
    }

    test::TempDir dir_;
    std::filesystem::path configDir_ = dir_ / "missing" / "tunebox";
    ScopedEnvironment config_{"TUNEBOX_CONFIG_DIR", configDir_.c_str()};
};

TEST_F(SettingsTest, WithoutAFileTheDelayStaysEmptyAndSavesAsEmptyAndOff) {
    SyncSettings settings;
    readSyncSettings(settings);
    EXPECT_EQ(settings.manualDelayText, "");
    EXPECT_EQ(settings.manualDelayFlag, 0);

    writeSyncSettings(settings);
    EXPECT_EQ(test::readText(settingsPath()), "[REC_DIFFERENCE]\nDIFF_PLAY_BYTE=\nMANUAL_DIFF=0\n");
    SyncSettings again{"kept", 1};
    readSyncSettings(again);
    EXPECT_EQ(again.manualDelayText, "kept");  // an empty value counts as absent
    EXPECT_EQ(again.manualDelayFlag, 0);
}

TEST_F(SettingsTest, SyncSettingsRoundTripAndOnlyOneSwitchesTheManualDelayOn) {
    writeSyncSettings({"-1200", 1});
    SyncSettings settings;
    readSyncSettings(settings);
    EXPECT_EQ(settings.manualDelayText, "-1200");
    EXPECT_EQ(settings.manualDelayFlag, 1);

    writeFile("[REC_DIFFERENCE]\nDIFF_PLAY_BYTE=12x\nMANUAL_DIFF=2\n");
    readSyncSettings(settings);
    EXPECT_EQ(settings.manualDelayText, "12");
    EXPECT_EQ(settings.manualDelayFlag, 0);

    writeFile("[REC_DIFFERENCE]\nDIFF_PLAY_BYTE=abc\n");
    readSyncSettings(settings);
    EXPECT_EQ(settings.manualDelayText, "0");
}

TEST_F(SettingsTest, OnlyOriginalOnePrefersTheBuiltInDecoder) {
    EXPECT_EQ(readDecoderChoice(), 0);
    const std::pair<const char*, int> cases[] = {{"0", 0}, {"-1", 0}, {"2", 0}, {"1", 1}};
    for (const auto& [value, expected] : cases) {
        writeFile(std::string("[MP3_DECODER]\nORIGINAL=") + value + "\n");
        EXPECT_EQ(readDecoderChoice(), expected) << value;
    }
}

TEST_F(SettingsTest, TheWindowsLanguageIsReadFromItsOwnSection) {
    EXPECT_EQ(readLanguageChoice(), "");
    writeFile("[MP3_DECODER]\nLANG=ja\n[UI]\nLANG=en\n");
    EXPECT_EQ(readLanguageChoice(), "en");
}

TEST_F(SettingsTest, EachPickerRemembersTheFolderOfItsLastFile) {
    EXPECT_EQ(readFolder(FolderPicker::kKaraoke), "");
    writeFolder(FolderPicker::kKaraoke, "/music/enka/song.mp3");
    EXPECT_TRUE(std::filesystem::is_regular_file(settingsPath()));
    writeFolder(FolderPicker::kMic, "/takes/today.wav");
    writeFolder(FolderPicker::kMic, "/root.wav");
    EXPECT_EQ(readFolder(FolderPicker::kKaraoke), "/music/enka/");
    EXPECT_EQ(readFolder(FolderPicker::kMic), "/");
}

}  // namespace
}  // namespace tunebox
