// What REC refuses before anything starts, and that a refused REC leaves
// everything as it was.

#include <filesystem>
#include <fstream>

#include "session/rec_refusal.h"
#include "session/take_harness.h"
#include "support/small_mount.h"

namespace tunebox::test {
namespace {

constexpr uint64_t kMegabyte = 1000 * 1000;

TEST(RecRefusalTest, EachProblemWithTheOutputIsOneLineNamingIt) {
    const FolderRoom roomy{
        .exists = true, .isFolder = true, .writable = true, .freeBytes = 100 * kMegabyte};
    struct Case {
        std::string output;
        FolderRoom folder;
        RecRefusal kind;
        std::string message;
    };
    const Case cases[] = {
        {"", roomy, RecRefusal::kNoOutputName, "no output file is named"},
        {"/x/take.wav", {}, RecRefusal::kNoFolder, "/x/take.wav: the folder /x does not exist"},
        {"f/take.wav", {.exists = true}, RecRefusal::kNoFolder, "f/take.wav: f is not a folder"},
        {"take.wav",
         {.exists = true, .isFolder = true},
         RecRefusal::kFolderNotWritable,
         "take.wav: the folder . is not writable"},
        // The need rounds up, what is left rounds down.
        {"take.wav",
         {.exists = true, .isFolder = true, .writable = true, .freeBytes = 3 * kMegabyte + 999'999},
         RecRefusal::kNoRoom,
         "take.wav: needs 52 MB free, 3 MB left"},
        {"take.wav", roomy, RecRefusal::kNone, ""},
    };
    for (const Case& c : cases) {
        const RecCheck check = judgeOutput(c.output, c.folder, 51 * kMegabyte + 1);
        EXPECT_EQ(check.kind, c.kind) << c.output;
        EXPECT_EQ(check.message, c.message);
    }
    EXPECT_EQ(judgeOutput("take.wav", {.exists = true, .isFolder = true, .writable = true},
                          kMegabyte, true)
                  .message,
              "take.wav: needs 1 MB free for the take and its voice file, 0 MB left");
}

class RecRefusedTest : public TakeTest {
  protected:
    // REC of a song into `output`: refused with `kind`, with the monitor
    // still on and no file made.
    RecStart expectRefused(const std::filesystem::path& output, RecRefusal kind) {
        controller().setOutputFile(output.string());
        const RecStart started = controller().rec({song(5), 0, 0});
        EXPECT_FALSE(started.capturing);
        EXPECT_EQ(started.refusalKind, kind) << started.refusal;
        EXPECT_EQ(started.refusal.find('\n'), std::string::npos);
        EXPECT_EQ(controller().monitorOn(), 1) << "the monitor keeps running";
        EXPECT_EQ(controller().accompaniment().state, kIdle);
        EXPECT_FALSE(std::filesystem::exists(output));
        return started;
    }
};

TEST_F(RecRefusedTest, AMissingFolderOrOneThatIsAFileStartsNothing) {
    startAudio(1);
    ASSERT_EQ(controller().toggleMonitor(0), 1);
    const auto missing = dir_ / "gone" / "take.wav";
    EXPECT_EQ(expectRefused(missing, RecRefusal::kNoFolder).refusal,
              missing.string() + ": the folder " + (dir_ / "gone").string() + " does not exist");
    std::ofstream(dir_ / "plain") << "not a folder";
    expectRefused(dir_ / "plain" / "take.wav", RecRefusal::kNoFolder);
    controller().setOutputFile("");
    EXPECT_EQ(controller().rec({song(5), 0, 0}).refusalKind, RecRefusal::kNoOutputName);
}

// Root writes through permission bits, so a read-only mount stands for a
// folder the singer may not write into.
TEST_F(RecRefusedTest, AReadOnlyFolderAndAFullDiskStartNothing) {
    const SmallMount readOnly(dir_ / "ro", "ro,size=1m");
    const SmallMount small(dir_ / "small", "size=4m");
    if (!readOnly.mounted() || !small.mounted()) {
        GTEST_SKIP() << "mounting a tmpfs needs privileges this run lacks";
    }
    startAudio(1);
    ASSERT_EQ(controller().toggleMonitor(0), 1);
    expectRefused(dir_ / "ro" / "take.wav", RecRefusal::kFolderNotWritable);
    const RecStart full = expectRefused(dir_ / "small" / "take.wav", RecRefusal::kNoRoom);
    // The take and its voice file, each with a minute to spare.
    EXPECT_NE(full.refusal.find("needs 23 MB free for the take and its voice file, 4 MB left"),
              std::string::npos)
        << full.refusal;
}

TEST_F(RecRefusedTest, AMicrophoneThatWillNotOpenIsSaid) {
    startAudio(1, {.failInputOpen = true});
    const RecStart started = controller().rec({song(5), 0, 0});
    EXPECT_FALSE(started.capturing);
    EXPECT_EQ(started.refusalKind, RecRefusal::kCaptureFailed);
    EXPECT_FALSE(started.refusal.empty());
    EXPECT_EQ(started.refusal, controller().capture().lastError());
}

TEST_F(RecRefusedTest, AVoiceFileThatCannotBeCreatedStartsNothing) {
    startAudio(1);
    std::filesystem::create_directory(dir_ / "take.voice.wav");
    const RecStart started = controller().rec({song(5), 0, 0});
    EXPECT_FALSE(started.capturing);
    EXPECT_EQ(started.refusal, (dir_ / "take.voice.wav").string() + ": cannot be created");
    EXPECT_EQ(controller().accompaniment().state, kIdle);
}

}  // namespace
}  // namespace tunebox::test
