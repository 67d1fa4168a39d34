#pragma once
// An accompaniment opened through the one opener the players use (WAVE,
// then MP3 and whatever else it takes), for a command that reads it through
// to the end.

#include <cstdint>
#include <optional>
#include <string>

#include "platform/riff_file.h"
#include "playback/audio_source.h"

namespace tunebox::cli {

struct BlockRead {
    uint32_t count = 0;
    bool ended = false;   // the source has nothing more
    bool failed = false;  // a block could not be decoded
};

class OpenedSource {
  public:
    OpenedSource() = default;
    ~OpenedSource();
    OpenedSource(const OpenedSource&) = delete;
    OpenedSource& operator=(const OpenedSource&) = delete;

    // `ownDecoder` overrides the settings file's choice of MP3 decoder (1:
    // the built-in one). False when no opener takes the file.
    bool open(const std::string& path, std::optional<uint32_t> ownDecoder = std::nullopt);

    // Up to `requested` native-PCM bytes (or the first stage's output when
    // the second was dropped).
    BlockRead read(uint8_t* destination, uint32_t requested);

    uint32_t length() const { return length_; }
    AudioSource& source() { return source_; }

  private:
    RiffHandle file_;
    AudioSource source_;
    uint32_t length_ = 0;
};

// True when `path` opens and its first block decodes to at least one byte:
// a file that yields no audio is refused rather than played or recorded as
// silence.
bool yieldsAudio(const std::string& path);

}  // namespace tunebox::cli
