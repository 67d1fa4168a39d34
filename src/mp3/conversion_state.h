#pragma once
// A converted source's state: what the opener learnt about the file and how
// its bytes become native PCM through one or two stages (the codec manager or
// the built-in decoder first, a second stage to the native format when the
// first does not deliver it). The owner keeps one per open file; a fresh one
// starts every open.

#include <array>
#include <cstdint>
#include <string>

#include "core/wave_format.h"
#include "mp3/acm_stage.h"
#include "mp3/builtin_decoder_feed.h"
#include "mp3/id3_tag.h"
#include "mp3/mp3_stream_facts.h"

namespace tunebox {

inline constexpr std::size_t kSourceFormatBytes = 32;

struct ConversionState {
    WaveFormat outputFormat;  // the file's own format record
    // The whole "fmt " chunk, kept for the converter.
    std::array<uint8_t, kSourceFormatBytes> sourceFormat{};
    AcmStage acm;                   // the first conversion stage
    AcmStage acm2;                  // the second, from the first's PCM to the native format
    uint32_t conversionStages = 0;  // 0 until a decoder path opened
    uint32_t ownDecoderFlag = 0;    // 1: the built-in decoder (tried first, then the one open)
    uint32_t sourceDataSize = 0;    // file offset where the source's bytes end
    uint32_t outputLength = 0;      // native-PCM bytes
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

// True once a decoder path is open: the file's bytes are converted, not
// played as they stand.
[[nodiscard]] inline bool isConverting(const ConversionState& state) {
    return state.conversionStages != 0;
}

}  // namespace tunebox
