#pragma once
// Reading audio files through libsndfile (FLAC, Ogg Vorbis, Opus, AIFF/AIFC,
// CAF, Wave64, RF64): the stream's facts and tags, and its samples as
// interleaved 16-bit little-endian PCM at the file's own rate and channel
// count.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tunebox {

struct SndfileFacts {
    std::string codec;  // the sample encoding: "Signed 16 bit PCM", "Vorbis", "Opus"
    uint32_t sampleRate = 0;
    uint32_t channels = 0;
    int64_t frames = 0;  // as the file's header claims it
};

// One text the file carries: "title", "artist", "album", "date", ...
struct SndfileTag {
    std::string name;
    std::string value;
};

class SndfileReader {
  public:
    // Null with `error` set (one phrase) when libsndfile cannot read the file.
    static std::unique_ptr<SndfileReader> open(const std::string& path, std::string& error);

    ~SndfileReader();
    SndfileReader(const SndfileReader&) = delete;
    SndfileReader& operator=(const SndfileReader&) = delete;

    [[nodiscard]] const SndfileFacts& facts() const { return facts_; }
    [[nodiscard]] std::vector<SndfileTag> tags() const;

    // Reads up to `frames` frames into `destination` (2 bytes a sample),
    // rounded to 16 bits and clipped. Returns the frames read: fewer only at
    // the end of what can be decoded.
    int64_t readFrames(uint8_t* destination, int64_t frames);

    // False when the frame cannot be reached.
    [[nodiscard]] bool seekFrame(int64_t frame);

  private:
    struct Handle;
    SndfileReader(std::unique_ptr<Handle> handle, SndfileFacts facts);

    std::unique_ptr<Handle> handle_;
    SndfileFacts facts_;
    std::vector<float> floats_;
};

}  // namespace tunebox
