#include "mp3/decoder/frame_output.h"

#include <bit>
#include <cstring>
#include <utility>

namespace tunebox {
namespace {

static_assert(std::endian::native == std::endian::little,
              "16-bit samples are copied out as the machine holds them");

template <int Reduction>
void synthesizeChannel(ChannelSynthesis& synthesis, const SubbandSamples& in, int slots,
                       int16_t* out, int stride) {
    if constexpr (Reduction == 0) {
        synthesis.full.synthesize(in, out, stride, slots);
    } else {
        synthesis.narrow.synthesize(in, kSubbands >> Reduction, out, stride, slots);
    }
}

// Mixing before the synthesis gives the same samples as mixing after it,
// as the synthesis is linear, at half the cost. Only the subbands the
// synthesis reads are mixed.
template <int Reduction>
void mixDown(const SubbandSamples& left, const SubbandSamples& right, SubbandSamples& mixed) {
    for (int slot = 0; slot < kSlotsPerGranule; ++slot) {
        for (int sb = 0; sb < (kSubbands >> Reduction); ++sb) {
            mixed[slot][sb] = 0.5f * (left[slot][sb] + right[slot][sb]);
        }
    }
}

// One granule of interleaved 16-bit samples, in the handling's channels.
template <int Reduction, int Handling>
void synthesizeGranule(const FrameOutput& frame, int granule, int16_t* pcm) {
    const auto& subbands = (*frame.subbands)[granule];
    auto& synthesis = *frame.synthesis;
    const int slots = frame.slots;
    if constexpr (Handling == 1) {
        synthesizeChannel<Reduction>(synthesis[0], subbands[0], slots, pcm, 2);
        synthesizeChannel<Reduction>(synthesis[1], subbands[1], slots, pcm + 1, 2);
    } else if constexpr (Handling == 2) {
        SubbandSamples mixed;
        mixDown<Reduction>(subbands[0], subbands[1], mixed);
        synthesizeChannel<Reduction>(synthesis[0], mixed, slots, pcm, 2);
        for (int i = 0; i < (slots * kSubbands >> Reduction); ++i) {
            pcm[2 * i + 1] = pcm[2 * i];
        }
    } else {
        constexpr int kChannel = Handling == 4 ? 1 : 0;
        synthesizeChannel<Reduction>(synthesis[kChannel], subbands[kChannel], slots, pcm, 1);
    }
}

template <bool EightBit>
void store(const int16_t* pcm, std::size_t count, uint8_t* out) {
    if constexpr (EightBit) {
        for (std::size_t i = 0; i < count; ++i) {
            out[i] = static_cast<uint8_t>((pcm[i] >> 8) + 128);
        }
    } else {
        std::memcpy(out, pcm, count * sizeof(int16_t));
    }
}

template <bool EightBit, int Reduction, int Handling>
std::size_t writeFrame(const FrameOutput& frame) {
    constexpr int kSamplesPerSlot =
        (kSubbands >> Reduction) * synthesisedChannels(Handling) * sampleMultiplier(Handling);
    const auto samples = static_cast<std::size_t>(kSamplesPerSlot * frame.slots);
    const std::size_t bytes = samples * (EightBit ? 1 : 2);
    std::array<int16_t, kSamplesPerSlot * kSlotsPerGranule> pcm;
    for (int granule = 0; granule < frame.granules; ++granule) {
        synthesizeGranule<Reduction, Handling>(frame, granule, pcm.data());
        store<EightBit>(pcm.data(), samples, frame.out.data() + granule * bytes);
    }
    return bytes * static_cast<std::size_t>(frame.granules);
}

constexpr int kRoutinesPerFamily = (kMaxReduction + 1) * kChannelHandlings;

// Family (16-bit, then 8-bit), then reduction, then channel handling.
template <std::size_t... Index>
constexpr std::array<FrameOutputRoutine, sizeof...(Index)> buildRoutines(
    std::index_sequence<Index...>) {
    return {writeFrame<(Index / kRoutinesPerFamily) == 1,
                       static_cast<int>(Index % kRoutinesPerFamily) / kChannelHandlings,
                       static_cast<int>(Index % kChannelHandlings)>...};
}

constexpr auto kRoutines = buildRoutines(std::make_index_sequence<2 * kRoutinesPerFamily>());

}  // namespace

FrameOutputRoutine frameOutputRoutine(bool eightBit, int reduction, int channelHandling) {
    const int index =
        (eightBit ? kRoutinesPerFamily : 0) + reduction * kChannelHandlings + channelHandling;
    return kRoutines[static_cast<std::size_t>(index)];
}

}  // namespace tunebox
