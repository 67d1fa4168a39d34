#include "mp3/decoder/layer3_scale_factors.h"

namespace tunebox {
namespace {

constexpr std::array<int, 16> kSlen1{0, 0, 0, 0, 3, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4};
constexpr std::array<int, 16> kSlen2{0, 1, 2, 3, 0, 1, 2, 3, 1, 2, 3, 1, 2, 3, 2, 3};
constexpr std::array<int, 5> kScfsiGroupStart{0, 6, 11, 16, 21};

// Number of scale factors in each of the four partitions, by coding variant
// and block kind (long, short, mixed).
constexpr int kPartitionSizes[6][3][4] = {
    {{6, 5, 5, 5}, {9, 9, 9, 9}, {6, 9, 9, 9}},
    {{6, 5, 7, 3}, {9, 9, 12, 6}, {6, 9, 12, 6}},
    {{11, 10, 0, 0}, {18, 18, 0, 0}, {15, 18, 0, 0}},
    {{7, 7, 7, 0}, {12, 12, 12, 0}, {6, 15, 12, 0}},
    {{6, 6, 6, 3}, {12, 9, 9, 6}, {6, 12, 9, 6}},
    {{8, 8, 5, 0}, {15, 12, 9, 0}, {6, 18, 9, 0}},
};

uint8_t limitFor(int bits) {
    return static_cast<uint8_t>((1 << bits) - 1);
}

void readShortBands(BitReader& reader, int firstBand, int endBand, int bits, ScaleFactors& f) {
    for (int band = firstBand; band < endBand; ++band) {
        for (uint8_t& value : f.shortBands[band]) {
            value = static_cast<uint8_t>(reader.read(bits));
        }
        f.shortLimit[band] = limitFor(bits);
    }
}

void readLongBands(BitReader& reader, int firstBand, int endBand, int bits, ScaleFactors& f) {
    for (int band = firstBand; band < endBand; ++band) {
        f.longBands[band] = static_cast<uint8_t>(reader.read(bits));
        f.longLimit[band] = limitFor(bits);
    }
}

struct Mpeg2Coding {
    int variant = 0;
    std::array<int, 4> bits{};
};

Mpeg2Coding mpeg2Coding(int compress, bool intensityChannel) {
    if (intensityChannel) {
        const int value = compress >> 1;
        if (value < 180) {
            return {3, {value / 36, (value % 36) / 6, value % 6, 0}};
        }
        if (value < 244) {
            const int rest = value - 180;
            return {4, {(rest & 63) >> 4, (rest & 15) >> 2, rest & 3, 0}};
        }
        const int rest = value - 244;
        return {5, {rest / 3, rest % 3, 0, 0}};
    }
    if (compress < 400) {
        return {0, {(compress >> 4) / 5, (compress >> 4) % 5, (compress & 15) >> 2, compress & 3}};
    }
    if (compress < 500) {
        const int rest = compress - 400;
        return {1, {(rest >> 2) / 5, (rest >> 2) % 5, rest & 3, 0}};
    }
    const int rest = compress - 500;
    return {2, {rest / 3, rest % 3, 0, 0}};
}

}  // namespace

void readScaleFactorsMpeg1(BitReader& reader, const GranuleChannelInfo& info,
                           const std::array<bool, 4>& scfsi, int granule, ScaleFactors& factors) {
    const int slen1 = kSlen1[info.scalefacCompress];
    const int slen2 = kSlen2[info.scalefacCompress];
    factors.longLimit.fill(7);
    factors.shortLimit.fill(7);
    if (info.shortBlocks()) {
        factors.longBands = {};
        factors.shortBands = {};
        int firstShort = 0;
        if (info.mixedBlock) {
            readLongBands(reader, 0, 8, slen1, factors);
            firstShort = 3;
        }
        readShortBands(reader, firstShort, 6, slen1, factors);
        readShortBands(reader, 6, 12, slen2, factors);
        factors.longLimit.fill(7);
        factors.shortLimit.fill(7);
        return;
    }
    for (int group = 0; group < 4; ++group) {
        if (granule == 1 && scfsi[group]) {
            continue;
        }
        readLongBands(reader, kScfsiGroupStart[group], kScfsiGroupStart[group + 1],
                      group < 2 ? slen1 : slen2, factors);
    }
    factors.longBands[21] = 0;
    factors.longLimit.fill(7);
}

void readScaleFactorsMpeg2(BitReader& reader, const GranuleChannelInfo& info, bool intensityChannel,
                           ScaleFactors& factors) {
    const Mpeg2Coding coding = mpeg2Coding(info.scalefacCompress, intensityChannel);
    const int kind = !info.shortBlocks() ? 0 : info.mixedBlock ? 2 : 1;
    const int* sizes = kPartitionSizes[coding.variant][kind];
    factors = ScaleFactors{};
    // Factors arrive as one run: long bands first (all of them for long
    // blocks, six for mixed blocks), then short bands window by window.
    const int longCount = kind == 0 ? kLongBands - 1 : kind == 2 ? 6 : 0;
    const int firstShort = kind == 2 ? 3 : 0;
    int slot = 0;
    for (int partition = 0; partition < 4; ++partition) {
        const int bits = coding.bits[partition];
        for (int i = 0; i < sizes[partition]; ++i, ++slot) {
            const auto value = static_cast<uint8_t>(reader.read(bits));
            if (slot < longCount) {
                factors.longBands[slot] = value;
                factors.longLimit[slot] = limitFor(bits);
            } else {
                const int shortSlot = slot - longCount;
                const int band = firstShort + shortSlot / 3;
                if (band < kShortBands) {
                    factors.shortBands[band][shortSlot % 3] = value;
                    factors.shortLimit[band] = limitFor(bits);
                }
            }
        }
    }
}

}  // namespace tunebox
