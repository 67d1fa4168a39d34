#pragma once
// The play command's clock and progress bar. The dialog's clock rounds the
// seconds but truncates the 1/75-second frames (61.5 s reads 01:02:37), so
// read once a tenth of a second it runs back and forth; on a terminal line
// the time is shown truncated throughout, and the bar fills to the end.

#include <cstdint>
#include <string>

namespace tunebox::cli {

class PlayProgress {
  public:
    // `start` and `length` are native-PCM byte positions in the file.
    PlayProgress(uint32_t start, uint32_t length)
        : start_(start), position_(start), length_(length) {}

    // The device has played `played` bytes since the start; a position
    // behind one already shown (a device just closed reads 0) is ignored.
    void advance(uint32_t played);

    // The whole file has been played.
    void finish() { position_ = length_; }

    // Where in the file the run began, in native-PCM bytes.
    uint32_t start() const { return start_; }

    // Where in the file the device is, in native-PCM bytes.
    uint32_t position() const { return position_; }

    // "mm:ss:ff [####------] 42%" and, while paused, "paused".
    std::string line(bool paused) const;

  private:
    uint32_t start_;
    uint32_t position_;
    uint32_t length_;
};

}  // namespace tunebox::cli
