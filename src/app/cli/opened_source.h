#pragma once
// An accompaniment opened through the one opener the players use (WAVE,
// then MP3 and whatever else it takes), for a command that reads it through
// to the end.

#include <cstdint>
#include <memory>
#include <string>

#include "playback/audio_source.h"
#include "playback/source_options.h"

namespace tunebox::cli {

struct BlockRead {
    uint32_t count = 0;
    bool ended = false;   // the source has nothing more
    bool failed = false;  // a block could not be decoded
};

class OpenedSource {
  public:
    // False when no opener takes the file.
    [[nodiscard]] bool open(const std::string& path, const SourceOptions& options);

    // Up to `requested` native-PCM bytes (or the decoder's own output when
    // the source was told to keep it).
    BlockRead read(uint8_t* destination, uint32_t requested);

    uint32_t length() const { return source_ ? source_->length() : 0; }
    // Only after a successful open.
    AudioSource& source() { return *source_; }

  private:
    std::unique_ptr<AudioSource> source_;
};

// True when `path` opens and its first block decodes to at least one byte:
// a file that yields no audio is refused rather than played or recorded as
// silence.
bool yieldsAudio(const std::string& path, const SourceOptions& options);

}  // namespace tunebox::cli
