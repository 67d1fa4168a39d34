#include "core/diagnostic_log.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/temp_dir.h"
#include "support/test_files.h"

namespace tunebox {
namespace {

std::string readLog() {
    return test::readText(logPath());
}

LogHeader headerOf(const std::string& bytes) {
    auto field = [&](std::size_t index) {
        uint32_t value = 0;
        for (std::size_t b = 0; b < 4; ++b) {
            value |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[index * 4 + b]))
                     << (8 * b);
        }
        return static_cast<int32_t>(value);
    };
    return {field(0), field(1), field(2)};
}

std::string slotText(const std::string& bytes, int slot) {
    return {bytes.begin() + slot * 256, bytes.begin() + (slot + 1) * 256};
}

class DiagnosticLogTest : public ::testing::Test {
  protected:
    void SetUp() override {
        dir_.enter();
        logInit(0);
    }
    test::TempDir dir_;
};

TEST_F(DiagnosticLogTest, FirstWriteCreatesFileAndFillsSlotOne) {
    ASSERT_EQ(logAlways("ﾒﾓﾘ確保失敗:RecBuf.cpybuf"), kLogOk);
    const auto bytes = readLog();
    ASSERT_EQ(bytes.size(), 2u * 256u);
    const LogHeader header = headerOf(bytes);
    EXPECT_EQ(header.mark, 1);
    EXPECT_EQ(header.nextSlot, 2);
    EXPECT_EQ(header.count, 1);

    const std::string record = slotText(bytes, 1);
    EXPECT_EQ(record.substr(0, 2), "\r\n");
    EXPECT_EQ(record[6], '/');
    EXPECT_EQ(record[9], '/');
    EXPECT_EQ(record[12], ' ');
    EXPECT_EQ(record[15], ':');
    EXPECT_EQ(record[21], ' ');
    const std::string message = "ﾒﾓﾘ確保失敗:RecBuf.cpybuf";
    EXPECT_EQ(record.substr(22, message.size()), message);
    EXPECT_EQ(record.substr(22 + message.size()), std::string(234 - message.size(), ' '));
}

TEST_F(DiagnosticLogTest, SwitchGatesOnlyTheConditionalEntry) {
    EXPECT_EQ(logIfEnabled("quiet"), kLogOk);
    EXPECT_FALSE(std::filesystem::exists(logPath()));
    logSetSwitch(1);
    EXPECT_EQ(logIfEnabled("heard"), kLogOk);
    EXPECT_EQ(headerOf(readLog()).count, 1);
}

TEST_F(DiagnosticLogTest, CountAlternatesAndSlotsWrapAfterAThousand) {
    std::vector<int32_t> counts;
    std::vector<int32_t> nextSlots;
    for (int i = 0; i < 1003; ++i) {
        ASSERT_EQ(logAlways("record " + std::to_string(i)), kLogOk);
        const LogHeader header = headerOf(readLog());
        counts.push_back(header.count);
        nextSlots.push_back(header.nextSlot);
    }
    EXPECT_EQ(counts[998], 999);
    EXPECT_EQ(counts[999], 1000);
    EXPECT_EQ(counts[1000], 1001);
    EXPECT_EQ(counts[1001], 1000);
    EXPECT_EQ(counts[1002], 1001);
    EXPECT_EQ(nextSlots[998], 1000);  // the 999th record went into slot 999
    EXPECT_EQ(nextSlots[999], 1);     // the write into slot 1000 wraps to 1
    EXPECT_EQ(nextSlots[1000], 2);

    const auto bytes = readLog();
    EXPECT_EQ(bytes.size(), 1001u * 256u);
    // The 1001st record overwrote the oldest one in slot 1.
    EXPECT_EQ(slotText(bytes, 1).substr(22, 11), "record 1000");
    EXPECT_EQ(slotText(bytes, 1000).substr(22, 10), "record 999");
}

TEST(LogMessageField, CutsLongUtf8WithoutSplittingACharacter) {
    // 233 ASCII bytes then a three-byte character: it cannot fit whole.
    const std::string message = std::string(233, 'a') + "失" + "tail";
    const std::string field = logMessageField(message);
    ASSERT_EQ(field.size(), 234u);
    EXPECT_EQ(field.substr(0, 233), std::string(233, 'a'));
    EXPECT_EQ(field[233], ' ');

    // Half-width katakana are three bytes each: 78 of them fill exactly 234.
    std::string katakana;
    for (int i = 0; i < 80; ++i) {
        katakana += "ﾒ";
    }
    EXPECT_EQ(logMessageField(katakana), katakana.substr(0, 234));

    EXPECT_EQ(logMessageField(std::string(300, 'x')), std::string(234, 'x'));
}

TEST(DiagnosticLogWithoutInit, UnwritablePathFailsWithHeaderError) {
    test::TempDir dir;
    dir.enter();
    std::filesystem::create_directory(dir / "tunebox.log");  // a directory cannot be opened
    logInit(0);
    EXPECT_EQ(logAlways("lost"), kLogHeaderFailed);
}

}  // namespace
}  // namespace tunebox
