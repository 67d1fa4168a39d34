#pragma once
// The 4-byte MPEG audio frame header as the Layer III decoder needs it, and
// the figures that follow from it (rate, channels, frame and side-info size).

#include <cstddef>
#include <cstdint>
#include <span>

namespace tunebox {

enum class MpegVersion { Mpeg1, Mpeg2, Mpeg25 };

enum class ChannelMode { Stereo = 0, JointStereo = 1, DualChannel = 2, Mono = 3 };

struct MpegFrameHeader {
    MpegVersion version = MpegVersion::Mpeg1;
    bool crcProtected = false;
    int bitrateIndex = 0;
    int sampleRateIndex = 0;  // 0..2 within the version
    bool padding = false;
    ChannelMode mode = ChannelMode::Stereo;
    int modeExtension = 0;

    bool isMpeg1() const { return version == MpegVersion::Mpeg1; }
    int channels() const { return mode == ChannelMode::Mono ? 1 : 2; }
    int granules() const { return isMpeg1() ? 2 : 1; }
    int samplesPerChannel() const { return granules() * 576; }
    // 0..8 across the versions: 44.1, 48, 32, 22.05, 24, 16, 11.025, 12, 8 kHz.
    int rateTableIndex() const;
    int sampleRate() const;
    int bitrateKbps() const;
    // Whole frame including the padding slot.
    std::size_t frameBytes() const;
    std::size_t sideInfoBytes() const;
    bool msStereo() const { return mode == ChannelMode::JointStereo && (modeExtension & 2); }
    bool intensityStereo() const { return mode == ChannelMode::JointStereo && (modeExtension & 1); }
};

inline constexpr std::size_t kFrameHeaderBytes = 4;
inline constexpr std::size_t kCrcBytes = 2;

// Parses a Layer III header with a known bit rate (free format and the
// reserved fields are refused). Returns 1 on success, 0 otherwise.
int parseFrameHeader(std::span<const uint8_t> bytes, MpegFrameHeader& header);

}  // namespace tunebox
