#pragma once
// The 4-byte MPEG audio frame header: its fields, the bit-rate and
// sample-rate tables of every version and layer, and what follows from them.
// The opener, the frame-length search and the decoding proper all read
// headers here, so they never disagree about a frame.

#include <cstddef>
#include <cstdint>
#include <span>

namespace tunebox {

inline constexpr std::size_t kFrameHeaderBytes = 4;
inline constexpr std::size_t kCrcBytes = 2;

// The version id's two bits (0 is MPEG 2.5).
inline constexpr uint32_t kReservedVersion = 1;
inline constexpr uint32_t kMpeg2 = 2;
inline constexpr uint32_t kMpeg1 = 3;
// The layer field's two bits (0 is reserved).
inline constexpr uint32_t kLayer1 = 3;
inline constexpr uint32_t kLayer2 = 2;
inline constexpr uint32_t kLayer3 = 1;
// The channel mode's two bits.
inline constexpr uint32_t kJointStereo = 1;
inline constexpr uint32_t kSingleChannel = 3;

// The header fields in their order, then the figures the tables give.
// `layerBit` keeps only the low bit of the layer field, `layerField` all of
// it, so that Layer I and II streams are named, timed and measured as what
// they are.
struct MpegHeader {
    uint32_t versionId = kMpeg1;
    uint32_t layerBit = 1;
    uint32_t protection = 1;  // 0: a check word follows the header
    uint32_t bitRateIndex = 0;
    uint32_t sampleRateIndex = 0;
    uint32_t padding = 0;
    uint32_t privateBit = 0;
    uint32_t channelMode = 0;
    uint32_t modeExtension = 0;
    uint32_t copyright = 0;
    uint32_t original = 0;
    uint32_t emphasis = 0;
    uint32_t bitRate = 0;          // kbit/s; 0 for free format
    uint32_t sampleRate = 0;       // Hz; 0 for the reserved index
    uint32_t samplesPerFrame = 0;  // per channel
    uint32_t layerField = kLayer3;

    bool isMpeg1() const { return versionId == kMpeg1; }
    bool isLayer3() const { return layerField == kLayer3; }
    bool crcProtected() const { return protection == 0; }
    int channels() const { return channelMode == kSingleChannel ? 1 : 2; }
    int granules() const { return isMpeg1() ? 2 : 1; }
    // 0..8 across the versions: 44.1, 48, 32, 22.05, 24, 16, 11.025, 12, 8 kHz.
    int rateTableIndex() const;
    // Bytes of the padding slot: a 4-byte slot in Layer I, a byte otherwise.
    uint32_t paddingSlotBytes() const { return layerField == kLayer1 ? 4 : 1; }
    // The whole frame, padding slot included; 0 for a frame that cannot be
    // timed (free format, reserved rates).
    std::size_t frameBytes() const;
    // Layer III side information.
    std::size_t sideInfoBytes() const;
    bool msStereo() const { return channelMode == kJointStereo && (modeExtension & 2) != 0; }
    bool intensityStereo() const { return channelMode == kJointStereo && (modeExtension & 1) != 0; }
    // Layers I and II: the first subband whose channels share one set of
    // samples, from the mode extension in joint stereo; 32 otherwise.
    int jointStereoBound() const {
        return channelMode == kJointStereo ? 4 * (static_cast<int>(modeExtension) + 1) : 32;
    }
};

// The first position in `bytes` where a sync word (0xFF, then three set
// bits) starts; -1 when none does.
long mpegFindFrameStart(std::span<const uint8_t> bytes);

// Reads the header at the start of `bytes`. False without a sync word, or
// with the reserved version or layer; a free-format frame reads with bit
// rate 0, the reserved bit-rate and sample-rate indexes with 0 as well.
bool mpegReadHeader(std::span<const uint8_t> bytes, MpegHeader& header);

// The same, and false also for a frame that has no rate to time it by: free
// format and the reserved bit-rate and sample-rate indexes.
bool mpegParseHeader(std::span<const uint8_t> bytes, MpegHeader& header);

// Whether the built-in decoder decodes the frame's layer: all three do.
bool mpegDecodableLayer(const MpegHeader& header);

// The layer as it is named: 1, 2 or 3.
uint32_t mpegLayerNumber(const MpegHeader& header);

// Whether `next` can follow `first` in one stream: the same version, layer,
// sample rate and channel count.
bool mpegSameStream(const MpegHeader& first, const MpegHeader& next);

}  // namespace tunebox
