#include "mp3/mpeg_header.h"

#include "platform/little_endian.h"

namespace tunebox {
namespace {

constexpr uint32_t kMpeg1 = 3;

constexpr std::array<uint32_t, 16> kMpeg1BitRates{0,   32,  40,  48,  56,  64,  80,  96,
                                                  112, 128, 160, 192, 224, 256, 320, 0};
constexpr std::array<uint32_t, 16> kMpeg2BitRates{0,  8,  16, 24,  32,  40,  48,  56,
                                                  64, 80, 96, 112, 128, 144, 160, 0};

// Rows by version id: MPEG 2.5, reserved, MPEG-2, MPEG-1.
constexpr std::array<std::array<uint32_t, 4>, 4> kSampleRates{
    {{11025, 12000, 8000, 0}, {0, 0, 0, 0}, {22050, 24000, 16000, 0}, {44100, 48000, 32000, 0}}};

uint32_t bitsOf(uint8_t byte, int high, int low) {
    return (byte >> low) & ((1u << (high - low + 1)) - 1);
}

uint32_t samplesPerFrame(uint32_t versionId, uint32_t layerBit) {
    if (layerBit == 0 || versionId == 1) {
        return 0;
    }
    return versionId == kMpeg1 ? 1152 : 576;
}

MpegHeader parseFields(const uint8_t* frame) {
    MpegHeader header;
    header.versionId = bitsOf(frame[1], 4, 3);
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
    const auto& bitRates = header.versionId == kMpeg1 ? kMpeg1BitRates : kMpeg2BitRates;
    header.bitRate = bitRates[header.bitRateIndex];
    header.sampleRate = kSampleRates[header.versionId][header.sampleRateIndex];
    header.samplesPerFrame = samplesPerFrame(header.versionId, header.layerBit);
    return header;
}

}  // namespace

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
                 uint32_t& frameOffset) {
    if (buffer.size() < 4) {
        return 0;
    }
    std::size_t at = 0;
    while (at < buffer.size() - 3 && !(buffer[at] == 0xFF && (buffer[at + 1] & 0xE0) == 0xE0)) {
        ++at;
    }
    if (at >= buffer.size() - 3) {
        return 0;
    }
    frameOffset = static_cast<uint32_t>(at);
    format = MpegLayer3Format{};
    header = parseFields(&buffer[at]);

    format.wave.channels = header.channelMode == 3 ? 1 : 2;
    // Bits per second, not bytes: the opener computes lengths from the bit
    // rate, and the converter sizes its blocks from the block size instead.
    format.wave.avgBytesPerSec = header.bitRate * 1000;
    format.wave.samplesPerSec = header.sampleRate;
    if (header.bitRate == 0 || header.sampleRate == 0) {
        return 0;
    }
    format.blockSize = static_cast<uint16_t>(
        header.padding + (header.samplesPerFrame / 8) * header.bitRate * 1000 / header.sampleRate);
    format.flags = header.padding != 0 ? 1 : 2;
    return 1;
}

}  // namespace tunebox
