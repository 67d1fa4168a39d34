#pragma once
// The last stage of a frame: polyphase synthesis of each channel's subband
// samples and the conversion to the output's sample format. One routine per
// combination of sample size, rate reduction and channel handling, all made
// from one template and looked up in a table of 30.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "mp3/decoder/hybrid_filter_bank.h"
#include "mp3/decoder/narrow_synthesis.h"
#include "mp3/decoder/polyphase_synthesis.h"

namespace tunebox {

// What becomes of the stream's channels:
//   0  one-channel stream: its one channel;
//   1  both channels, interleaved left, right;
//   2  the two channels mixed to one, written to both output channels
//      (every synthesised sample goes out twice);
//   3  the left channel alone;
//   4  the right channel alone.
// Handlings 1..4 are the low two bits of the output mode plus one.
inline constexpr int kChannelHandlings = 5;
inline constexpr int kMaxReduction = 2;

// Output samples per synthesised sample.
constexpr int sampleMultiplier(int channelHandling) {
    return channelHandling == 2 ? 2 : 1;
}
constexpr int synthesisedChannels(int channelHandling) {
    return channelHandling == 1 ? 2 : 1;
}

// The synthesis state of one channel at any of the reductions.
struct ChannelSynthesis {
    PolyphaseSynthesis full;
    NarrowSynthesis narrow;
    void reset() {
        full.reset();
        narrow.reset();
    }
};

// [granule][channel]
using FrameSubbands = std::array<std::array<SubbandSamples, 2>, 2>;

struct FrameOutput {
    int granules = 0;  // runs of `slots` time slots
    const FrameSubbands* subbands = nullptr;
    std::array<ChannelSynthesis, 2>* synthesis = nullptr;
    std::span<uint8_t> out;        // big enough for the frame in the output format
    int slots = kSlotsPerGranule;  // 12 for Layer I, up to 18
};

// Writes the frame and returns the number of bytes written.
using FrameOutputRoutine = std::size_t (*)(const FrameOutput&);

// 16-bit samples are signed and little-endian; 8-bit ones unsigned with
// silence at 128, as wave files hold them.
FrameOutputRoutine frameOutputRoutine(bool eightBit, int reduction, int channelHandling);

}  // namespace tunebox
