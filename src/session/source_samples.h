#pragma once
// A source read from start to end as native-PCM samples, block by block,
// for the passes that measure or re-encode a whole take.

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "playback/source_options.h"

namespace tunebox {

// Handed each block of interleaved stereo samples in turn; empty to go on,
// else why not, which ends the reading.
using SampleConsumer = std::function<std::string(std::span<const int16_t>)>;

// Empty when the whole source was read and consumed; otherwise one phrase
// saying why not (the file cannot be opened, a conversion failed, or the
// consumer's own reason).
std::string forEachSourceBlock(const std::string& path, const SourceOptions& options,
                               const SampleConsumer& consume);

}  // namespace tunebox
