// An output written through a staging file: the target changes only on
// commit, keeps its permissions and its links, and nothing is left behind.

#include "platform/staged_output.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "platform/file_identity.h"
#include "support/riff_bytes.h"
#include "support/temp_dir.h"

namespace tunebox {
namespace {

namespace fs = std::filesystem;

class StagedOutputTest : public ::testing::Test {
  protected:
    std::string path(const std::string& name) const { return (dir_ / name).string(); }
    std::size_t fileCount() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(dir_.path()), {}));
    }
    std::unique_ptr<StagedOutput> stageWith(const std::string& target, const std::string& text) {
        std::string error;
        auto staged = StagedOutput::create(target, error);
        EXPECT_TRUE(staged) << error;
        if (staged) {
            std::ofstream(staged->stagingPath()) << text;
        }
        return staged;
    }

    test::TempDir dir_;
};

TEST_F(StagedOutputTest, TheTargetChangesOnlyOnCommit) {
    test::writeFile(path("take.wav"), {'o', 'l', 'd'});
    ::chmod(path("take.wav").c_str(), 0640);
    fs::create_symlink("take.wav", path("link.wav"));

    stageWith(path("link.wav"), "abandoned");
    EXPECT_EQ(test::readBytes(path("take.wav")), (test::Bytes{'o', 'l', 'd'}));
    EXPECT_EQ(fileCount(), 2u);

    auto staged = stageWith(path("link.wav"), "new");
    EXPECT_EQ(test::readBytes(path("take.wav")), (test::Bytes{'o', 'l', 'd'}));
    std::string error;
    ASSERT_TRUE(staged->commit(error)) << error;
    staged.reset();
    EXPECT_EQ(test::readBytes(path("take.wav")), (test::Bytes{'n', 'e', 'w'}));
    EXPECT_TRUE(fs::is_symlink(path("link.wav")));
    EXPECT_EQ(fs::status(path("take.wav")).permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    EXPECT_EQ(fileCount(), 2u);
}

TEST_F(StagedOutputTest, AFolderThatCannotTakeTheFileIsRefusedAtOnce) {
    std::string error;
    EXPECT_FALSE(StagedOutput::create(path("missing/take.wav"), error));
    EXPECT_NE(error.find("cannot be created"), std::string::npos) << error;
    fs::create_directory(path("folder"));
    EXPECT_FALSE(StagedOutput::create(path("folder"), error));
    EXPECT_EQ(error, "is a directory");
}

TEST_F(StagedOutputTest, SameFileFollowsLinksAndWantsTheFileToExist) {
    test::writeFile(path("song.wav"), {1});
    fs::create_symlink("song.wav", path("link.wav"));
    test::writeFile(path("copy.wav"), {1});
    EXPECT_TRUE(sameFile(path("song.wav"), path("link.wav")));
    EXPECT_FALSE(sameFile(path("song.wav"), path("copy.wav")));
    EXPECT_FALSE(sameFile(path("song.wav"), path("new.wav")));
}

}  // namespace
}  // namespace tunebox
