#include "platform/profile_file.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/temp_dir.h"
#include "support/test_files.h"

namespace tunebox {
namespace {

class ProfileFileTest : public ::testing::Test {
  protected:
    void writeText(const std::string& text) { std::ofstream(file_, std::ios::binary) << text; }

    test::TempDir dir_;
    std::filesystem::path file_ = dir_ / "Tunebox.INI";
};

TEST_F(ProfileFileTest, IntegersTakeASignAndTheLeadingDigitsOnly) {
    writeText(
        "[N]\nminus=-12abc\nletters=abc\nplus=+7\nspaced =  42  \nquoted=\"5\"\n"
        "sign=-\nempty=\nwrapped=4294967297\n");
    const std::pair<const char*, int32_t> cases[] = {{"minus", -12}, {"letters", 0}, {"plus", 7},
                                                     {"spaced", 42}, {"quoted", 5},  {"sign", 0},
                                                     {"empty", -1},  {"wrapped", 1}};
    for (const auto& [key, expected] : cases) {
        EXPECT_EQ(profileReadInt(file_, "N", key, -1), expected) << key;
    }
}

TEST_F(ProfileFileTest, MissingFileSectionOrKeyGivesTheDefault) {
    EXPECT_EQ(profileReadInt(file_, "S", "K", -1), -1);
    EXPECT_EQ(profileReadString(file_, "S", "K", "fallback", 260), "fallback");
    writeText("K=1\n[S]\n;K=2\nother=3\n[T]\nK=4\n");
    EXPECT_EQ(profileReadInt(file_, "S", "K", -1),
              -1);  // neither before [S], commented, nor in [T]
    EXPECT_EQ(profileReadInt(file_, "U", "K", -7), -7);
}

TEST_F(ProfileFileTest, NamesMatchWithoutCaseAndTheFirstSectionWins) {
    writeText(
        "\xEF\xBB\xBF[ Rec_Difference ]\r\n  manual_diff = 1 \r\n[REC_DIFFERENCE]\r\nX=2\r\n");
    EXPECT_EQ(profileReadInt(file_, "REC_DIFFERENCE", "MANUAL_DIFF", -1), 1);
    EXPECT_EQ(profileReadInt(file_, "rec_difference", "X", -1), -1);
}

TEST_F(ProfileFileTest, StringsFitTheBufferWithoutSplittingACharacter) {
    writeText("[F]\nPATH=" + std::string(300, 'a') + "\nWIDE=ab\xE5\xA4\xB1\nEMPTY=\n");
    EXPECT_EQ(profileReadString(file_, "F", "EMPTY", "dflt", 260), "");
    EXPECT_EQ(profileReadString(file_, "F", "PATH", "", 260), std::string(259, 'a'));
    EXPECT_EQ(profileReadString(file_, "F", "WIDE", "", 5), "ab");
    EXPECT_EQ(profileReadString(file_, "F", "WIDE", "", 6), "ab\xE5\xA4\xB1");
    EXPECT_EQ(profileReadString(file_, "F", "NONE", "dflt", 3), "df");
}

TEST_F(ProfileFileTest, WritesChangeOneLineAndKeepEveryOtherByte) {
    const std::string original =
        "; settings\r\n\r\n[REC_DIFFERENCE]\r\nDIFF_PLAY_BYTE = 12\r\n  # note\r\n\r\n"
        "[MIC_FOLDER]\r\nPATH=/old/\r\n\r\n[LAST]\r\nK=v";
    writeText(original);
    ASSERT_EQ(profileWriteString(file_, "rec_difference", "DIFF_PLAY_BYTE", "40"), 1);
    ASSERT_EQ(profileWriteString(file_, "REC_DIFFERENCE", "MANUAL_DIFF", "1"), 1);
    ASSERT_EQ(profileWriteString(file_, "MP3_DECODER", "ORIGINAL", "1\nInjected=1"), 1);
    EXPECT_EQ(test::readText(file_),
              "; settings\r\n\r\n[REC_DIFFERENCE]\r\nDIFF_PLAY_BYTE=40\r\n  # note\r\n"
              "MANUAL_DIFF=1\r\n\r\n[MIC_FOLDER]\r\nPATH=/old/\r\n\r\n[LAST]\r\nK=v\r\n"
              "[MP3_DECODER]\r\nORIGINAL=1\r\n");
}

TEST_F(ProfileFileTest, UnwritableFileFailsAndIsLeftAlone) {
    std::filesystem::create_directory(file_);
    EXPECT_EQ(profileWriteString(file_, "S", "K", "1"), 0);
    EXPECT_TRUE(std::filesystem::is_directory(file_));
    EXPECT_EQ(profileReadInt(file_, "S", "K", -1), -1);
}

}  // namespace
}  // namespace tunebox
