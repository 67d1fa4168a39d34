#pragma once
// A source whose file bytes are native PCM as they stand: a WAVE file's data
// chunk, read up to its end and never into what follows.

#include <cstdint>

#include "platform/riff_file.h"
#include "playback/audio_source.h"

namespace tunebox {

// Reads up to `requested` bytes into `destination`; `count` becomes the
// number that came. A failed or short read raises `endOfSource`. Returns 1
// when at least one byte came, else 0.
int wavReadDirect(RiffFile& file, uint8_t* destination, uint32_t requested, uint32_t& count,
                  uint32_t& endOfSource);

// Moves to the absolute file offset `position`: the playback engine counts
// its positions from the start of the file, not from the data chunk. Returns
// 1, or 0 when the offset cannot be reached.
int wavSeekDirect(RiffFile& file, uint32_t position);

class DirectSource final : public AudioSource {
  public:
    // `file` stands at the first data byte; the data ends at file offset
    // `dataEnd`.
    DirectSource(RiffHandle file, const WaveFormat& format, uint32_t dataEnd, uint32_t length);

    [[nodiscard]] SourceBlock read(uint8_t* destination, uint32_t requested) override;
    [[nodiscard]] bool seek(uint32_t position, uint32_t permyriad) override;
    [[nodiscard]] uint32_t length() const override { return length_; }
    [[nodiscard]] const WaveFormat& format() const override { return format_; }
    [[nodiscard]] SourceDescription describe() const override;

  private:
    RiffHandle file_;
    WaveFormat format_;
    uint32_t dataEnd_;
    uint32_t length_;
};

}  // namespace tunebox
