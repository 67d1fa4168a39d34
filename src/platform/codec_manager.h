#pragma once
// The format converter behind every accompaniment that is not native PCM.
// It keeps the stream idea of a compression manager: suggest a destination
// format for a source, open a stream between the two, ask how large the
// output of a source block can be, and convert block by block. Callers see
// only this interface, never the libraries behind the drivers.

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "core/wave_format.h"

namespace tunebox {

// Which fields of the destination a suggestion must keep as given.
inline constexpr uint32_t kSuggestFormatTag = 0x00010000;
inline constexpr uint32_t kSuggestChannels = 0x00020000;
inline constexpr uint32_t kSuggestSamplesPerSec = 0x00040000;
inline constexpr uint32_t kSuggestBitsPerSample = 0x00080000;

// Results: 0 is success, anything else says why not.
inline constexpr uint32_t kCodecOk = 0;
inline constexpr uint32_t kCodecError = 1;
inline constexpr uint32_t kCodecInvalidParam = 11;
inline constexpr uint32_t kCodecNotPossible = 512;

// A conversion flag: the source has ended, so the stream hands out what it
// still holds back (a resampler's delayed tail). Later calls with this flag
// deliver the rest of it, then nothing.
inline constexpr uint32_t kCodecConvertEnd = 0x00000020;

// Size of the largest format record any driver understands.
inline constexpr uint32_t kCodecMaxFormatBytes = 32;

// One conversion call: the caller's two buffers and what the stream did with them.
struct CodecStreamHeader {
    const uint8_t* source = nullptr;
    uint32_t sourceLength = 0;
    uint32_t sourceLengthUsed = 0;
    uint8_t* destination = nullptr;
    uint32_t destinationLength = 0;
    uint32_t destinationLengthUsed = 0;
};

class CodecStream {
  public:
    virtual ~CodecStream() = default;

    // The most bytes the conversion of `sourceBytes` source bytes can produce.
    virtual uint32_t destinationSizeFor(uint32_t sourceBytes) const = 0;

    // Converts whole source blocks into the destination. Output that does not
    // fit is kept by the stream and delivered first by the next call.
    // `flags` is 0 or kCodecConvertEnd.
    virtual uint32_t convert(CodecStreamHeader& header, uint32_t flags) = 0;

    // The driver's short name, for the diagnostic log.
    virtual std::string driverShortName() const = 0;
};

// Fills the destination's free fields with what the driver for `sourceFormat`
// produces; the fields named by `flags` stay as given and must be possible.
uint32_t codecFormatSuggest(std::span<const uint8_t> sourceFormat, WaveFormat& destination,
                            uint32_t flags);

// Opens a stream from `sourceFormat` (a whole source format block) to
// `destination`, which must be a format the driver can produce.
uint32_t codecStreamOpen(std::unique_ptr<CodecStream>& stream,
                         std::span<const uint8_t> sourceFormat, const WaveFormat& destination);

}  // namespace tunebox
