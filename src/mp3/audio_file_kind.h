#pragma once
// Audio files of kinds other than WAVE and MP3, recognised by their first
// bytes: the kinds libsndfile reads for us, and the kinds Tunebox does not
// read at all, so that a refusal can name what the file is instead of
// calling it damaged or taking its bytes for MPEG frames.

#include <cstdint>
#include <span>
#include <string_view>

namespace tunebox {

// How many of a file's first bytes `audioFileKind` wants to see.
inline constexpr std::size_t kFileKindHeadBytes = 65536;

enum class AudioFileKind {
    unknown,
    // read through libsndfile
    flac,
    ogg,
    aiff,
    caf,
    wave64,
    rf64,
    // not read
    mp4,
    adtsAac,
    asf,
    matroska,
    avi,
};

// The kind the bytes (the start of a file, ID3v2 tags included) begin.
AudioFileKind audioFileKind(std::span<const uint8_t> head);

// True for the kinds libsndfile reads.
bool isSndfileKind(AudioFileKind kind);

// "FLAC", "Ogg", "AIFF", "CAF", "Wave64", "RF64", "MP4", "ADTS AAC",
// "WMA/ASF", "Matroska/WebM", "AVI"; empty for unknown.
std::string_view audioFileKindName(AudioFileKind kind);

// The formats Tunebox reads, for a refusal: "WAV, MP3, ...".
inline constexpr std::string_view kReadableFormats =
    "WAV, MP3, MP2, FLAC, Ogg Vorbis, Opus, AIFF, CAF, W64 and RF64";

}  // namespace tunebox
