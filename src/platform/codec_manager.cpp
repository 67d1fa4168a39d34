#include "platform/codec_manager.h"

#include "platform/mpeg_codec.h"
#include "platform/pcm_codec.h"

namespace tunebox {
namespace {

uint16_t readU16(std::span<const uint8_t> bytes, std::size_t at) {
    return static_cast<uint16_t>(bytes[at] | (bytes[at + 1] << 8));
}

uint32_t readU32(std::span<const uint8_t> bytes, std::size_t at) {
    return static_cast<uint32_t>(readU16(bytes, at)) |
           (static_cast<uint32_t>(readU16(bytes, at + 2)) << 16);
}

void writeU16(std::span<uint8_t> bytes, std::size_t at, uint16_t value) {
    bytes[at] = static_cast<uint8_t>(value & 0xFF);
    bytes[at + 1] = static_cast<uint8_t>(value >> 8);
}

void writeU32(std::span<uint8_t> bytes, std::size_t at, uint32_t value) {
    writeU16(bytes, at, static_cast<uint16_t>(value & 0xFFFF));
    writeU16(bytes, at + 2, static_cast<uint16_t>(value >> 16));
}

bool mpegSuggest(const WaveFormat& source, const WaveFormat& wanted, uint32_t flags,
                 WaveFormat& suggested) {
    const WaveFormat decoded = mpegDecodedFormat(source);
    const bool possible =
        ((flags & kSuggestFormatTag) == 0 || wanted.formatTag == kFormatPcm) &&
        ((flags & kSuggestChannels) == 0 || wanted.channels == decoded.channels) &&
        ((flags & kSuggestSamplesPerSec) == 0 || wanted.samplesPerSec == decoded.samplesPerSec) &&
        ((flags & kSuggestBitsPerSample) == 0 || wanted.bitsPerSample == 16);
    if (possible) {
        suggested = decoded;
    }
    return possible;
}

}  // namespace

WaveFormat parseWaveFormat(std::span<const uint8_t> record) {
    if (record.size() < kWaveFormatBytes) {
        return {};
    }
    return {readU16(record, 0),  readU16(record, 2),  readU32(record, 4), readU32(record, 8),
            readU16(record, 12), readU16(record, 14), readU16(record, 16)};
}

void storeWaveFormat(const WaveFormat& format, std::span<uint8_t> record) {
    if (record.size() < kWaveFormatBytes) {
        return;
    }
    writeU16(record, 0, format.formatTag);
    writeU16(record, 2, format.channels);
    writeU32(record, 4, format.samplesPerSec);
    writeU32(record, 8, format.avgBytesPerSec);
    writeU16(record, 12, format.blockAlign);
    writeU16(record, 14, format.bitsPerSample);
    writeU16(record, 16, format.extraSize);
}

uint32_t codecFormatSuggest(std::span<const uint8_t> sourceFormat, WaveFormat& destination,
                            uint32_t flags) {
    const WaveFormat source = parseWaveFormat(sourceFormat);
    WaveFormat suggested;
    bool possible = false;
    if (isMpegFormatTag(source.formatTag)) {
        possible = source.samplesPerSec > 0 && mpegSuggest(source, destination, flags, suggested);
    } else if (isPcmFamilyFormat(source)) {
        possible = pcmSuggest(source, destination, flags, suggested);
    }
    if (!possible) {
        return kCodecNotPossible;
    }
    destination = suggested;
    return kCodecOk;
}

uint32_t codecStreamOpen(std::unique_ptr<CodecStream>& stream,
                         std::span<const uint8_t> sourceFormat, const WaveFormat& destination) {
    stream.reset();
    WaveFormat expected = destination;
    const uint32_t allFields =
        kSuggestFormatTag | kSuggestChannels | kSuggestSamplesPerSec | kSuggestBitsPerSample;
    if (codecFormatSuggest(sourceFormat, expected, allFields) != kCodecOk ||
        !sameFormat(expected, destination)) {
        return kCodecNotPossible;
    }
    const WaveFormat source = parseWaveFormat(sourceFormat);
    stream = isMpegFormatTag(source.formatTag) ? openMpegStream(source)
                                               : openPcmStream(source, destination);
    return stream ? kCodecOk : kCodecError;
}

}  // namespace tunebox
