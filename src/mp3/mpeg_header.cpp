#include "mp3/mpeg_header.h"

#include "mp3/mpeg_header_chain.h"
#include "core/little_endian.h"

namespace tunebox {
namespace {

constexpr uint32_t kMpeg1 = 3;
constexpr uint32_t kReservedVersion = 1;
constexpr uint32_t kLayer1 = 3;
constexpr uint32_t kLayer2 = 2;
constexpr uint32_t kLayer3 = 1;
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
constexpr RateRow kMpeg2Layer1{0,   32,  48,  56,  64,  80,  96,  112,
                               128, 144, 160, 176, 192, 224, 256, 0};
constexpr RateRow kMpeg2Layer23{0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0};

// Rows by version id: MPEG 2.5, reserved, MPEG-2, MPEG-1.
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
    return layerField == kLayer1 ? kMpeg2Layer1 : kMpeg2Layer23;
}

// Layer I frames hold 384 samples and Layer II frames 1152 in every version;
// Layer III frames of the low-rate versions hold half as many as MPEG-1's.
uint32_t samplesPerFrame(uint32_t versionId, uint32_t layerField) {
    if (layerField == kLayer1) {
        return 384;
    }
    return layerField == kLayer3 && versionId != kMpeg1 ? 576 : 1152;
}

MpegHeader parseFields(const uint8_t* frame) {
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
    header.samplesPerFrame = samplesPerFrame(header.versionId, header.layerField);
    return header;
}

bool hasSync(std::span<const uint8_t> bytes) {
    return bytes.size() >= 4 && bytes[0] == 0xFF && (bytes[1] & 0xE0) == 0xE0;
}

}  // namespace

bool mpegParseHeader(std::span<const uint8_t> bytes, MpegHeader& header) {
    if (!hasSync(bytes)) {
        return false;
    }
    const MpegHeader parsed = parseFields(bytes.data());
    if (parsed.versionId == kReservedVersion || parsed.layerField == 0 ||
        parsed.bitRateIndex == kFreeFormat || parsed.bitRateIndex == kReservedBitRate ||
        parsed.sampleRateIndex == kReservedSampleRate) {
        return false;
    }
    header = parsed;
    return true;
}

uint32_t mpegFrameBytes(const MpegHeader& header) {
    const uint32_t bitsPerSecond = header.bitRate * 1000;
    if (header.layerField == kLayer1) {
        return (12 * bitsPerSecond / header.sampleRate + header.padding) * 4;
    }
    return header.samplesPerFrame / 8 * bitsPerSecond / header.sampleRate + header.padding;
}

uint32_t mpegLayerNumber(const MpegHeader& header) {
    return 4 - header.layerField;
}

bool mpegSameStream(const MpegHeader& first, const MpegHeader& next) {
    return first.versionId == next.versionId && first.layerField == next.layerField &&
           first.sampleRateIndex == next.sampleRateIndex &&
           (first.channelMode == 3) == (next.channelMode == 3);
}

std::array<uint8_t, 32> encodeLayer3Format(const MpegLayer3Format& format) {
    std::array<uint8_t, 32> bytes{};
    storeWaveFormat(format.wave, bytes);
    storeLe16(&bytes[18], format.id);
    storeLe32(&bytes[20], format.flags);
    storeLe16(&bytes[24], format.blockSize);
    storeLe16(&bytes[26], format.framesPerBlock);
    storeLe16(&bytes[28], format.codecDelay);
    return bytes;
}

int mp3GetHeader(std::span<const uint8_t> buffer, MpegLayer3Format& format, MpegHeader& header,
                 uint32_t& frameOffset, BufferEnd end) {
    // A sync word alone turns up about every few thousand bytes of any data,
    // so a lone header would take noise for a stream. A frame counts only when
    // the frames after it, each at its predecessor's computed length, agree.
    std::size_t at = 0;
    MpegHeader found;
    for (;; ++at) {
        if (buffer.size() < 4 || at >= buffer.size() - 3) {
            return 0;
        }
        if (mpegParseHeader(buffer.subspan(at), found) &&
            mpegChainConfirmed(buffer, at, found, end)) {
            break;
        }
    }
    frameOffset = static_cast<uint32_t>(at);
    header = found;
    format = MpegLayer3Format{};
    format.wave.channels = header.channelMode == 3 ? 1 : 2;
    // Bits per second, not bytes: the opener computes lengths from the bit
    // rate, and the converter sizes its blocks from the block size instead.
    format.wave.avgBytesPerSec = header.bitRate * 1000;
    format.wave.samplesPerSec = header.sampleRate;
    format.blockSize = static_cast<uint16_t>(mpegFrameBytes(header));
    format.flags = header.padding != 0 ? 1 : 2;
    return 1;
}

}  // namespace tunebox
