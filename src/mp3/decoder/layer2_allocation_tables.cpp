#include "mp3/decoder/layer2_allocation_tables.h"

#include <array>
#include <bit>
#include <cstdint>

namespace tunebox {
namespace {

constexpr SubbandQuantizer q(int levels) {
    switch (levels) {
        case 3:
            return {3, 5, true};
        case 5:
            return {5, 7, true};
        case 9:
            return {9, 10, true};
        default:
            // 2^n - 1 levels in n bits.
            return {levels, static_cast<int>(std::bit_width(static_cast<unsigned>(levels))), false};
    }
}

// The quantiser rows the tables are made of, by allocation value.
constexpr std::array kLowBandsWide{q(3),    q(7),    q(15),    q(31),    q(63),
                                   q(127),  q(255),  q(511),   q(1023),  q(2047),
                                   q(4095), q(8191), q(16383), q(32767), q(65535)};
constexpr std::array kMiddleBandsWide{q(3),    q(5),    q(7),    q(9),    q(15),
                                      q(31),   q(63),   q(127),  q(255),  q(511),
                                      q(1023), q(2047), q(4095), q(8191), q(65535)};
constexpr std::array kUpperBands3Bit{q(3), q(5), q(7), q(9), q(15), q(31), q(65535)};
constexpr std::array kTopBands2Bit{q(3), q(5), q(65535)};
constexpr std::array kNarrowLowBands{q(3),    q(5),    q(9),    q(15),    q(31),
                                     q(63),   q(127),  q(255),  q(511),   q(1023),
                                     q(2047), q(4095), q(8191), q(16383), q(32767)};
constexpr std::array kNarrowUpperBands{q(3), q(5), q(9), q(15), q(31), q(63), q(127)};
constexpr std::array kLowRateLowBands{q(3),    q(5),    q(7),    q(9),    q(15),
                                      q(31),   q(63),   q(127),  q(255),  q(511),
                                      q(1023), q(2047), q(4095), q(8191), q(16383)};
constexpr std::array kLowRateMiddleBands{q(3), q(5), q(9), q(15), q(31), q(63), q(127)};
constexpr std::array kLowRateUpperBands{q(3), q(5), q(9)};

constexpr SubbandAllocation a(int bits, const SubbandQuantizer* quantizers) {
    return {bits, quantizers};
}

constexpr auto kWide4a = a(4, kLowBandsWide.data());
constexpr auto kWide4b = a(4, kMiddleBandsWide.data());
constexpr auto kWide3 = a(3, kUpperBands3Bit.data());
constexpr auto kWide2 = a(2, kTopBands2Bit.data());
constexpr auto kNarrow4 = a(4, kNarrowLowBands.data());
constexpr auto kNarrow3 = a(3, kNarrowUpperBands.data());
constexpr auto kLow4 = a(4, kLowRateLowBands.data());
constexpr auto kLow3 = a(3, kLowRateMiddleBands.data());
constexpr auto kLow2 = a(2, kLowRateUpperBands.data());

// MPEG-1 at the middle and high rates: 27 or 30 subbands.
constexpr std::array<SubbandAllocation, 30> kWideBands{
    kWide4a, kWide4a, kWide4a, kWide4b, kWide4b, kWide4b, kWide4b, kWide4b, kWide4b, kWide4b,
    kWide4b, kWide3,  kWide3,  kWide3,  kWide3,  kWide3,  kWide3,  kWide3,  kWide3,  kWide3,
    kWide3,  kWide3,  kWide3,  kWide2,  kWide2,  kWide2,  kWide2,  kWide2,  kWide2,  kWide2};
// MPEG-1 at the lowest rates: 8 or 12 subbands.
constexpr std::array<SubbandAllocation, 12> kNarrowBands{kNarrow4, kNarrow4, kNarrow3, kNarrow3,
                                                         kNarrow3, kNarrow3, kNarrow3, kNarrow3,
                                                         kNarrow3, kNarrow3, kNarrow3, kNarrow3};
// MPEG-2 at the low sample rates: one table for every bit rate.
constexpr std::array<SubbandAllocation, 30> kLowRateBands{
    kLow4, kLow4, kLow4, kLow4, kLow3, kLow3, kLow3, kLow3, kLow3, kLow3,
    kLow3, kLow2, kLow2, kLow2, kLow2, kLow2, kLow2, kLow2, kLow2, kLow2,
    kLow2, kLow2, kLow2, kLow2, kLow2, kLow2, kLow2, kLow2, kLow2, kLow2};

constexpr AllocationTable kTableA{27, kWideBands.data()};
constexpr AllocationTable kTableB{30, kWideBands.data()};
constexpr AllocationTable kTableC{8, kNarrowBands.data()};
constexpr AllocationTable kTableD{12, kNarrowBands.data()};
constexpr AllocationTable kTableLowRate{30, kLowRateBands.data()};

constexpr uint32_t k32kHzIndex = 2;
constexpr uint32_t k48kHzIndex = 1;

}  // namespace

const AllocationTable& layer2AllocationTable(const MpegHeader& header) {
    if (!header.isMpeg1()) {
        return kTableLowRate;
    }
    const uint32_t perChannel =
        header.bitRate == 0 ? 192 : header.bitRate / static_cast<uint32_t>(header.channels());
    if (perChannel <= 48) {
        return header.sampleRateIndex == k32kHzIndex ? kTableD : kTableC;
    }
    if (perChannel <= 80 || header.sampleRateIndex == k48kHzIndex) {
        return kTableA;
    }
    return kTableB;
}

}  // namespace tunebox
