#include "mp3/mpeg_frame_header.h"

#include <array>

namespace tunebox {
namespace {

constexpr std::array<int, 16> kBitratesMpeg1{0,   32,  40,  48,  56,  64,  80,  96,
                                             112, 128, 160, 192, 224, 256, 320, 0};
constexpr std::array<int, 16> kBitratesMpeg2{0,  8,  16, 24,  32,  40,  48,  56,
                                             64, 80, 96, 112, 128, 144, 160, 0};
constexpr std::array<int, 9> kSampleRates{44100, 48000, 32000, 22050, 24000,
                                          16000, 11025, 12000, 8000};

}  // namespace

int MpegFrameHeader::rateTableIndex() const {
    const int base = version == MpegVersion::Mpeg1 ? 0 : version == MpegVersion::Mpeg2 ? 3 : 6;
    return base + sampleRateIndex;
}

int MpegFrameHeader::sampleRate() const {
    return kSampleRates[rateTableIndex()];
}

int MpegFrameHeader::bitrateKbps() const {
    return isMpeg1() ? kBitratesMpeg1[bitrateIndex] : kBitratesMpeg2[bitrateIndex];
}

std::size_t MpegFrameHeader::frameBytes() const {
    const int slotsPerKbit = isMpeg1() ? 144000 : 72000;
    return static_cast<std::size_t>(slotsPerKbit * bitrateKbps() / sampleRate() +
                                    (padding ? 1 : 0));
}

std::size_t MpegFrameHeader::sideInfoBytes() const {
    if (isMpeg1()) {
        return channels() == 1 ? 17 : 32;
    }
    return channels() == 1 ? 9 : 17;
}

int parseFrameHeader(std::span<const uint8_t> bytes, MpegFrameHeader& header) {
    if (bytes.size() < kFrameHeaderBytes || bytes[0] != 0xFF || (bytes[1] & 0xE0) != 0xE0) {
        return 0;
    }
    const int versionBits = (bytes[1] >> 3) & 3;
    const int layerBits = (bytes[1] >> 1) & 3;
    if (versionBits == 1 || layerBits != 1) {
        return 0;
    }
    MpegFrameHeader parsed;
    parsed.version = versionBits == 3   ? MpegVersion::Mpeg1
                     : versionBits == 2 ? MpegVersion::Mpeg2
                                        : MpegVersion::Mpeg25;
    parsed.crcProtected = (bytes[1] & 1) == 0;
    parsed.bitrateIndex = bytes[2] >> 4;
    parsed.sampleRateIndex = (bytes[2] >> 2) & 3;
    parsed.padding = (bytes[2] & 2) != 0;
    parsed.mode = static_cast<ChannelMode>(bytes[3] >> 6);
    parsed.modeExtension = (bytes[3] >> 4) & 3;
    if (parsed.bitrateIndex == 0 || parsed.bitrateIndex == 15 || parsed.sampleRateIndex == 3) {
        return 0;
    }
    header = parsed;
    return 1;
}

}  // namespace tunebox
