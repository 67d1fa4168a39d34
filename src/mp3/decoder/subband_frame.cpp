#include "mp3/decoder/layer2_frame.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "mp3/decoder/layer2_allocation_tables.h"

namespace tunebox {
namespace {

constexpr int kScaleFactorParts = 3;  // one per 12 slots
constexpr int kSlotGroups = 12;       // of three slots each
constexpr int kGroupsPerPart = kSlotGroups / kScaleFactorParts;

// [channel][subband]
template <typename T>
using PerSubband = std::array<std::array<T, kSubbands>, 2>;

struct Layer2Frame {
    int channels = 1;
    int bound = kSubbands;  // subbands from here up share one allocation
    const Layer2AllocationTable* table = nullptr;
    PerSubband<const Layer2Quantizer*> quantizer{};
    PerSubband<std::array<float, kScaleFactorParts>> scale{};
};

// Scale factor index i stands for 2^(1 - i/3).
const std::array<float, 64>& scaleFactorValues() {
    static const auto values = [] {
        std::array<float, 64> built{};
        for (std::size_t i = 0; i < built.size(); ++i) {
            built[i] = static_cast<float>(std::exp2(1.0 - static_cast<double>(i) / 3.0));
        }
        return built;
    }();
    return values;
}

int jointStereoBound(const MpegHeader& header, int subbands) {
    if (header.channelMode != kJointStereo) {
        return subbands;
    }
    return std::min(subbands, 4 * (static_cast<int>(header.modeExtension) + 1));
}

const Layer2Quantizer* readQuantizer(BitReader& reader, const Layer2SubbandAllocation& allocation) {
    const uint32_t value = reader.read(allocation.bits);
    return value == 0 ? nullptr : &allocation.quantizers[value - 1];
}

void readAllocation(BitReader& reader, Layer2Frame& frame) {
    for (int sb = 0; sb < frame.table->subbands; ++sb) {
        const Layer2SubbandAllocation& allocation = frame.table->allocation[sb];
        const auto s = static_cast<std::size_t>(sb);
        frame.quantizer[0][s] = readQuantizer(reader, allocation);
        if (frame.channels == 2) {
            frame.quantizer[1][s] =
                sb < frame.bound ? readQuantizer(reader, allocation) : frame.quantizer[0][s];
        }
    }
}

// Which of the three parts take a scale factor of their own, by selection
// info: all three; the first two share; one for all; the last two share.
constexpr std::array<std::array<int, kScaleFactorParts>, 4> kPartSource{
    {{0, 1, 2}, {0, 0, 2}, {0, 0, 0}, {0, 1, 1}}};

void readScaleFactors(BitReader& reader, Layer2Frame& frame) {
    PerSubband<uint32_t> selection{};
    for (int sb = 0; sb < frame.table->subbands; ++sb) {
        for (int ch = 0; ch < frame.channels; ++ch) {
            if (frame.quantizer[ch][sb] != nullptr) {
                selection[ch][sb] = reader.read(2);
            }
        }
    }
    const auto& values = scaleFactorValues();
    for (int sb = 0; sb < frame.table->subbands; ++sb) {
        for (int ch = 0; ch < frame.channels; ++ch) {
            if (frame.quantizer[ch][sb] == nullptr) {
                continue;
            }
            auto& scale = frame.scale[ch][sb];
            const auto& source = kPartSource[selection[ch][sb]];
            for (int part = 0; part < kScaleFactorParts; ++part) {
                scale[part] = source[part] == part ? values[reader.read(6)] : scale[source[part]];
            }
        }
    }
}

// Three codes of one subband and slot group, as fractions in (-1, 1): code
// c of n levels stands for (2c + 1 - n) / n.
std::array<float, 3> readTriple(BitReader& reader, const Layer2Quantizer& quantizer) {
    std::array<uint32_t, 3> codes{};
    const auto levels = static_cast<uint32_t>(quantizer.levels);
    if (quantizer.grouped) {
        uint32_t word = reader.read(quantizer.codewordBits);
        for (auto& code : codes) {
            code = word % levels;
            word /= levels;
        }
    } else {
        for (auto& code : codes) {
            code = reader.read(quantizer.codewordBits);
        }
    }
    std::array<float, 3> fractions{};
    const float step = 1.0f / static_cast<float>(quantizer.levels);
    for (std::size_t i = 0; i < codes.size(); ++i) {
        fractions[i] =
            static_cast<float>(2 * static_cast<int>(codes[i]) + 1 - quantizer.levels) * step;
    }
    return fractions;
}

void placeTriple(const std::array<float, 3>& values, float scale, int group, int ch, int sb,
                 int decodedSubbands, FrameSubbands& out) {
    for (int i = 0; i < 3; ++i) {
        const int slot = 3 * group + i;
        out[slot / kSlotsPerGranule][ch][slot % kSlotsPerGranule][sb] =
            sb < decodedSubbands ? values[i] * scale : 0.0f;
    }
}

void readSamples(BitReader& reader, const Layer2Frame& frame, int decodedSubbands,
                 FrameSubbands& out) {
    for (int group = 0; group < kSlotGroups; ++group) {
        const int part = group / kGroupsPerPart;
        for (int sb = 0; sb < frame.table->subbands; ++sb) {
            std::array<float, 3> shared{};
            for (int ch = 0; ch < frame.channels; ++ch) {
                const Layer2Quantizer* quantizer = frame.quantizer[ch][sb];
                if (quantizer == nullptr) {
                    continue;
                }
                // Above the bound both channels take one set of codes, each
                // with its own scale factors.
                if (ch == 0 || sb < frame.bound) {
                    shared = readTriple(reader, *quantizer);
                }
                placeTriple(shared, frame.scale[ch][sb][part], group, ch, sb, decodedSubbands, out);
            }
        }
    }
}

}  // namespace

bool readLayer2Frame(BitReader& reader, const MpegHeader& header, int decodedSubbands,
                     FrameSubbands& out) {
    Layer2Frame frame;
    frame.channels = header.channels();
    frame.table = &layer2AllocationTable(header);
    frame.bound = jointStereoBound(header, frame.table->subbands);
    out = {};
    readAllocation(reader, frame);
    readScaleFactors(reader, frame);
    readSamples(reader, frame, decodedSubbands, out);
    return !reader.overrun();
}

}  // namespace tunebox
