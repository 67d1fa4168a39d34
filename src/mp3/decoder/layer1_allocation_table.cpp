#include "mp3/decoder/layer1_allocation_table.h"

#include <array>

namespace tunebox {
namespace {

constexpr int kAllocationBits = 4;

// Allocation v codes a sample in v + 1 bits with 2^(v + 1) - 1 levels, the
// all-ones code left out so that zero lies on a level. The last value, 15,
// is forbidden.
constexpr auto kQuantizers = [] {
    std::array<SubbandQuantizer, (1 << kAllocationBits) - 1> built{};
    for (std::size_t i = 0; i + 1 < built.size(); ++i) {
        const int bits = static_cast<int>(i) + 2;
        built[i] = {(1 << bits) - 1, bits, false};
    }
    return built;
}();

constexpr auto kBands = [] {
    std::array<SubbandAllocation, 32> built{};
    built.fill({kAllocationBits, kQuantizers.data()});
    return built;
}();

constexpr AllocationTable kTable{static_cast<int>(kBands.size()), kBands.data()};

}  // namespace

const AllocationTable& layer1AllocationTable() {
    return kTable;
}

}  // namespace tunebox
