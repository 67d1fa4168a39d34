#include "mp3/decoder/mpeg_header.h"

#include <array>

namespace tunebox {
namespace {

constexpr uint32_t kFreeFormat = 0;
constexpr uint32_t kReservedBitRate = 15;
constexpr uint32_t kReservedSampleRate = 3;

using RateRow = std::array<uint32_t, 16>;

// kbit/s by bit-rate index: MPEG-1 Layer I, II, III, then the low-rate
// versions' Layer I and their shared Layer II/III row.
constexpr RateRow kMpeg1Layer1{0,   32,  64,  96,  128, 160, 192, 224,
                               256, 288, 320, 352, 384, 416, 448, 0};
constexpr RateRow kMpeg1Layer2{0,   32,  48,  56,  64,  80,  96,  112,
                               128, 160, 192, 224, 256, 320, 384, 0};
constexpr RateRow kMpeg1Layer3{0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0};
constexpr RateRow kLowRateLayer1{0,   32,  48,  56,  64,  80,  96,  112,
                                 128, 144, 160, 176, 192, 224, 256, 0};
constexpr RateRow kLowRateLayer23{0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0};

// Hz by version id (MPEG 2.5, reserved, MPEG-2, MPEG-1), then by index.
constexpr std::array<std::array<uint32_t, 4>, 4> kSampleRates{
    {{11025, 12000, 8000, 0}, {0, 0, 0, 0}, {22050, 24000, 16000, 0}, {44100, 48000, 32000, 0}}};

uint32_t bitsOf(uint8_t byte, int high, int low) {
    return (byte >> low) & ((1u << (high - low + 1)) - 1);
}

const RateRow& bitRateRow(uint32_t versionId, uint32_t layerField) {
    if (versionId == kMpeg1) {
        return layerField == kLayer1   ? kMpeg1Layer1
               : layerField == kLayer2 ? kMpeg1Layer2
                                       : kMpeg1Layer3;
    }
    return layerField == kLayer1 ? kLowRateLayer1 : kLowRateLayer23;
}

// Layer I frames hold 384 samples and Layer II frames 1152 in every version;
// Layer III frames of the low-rate versions hold half as many as MPEG-1's.
uint32_t samplesPerFrameOf(uint32_t versionId, uint32_t layerField) {
    if (layerField == kLayer1) {
        return 384;
    }
    return layerField == kLayer3 && versionId != kMpeg1 ? 576 : 1152;
}

MpegHeader readFields(std::span<const uint8_t> frame) {
    MpegHeader header;
    header.versionId = bitsOf(frame[1], 4, 3);
    header.layerField = bitsOf(frame[1], 2, 1);
    header.layerBit = bitsOf(frame[1], 1, 1);
    header.protection = bitsOf(frame[1], 0, 0);
    header.bitRateIndex = bitsOf(frame[2], 7, 4);
    header.sampleRateIndex = bitsOf(frame[2], 3, 2);
    header.padding = bitsOf(frame[2], 1, 1);
    header.privateBit = bitsOf(frame[2], 0, 0);
    header.channelMode = bitsOf(frame[3], 7, 6);
    header.modeExtension = bitsOf(frame[3], 5, 4);
    header.copyright = bitsOf(frame[3], 3, 3);
    header.original = bitsOf(frame[3], 2, 2);
    header.emphasis = bitsOf(frame[3], 1, 0);
    header.bitRate = bitRateRow(header.versionId, header.layerField)[header.bitRateIndex];
    header.sampleRate = kSampleRates[header.versionId][header.sampleRateIndex];
    header.samplesPerFrame = samplesPerFrameOf(header.versionId, header.layerField);
    return header;
}

bool hasSync(std::span<const uint8_t> bytes) {
    return bytes.size() >= 2 && bytes[0] == 0xFF && (bytes[1] & 0xE0) == 0xE0;
}

}  // namespace

int MpegHeader::rateTableIndex() const {
    const uint32_t base = versionId == kMpeg1 ? 0 : versionId == kMpeg2 ? 3 : 6;
    return static_cast<int>(base + sampleRateIndex);
}

std::size_t MpegHeader::frameBytes() const {
    if (bitRate == 0 || sampleRate == 0) {
        return 0;
    }
    const uint32_t bitsPerSecond = bitRate * 1000;
    if (layerField == kLayer1) {
        return (12 * bitsPerSecond / sampleRate + padding) * 4;
    }
    return samplesPerFrame / 8 * bitsPerSecond / sampleRate + padding;
}

std::size_t MpegHeader::sideInfoBytes() const {
    if (isMpeg1()) {
        return channels() == 1 ? 17 : 32;
    }
    return channels() == 1 ? 9 : 17;
}

long mpegFindFrameStart(std::span<const uint8_t> bytes) {
    for (std::size_t i = 0; i + 1 < bytes.size(); ++i) {
        if (hasSync(bytes.subspan(i))) {
            return static_cast<long>(i);
        }
    }
    return -1;
}

bool mpegReadHeader(std::span<const uint8_t> bytes, MpegHeader& header) {
    if (bytes.size() < kFrameHeaderBytes || !hasSync(bytes)) {
        return false;
    }
    const MpegHeader read = readFields(bytes);
    if (read.versionId == kReservedVersion || read.layerField == 0) {
        return false;
    }
    header = read;
    return true;
}

bool mpegParseHeader(std::span<const uint8_t> bytes, MpegHeader& header) {
    MpegHeader read;
    if (!mpegReadHeader(bytes, read) || read.bitRateIndex == kFreeFormat ||
        read.bitRateIndex == kReservedBitRate || read.sampleRateIndex == kReservedSampleRate) {
        return false;
    }
    header = read;
    return true;
}

bool mpegDecodableLayer(const MpegHeader& header) {
    return header.layerField == kLayer1 || header.layerField == kLayer2 ||
           header.layerField == kLayer3;
}

uint32_t mpegLayerNumber(const MpegHeader& header) {
    return 4 - header.layerField;
}

bool mpegSameStream(const MpegHeader& first, const MpegHeader& next) {
    return first.versionId == next.versionId && first.layerField == next.layerField &&
           first.sampleRateIndex == next.sampleRateIndex &&
           (first.channelMode == kSingleChannel) == (next.channelMode == kSingleChannel);
}

}  // namespace tunebox
