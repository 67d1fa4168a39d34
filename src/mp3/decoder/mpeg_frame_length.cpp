#include "mp3/decoder/mpeg_frame_length.h"

#include <algorithm>

namespace tunebox {
namespace {

constexpr std::size_t kLongestLook = 10000;
constexpr int32_t kFreeFormatFirstCandidate = 24;
constexpr int32_t kFreeFormatLongest = 2000;

// Walks frames of length `candidate` (plus each frame's padding slot) and
// accepts the length when every frame reached starts like the first.
bool framesAlign(std::span<const uint8_t> bytes, int32_t candidate, int32_t slot, int32_t last) {
    int32_t offset = 0;
    int landed = 0;
    for (;;) {
        const int32_t padding = (bytes[offset + 2] >> 1) & 1;
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
uint32_t freeFormatLength(std::span<const uint8_t> bytes, const MpegHeader& header) {
    const int32_t last = static_cast<int32_t>(bytes.size()) - 3;
    // Frames longer than the search window are not taken for free format.
    const int32_t searchEnd = std::min(last, kFreeFormatLongest);
    const auto slot = static_cast<int32_t>(header.paddingSlotBytes());
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

// The lengths come from the one set of rate tables, in hertz. For every
// standard stream they equal the usual formulas in 50 Hz units (2,880 x
// kbit/s / rate for MPEG-1, 1,440 x kbit/s / rate for MPEG-2 Layer III);
// only Layer I and II headers flagged MPEG 2.5, which no encoder writes, come
// out at their own rate where those formulas would take twice it.
uint32_t mpegFrameLength(std::span<const uint8_t> bytes, MpegHeader& header) {
    bytes = bytes.first(std::min(bytes.size(), kLongestLook));
    if (!mpegReadHeader(bytes, header)) {
        return 0;
    }
    if (header.bitRateIndex == 0) {
        return freeFormatLength(bytes, header);
    }
    const auto whole = static_cast<uint32_t>(header.frameBytes());
    return whole == 0 ? 0 : whole - header.padding * header.paddingSlotBytes();
}

uint32_t mpegWholeFrameLength(std::span<const uint8_t> bytes, MpegHeader& header) {
    const uint32_t length = mpegFrameLength(bytes, header);
    if (length < 2) {
        return length;
    }
    return length + header.padding * header.paddingSlotBytes();
}

uint32_t mpegParseFirstFrame(std::span<const uint8_t> bytes, MpegHeader& header, uint32_t& bitRate,
                             uint32_t& offset) {
    const long start = mpegFindFrameStart(bytes);
    if (start < 0) {
        return 0;
    }
    offset = static_cast<uint32_t>(start);
    const uint32_t length = mpegFrameLength(bytes.subspan(offset), header);
    if (length == 0) {
        return 0;
    }
    // A free-format frame's rate is what its length carries in its playing
    // time.
    bitRate = header.bitRateIndex != 0 ? header.bitRate * 1000
                                       : static_cast<uint32_t>(uint64_t{header.sampleRate} *
                                                               length * 8 / header.samplesPerFrame);
    return length;
}

}  // namespace tunebox
