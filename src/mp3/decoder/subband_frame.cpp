#include "mp3/decoder/subband_frame.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "mp3/decoder/layer1_allocation_table.h"
#include "mp3/decoder/layer2_allocation_tables.h"

namespace tunebox {
namespace {

// Both layers code 12 values per subband and channel: single slots in
// Layer I, groups of three slots in Layer II.
constexpr int kCodes = 12;
constexpr int kMaxScaleFactorParts = 3;
constexpr int kMaxSlotsPerCode = 3;

// What tells the layers apart once the allocation table is known.
struct LayerShape {
    int slotsPerCode = 1;
    int scaleFactorParts = 1;  // scale factors per subband, each for an equal run of codes
    bool selectionInfo = false;
};

constexpr LayerShape kLayer1Shape{1, 1, false};
constexpr LayerShape kLayer2Shape{3, 3, true};

// [channel][subband]
template <typename T>
using PerSubband = std::array<std::array<T, kSubbands>, 2>;

struct SubbandFrame {
    LayerShape shape;
    int channels = 1;
    int bound = kSubbands;  // subbands from here up share one allocation
    const AllocationTable* table = nullptr;
    PerSubband<const SubbandQuantizer*> quantizer{};
    PerSubband<std::array<float, kMaxScaleFactorParts>> scale{};
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

const SubbandQuantizer* readQuantizer(BitReader& reader, const SubbandAllocation& allocation) {
    const uint32_t value = reader.read(allocation.bits);
    return value == 0 ? nullptr : &allocation.quantizers[value - 1];
}

bool readAllocation(BitReader& reader, SubbandFrame& frame) {
    for (int sb = 0; sb < frame.table->subbands; ++sb) {
        const SubbandAllocation& allocation = frame.table->allocation[sb];
        const auto s = static_cast<std::size_t>(sb);
        frame.quantizer[0][s] = readQuantizer(reader, allocation);
        if (frame.channels == 2) {
            frame.quantizer[1][s] =
                sb < frame.bound ? readQuantizer(reader, allocation) : frame.quantizer[0][s];
        }
    }
    for (const auto& channel : frame.quantizer) {
        if (std::any_of(channel.begin(), channel.end(),
                        [](const SubbandQuantizer* q) { return q != nullptr && q->levels == 0; })) {
            return false;
        }
    }
    return true;
}

// Which of the three parts take a scale factor of their own, by selection
// info: all three; the first two share; one for all; the last two share.
constexpr std::array<std::array<int, kMaxScaleFactorParts>, 4> kPartSource{
    {{0, 1, 2}, {0, 0, 2}, {0, 0, 0}, {0, 1, 1}}};
constexpr uint32_t kOneForAll = 2;

void readScaleFactors(BitReader& reader, SubbandFrame& frame) {
    PerSubband<uint32_t> selection{};
    for (int sb = 0; sb < frame.table->subbands; ++sb) {
        for (int ch = 0; ch < frame.channels; ++ch) {
            if (frame.quantizer[ch][sb] != nullptr) {
                selection[ch][sb] = frame.shape.selectionInfo ? reader.read(2) : kOneForAll;
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
            for (int part = 0; part < frame.shape.scaleFactorParts; ++part) {
                scale[part] = source[part] == part ? values[reader.read(6)] : scale[source[part]];
            }
        }
    }
}

using CodeValues = std::array<float, kMaxSlotsPerCode>;

// The `count` samples of one code, as fractions in (-1, 1): sample value c
// of n levels stands for (2c + 1 - n) / n.
CodeValues readCode(BitReader& reader, const SubbandQuantizer& quantizer, int count) {
    std::array<uint32_t, kMaxSlotsPerCode> values{};
    const auto levels = static_cast<uint32_t>(quantizer.levels);
    if (quantizer.grouped) {
        uint32_t word = reader.read(quantizer.codewordBits);
        for (auto& value : values) {
            value = word % levels;
            word /= levels;
        }
    } else {
        for (int i = 0; i < count; ++i) {
            values[i] = reader.read(quantizer.codewordBits);
        }
    }
    CodeValues fractions{};
    const float step = 1.0f / static_cast<float>(quantizer.levels);
    for (int i = 0; i < count; ++i) {
        fractions[i] =
            static_cast<float>(2 * static_cast<int>(values[i]) + 1 - quantizer.levels) * step;
    }
    return fractions;
}

struct CodePlace {
    int code = 0;
    int ch = 0;
    int sb = 0;
};

void placeCode(const CodeValues& values, float scale, const CodePlace& at,
               const SubbandFrame& frame, int decodedSubbands, FrameSubbands& out) {
    for (int i = 0; i < frame.shape.slotsPerCode; ++i) {
        const int slot = frame.shape.slotsPerCode * at.code + i;
        out[slot / kSlotsPerGranule][at.ch][slot % kSlotsPerGranule][at.sb] =
            at.sb < decodedSubbands ? values[i] * scale : 0.0f;
    }
}

void readSamples(BitReader& reader, const SubbandFrame& frame, int decodedSubbands,
                 FrameSubbands& out) {
    for (int code = 0; code < kCodes; ++code) {
        const int part = code * frame.shape.scaleFactorParts / kCodes;
        for (int sb = 0; sb < frame.table->subbands; ++sb) {
            CodeValues shared{};
            for (int ch = 0; ch < frame.channels; ++ch) {
                const SubbandQuantizer* quantizer = frame.quantizer[ch][sb];
                if (quantizer == nullptr) {
                    continue;
                }
                // Above the bound both channels take one set of codes, each
                // with its own scale factors.
                if (ch == 0 || sb < frame.bound) {
                    shared = readCode(reader, *quantizer, frame.shape.slotsPerCode);
                }
                placeCode(shared, frame.scale[ch][sb][part], {code, ch, sb}, frame, decodedSubbands,
                          out);
            }
        }
    }
}

}  // namespace

SlotRuns subbandFrameRuns(const MpegHeader& header) {
    if (header.layerField == kLayer1) {
        return {1, kCodes * kLayer1Shape.slotsPerCode};
    }
    return {kCodes * kLayer2Shape.slotsPerCode / kSlotsPerGranule, kSlotsPerGranule};
}

bool readSubbandFrame(BitReader& reader, const MpegHeader& header, int decodedSubbands,
                      FrameSubbands& out) {
    const bool layer1 = header.layerField == kLayer1;
    SubbandFrame frame;
    frame.shape = layer1 ? kLayer1Shape : kLayer2Shape;
    frame.channels = header.channels();
    frame.table = layer1 ? &layer1AllocationTable() : &layer2AllocationTable(header);
    frame.bound = std::min(frame.table->subbands, header.jointStereoBound());
    out = {};
    if (!readAllocation(reader, frame)) {
        return false;
    }
    readScaleFactors(reader, frame);
    readSamples(reader, frame, decodedSubbands, out);
    return !reader.overrun();
}

}  // namespace tunebox
