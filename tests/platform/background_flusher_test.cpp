#include "platform/background_flusher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>

#include "support/temp_dir.h"

namespace tunebox {
namespace {

TEST(BackgroundFlusherTest, FlushesAFileEvenAfterItsOwnerClosedTheDescriptor) {
    test::TempDir dir;
    const int descriptor = ::open((dir / "data").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    ASSERT_GE(descriptor, 0);
    BackgroundFlusher flusher(descriptor);
    ASSERT_EQ(::write(descriptor, "take", 4), 4);
    flusher.request();
    ::close(descriptor);
    flusher.request();
    EXPECT_EQ(flusher.finish(), 1);
    EXPECT_EQ(flusher.failed(), 0);
}

// A pipe cannot be flushed to a disk: the failure is kept for the writer to
// see, and requests after the finish are ignored rather than hanging.
TEST(BackgroundFlusherTest, AFailedFlushIsReported) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    BackgroundFlusher flusher(pipe[1]);
    flusher.request();
    EXPECT_EQ(flusher.finish(), 0);
    EXPECT_EQ(flusher.failed(), 1);
    flusher.request();
    EXPECT_EQ(flusher.finish(), 0);
    ::close(pipe[0]);
    ::close(pipe[1]);
}

TEST(BackgroundFlusherTest, ADescriptorThatCannotBeTakenCountsAsAFailure) {
    BackgroundFlusher flusher(-1);
    flusher.request();
    EXPECT_EQ(flusher.failed(), 1);
    EXPECT_EQ(flusher.finish(), 0);
}

}  // namespace
}  // namespace tunebox
