#include "mp3/mpeg_frame_length.h"

#include <algorithm>
#include <array>

namespace tunebox {
namespace {

constexpr std::size_t kLongestLook = 10000;
constexpr int32_t kFreeFormatFirstCandidate = 24;
constexpr int32_t kFreeFormatLongest = 2000;

using RateRow = std::array<int32_t, 16>;

// Bit rates in kbit/s by layer (I, II, III), then by the ID bit (0, 1).
constexpr std::array<std::array<RateRow, 2>, 3> kBitRates{{
    {{{0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256, 0},
      {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448, 0}}},
    {{{0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0},
      {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 0}}},
    {{{0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0},
      {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0}}},
}};

// Sampling frequencies in units of 50 Hz by the ID bit; MPEG 2.5 reads the
// ID 0 row, so its rates come out doubled.
constexpr int32_t kNoRate = -999;
constexpr std::array<std::array<int32_t, 4>, 2> kRates50Hz{
    {{441, 480, 320, kNoRate}, {882, 960, 640, kNoRate}}};

uint32_t bitsOf(uint8_t byte, int high, int low) {
    return (byte >> low) & ((1u << (high - low + 1)) - 1);
}

int32_t bitRateOf(const DecoderHeader& header) {
    const std::size_t layerRow = 3 - header.layer;  // Layer I first
    return kBitRates[layerRow][header.id][header.bitRateIndex];
}

int32_t rate50HzOf(const DecoderHeader& header) {
    return kRates50Hz[header.id][header.samplingIndex];
}

bool isMpeg2LayerIII(const DecoderHeader& header) {
    return header.layer == 1 && header.id == 0 && header.versionKind == 1;
}

bool parseHeader(std::span<const uint8_t> bytes, DecoderHeader& header) {
    if (bytes.size() < 4 || bytes[0] != 0xFF) {
        return false;
    }
    const uint32_t nibble = bytes[1] >> 4;
    if (nibble != 0xF && nibble != 0xE) {
        return false;
    }
    header.versionKind = nibble == 0xF ? 1 : 2;
    header.id = bitsOf(bytes[1], 3, 3);
    header.layer = bitsOf(bytes[1], 2, 1);
    header.protection = bitsOf(bytes[1], 0, 0);
    header.bitRateIndex = bitsOf(bytes[2], 7, 4);
    header.samplingIndex = bitsOf(bytes[2], 3, 2);
    header.padding = bitsOf(bytes[2], 1, 1);
    header.privateBit = bitsOf(bytes[2], 0, 0);
    header.mode = bitsOf(bytes[3], 7, 6);
    header.modeExtension = bitsOf(bytes[3], 5, 4);
    header.copyright = bitsOf(bytes[3], 3, 3);
    header.original = bitsOf(bytes[3], 2, 2);
    header.emphasis = bitsOf(bytes[3], 1, 0);
    // The 11-bit sync followed by an ID bit of 1 is the reserved version,
    // which the opener refuses too.
    const bool reservedVersion = header.versionKind == 2 && header.id == 1;
    return header.layer >= 1 && !reservedVersion;
}

// Walks frames of length `candidate` (plus each frame's padding slot) and
// accepts the length when every frame reached starts like the first.
bool framesAlign(std::span<const uint8_t> bytes, int32_t candidate, int32_t slot, int32_t last) {
    int32_t offset = 0;
    int landed = 0;
    for (;;) {
        const int32_t padding = static_cast<int32_t>(bitsOf(bytes[offset + 2], 1, 1));
        const int32_t next = offset + candidate + padding * slot;
        if (next > last) {
            return landed >= 1;
        }
        if (bytes[next] != bytes[0] || bytes[next + 1] != bytes[1]) {
            return false;
        }
        offset = next;
        ++landed;
    }
}

// A free-format frame's length: the distance to the next frame that starts
// with the same two bytes and from which the stream keeps that rhythm.
uint32_t freeFormatLength(std::span<const uint8_t> bytes, const DecoderHeader& header) {
    const int32_t last = static_cast<int32_t>(bytes.size()) - 3;
    // Frames longer than the search window are not taken for free format.
    const int32_t searchEnd = std::min(last, kFreeFormatLongest);
    const int32_t slot = header.layer == 3 ? 4 : 1;
    const auto padding = static_cast<int32_t>(header.padding);
    for (int32_t start = kFreeFormatFirstCandidate; start < kFreeFormatLongest;) {
        int32_t next = start;
        while (next < searchEnd && (bytes[next] != bytes[0] || bytes[next + 1] != bytes[1])) {
            ++next;
        }
        if (next >= searchEnd) {
            return 0;
        }
        start = next + 1;
        const int32_t candidate = next - padding;
        if (candidate < 1) {
            return 0;
        }
        if (framesAlign(bytes, candidate, slot, last)) {
            return static_cast<uint32_t>(candidate);
        }
    }
    return 0;
}

}  // namespace

long mpegFindFrameStart(std::span<const uint8_t> bytes) {
    for (std::size_t i = 0; i + 1 < bytes.size(); ++i) {
        const uint32_t nibble = bytes[i + 1] >> 4;
        if (bytes[i] == 0xFF && (nibble == 0xF || nibble == 0xE)) {
            return static_cast<long>(i);
        }
    }
    return -1;
}

uint32_t mpegFrameLength(std::span<const uint8_t> bytes, DecoderHeader& header) {
    bytes = bytes.first(std::min(bytes.size(), kLongestLook));
    if (!parseHeader(bytes, header)) {
        return 0;
    }
    if (header.bitRateIndex == 0) {
        return freeFormatLength(bytes, header);
    }
    const int32_t kbps = bitRateOf(header);
    const int32_t rate = rate50HzOf(header);
    int32_t length = 0;
    if (header.layer == 3) {
        length = (240 * kbps / rate) * 4;
    } else if (isMpeg2LayerIII(header)) {
        length = 1440 * kbps / rate;
    } else {
        length = 2880 * kbps / rate;
    }
    return length > 0 ? static_cast<uint32_t>(length) : 0;
}

uint32_t mpegParseFirstFrame(std::span<const uint8_t> bytes, DecoderHeader& header,
                             uint32_t& bitRate, uint32_t& offset) {
    const long start = mpegFindFrameStart(bytes);
    if (start < 0) {
        return 0;
    }
    offset = static_cast<uint32_t>(start);
    const uint32_t length = mpegFrameLength(bytes.subspan(offset), header);
    if (length == 0) {
        return 0;
    }
    if (header.bitRateIndex != 0) {
        bitRate = static_cast<uint32_t>(bitRateOf(header)) * 1000;
        return length;
    }
    const auto rate = static_cast<uint32_t>(rate50HzOf(header));
    if (header.layer == 3) {
        bitRate = rate * length * 1000 / 960;
    } else if (header.layer == 2 || header.id == 1) {
        bitRate = rate * length * 1000 / 2880;
    } else if (header.versionKind == 1) {
        bitRate = rate * length * 1000 / 1440;
    } else {
        bitRate = rate * length * 500 / 1440;
    }
    return length;
}

}  // namespace tunebox
