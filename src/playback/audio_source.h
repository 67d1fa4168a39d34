#pragma once
// The decoder source behind every accompaniment: what the opener learnt about
// the file and how its bytes become native PCM. The caller owns it; every
// open starts from a reset record.

#include <array>
#include <cstdint>
#include <string>

#include "mp3/acm_stage.h"
#include "mp3/builtin_decoder_feed.h"
#include "mp3/id3_tag.h"
#include "mp3/mp3_stream_facts.h"
#include "core/wave_format.h"

namespace tunebox {

inline constexpr std::size_t kSourceFormatBytes = 32;

struct AudioSource {
    WaveFormat outputFormat;  // the file's own format record
    // The whole "fmt " chunk, kept for the converter (conversion only).
    std::array<uint8_t, kSourceFormatBytes> sourceFormat{};
    AcmStage acm;   // the first conversion stage
    AcmStage acm2;  // the second, from the first's PCM to the native format
    uint32_t conversionStages = 0;
    uint32_t conversionFlag = 0;  // 0: the data bytes are native PCM as they stand
    uint32_t ownDecoderFlag = 0;  // 1: try the built-in decoder first
    uint32_t sourceDataSize = 0;  // file offset where the source's bytes end
    uint32_t outputLength = 0;    // native-PCM bytes
    uint32_t sourceBytesBound = 0;
    BuiltinDecoderState mx;
    std::array<uint8_t, kId3v1Bytes> id3v1{};  // raw
    Id3Tag id3Tag;
    uint32_t id3v1Flag = 0;
    uint32_t id3v2Flag = 0;
    Mp3StreamFacts mp3Facts;  // for `tunebox info`
    // Why an opener refused a file it recognised (an implausible format, a
    // length beyond 32 bits), in one phrase for the user; empty otherwise.
    std::string refusal;
};

// Run before every open, so that nothing of a previous file survives.
inline void audioSourceReset(AudioSource& source) {
    source = AudioSource{};
}

}  // namespace tunebox
