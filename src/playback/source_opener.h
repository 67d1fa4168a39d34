#pragma once
// The one way to open an accompaniment: each file kind's opener is tried in
// turn (RIFF/WAVE, then the kinds libsndfile reads, then MP3) until one takes
// the file or refuses it outright.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "playback/audio_source.h"
#include "playback/source_options.h"

namespace tunebox {

struct SourceOpening {
    std::unique_ptr<AudioSource> source;  // null when no opener took the file
    // Why an opener refused a file it recognised (an implausible format, a
    // length beyond 32 bits), in one phrase for the user; empty otherwise.
    std::string refusal;
};

// The first bytes of a file, as many as tell its kind (fewer for a short
// file, none for one that cannot be read).
std::vector<uint8_t> readFileHead(const std::string& path);

[[nodiscard]] SourceOpening wavOpenSource(const std::string& path, const SourceOptions& options);

}  // namespace tunebox
