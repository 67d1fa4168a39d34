#include "capture/stretch_offsets.h"

#include <algorithm>
#include <vector>

#include "capture/offset_finder.h"

namespace tunebox {
namespace {

// How far a stretch may sit from the first one found: far more than any
// drift over a few seconds, far less than a round trip.
constexpr int64_t kDriftFrames = 2205;  // 50 ms

bool holdsSignal(std::span<const float> stretch) {
    return std::any_of(stretch.begin(), stretch.end(), [](float sample) { return sample != 0; });
}

// One stretch starting at reference frame `start`, searched for from
// minOffset to maxOffset within the part of the recording those can reach.
OffsetSearch searchStretch(std::span<const float> stretch, std::span<const float> captured,
                           int64_t start, int64_t minOffset, int64_t maxOffset) {
    const int64_t size = int64_t(captured.size());
    const int64_t windowBegin = std::clamp<int64_t>(start + minOffset, 0, size);
    const int64_t windowEnd =
        std::clamp<int64_t>(start + maxOffset + int64_t(stretch.size()), windowBegin, size);
    OffsetSearch search =
        findOffset(stretch, captured.subspan(windowBegin, windowEnd - windowBegin),
                   start + minOffset - windowBegin, start + maxOffset - windowBegin);
    search.offsetFrames += windowBegin - start;
    return search;
}

}  // namespace

StretchOffsets findStretchOffsets(std::span<const float> reference, std::span<const float> captured,
                                  int64_t minOffset, int64_t maxOffset, std::size_t stretchFrames) {
    StretchOffsets result;
    std::vector<int64_t> offsets;
    for (std::size_t start = 0; start + stretchFrames <= reference.size(); start += stretchFrames) {
        const auto stretch = reference.subspan(start, stretchFrames);
        if (!holdsSignal(stretch)) {
            continue;
        }
        ++result.stretches;
        const bool narrowed = !offsets.empty();
        const int64_t low = narrowed ? offsets.front() - kDriftFrames : minOffset;
        const int64_t high = narrowed ? offsets.front() + kDriftFrames : maxOffset;
        const OffsetSearch search = searchStretch(stretch, captured, int64_t(start), low, high);
        if (search.found) {
            offsets.push_back(search.offsetFrames);
        } else if (result.reason.empty()) {
            result.reason = search.reason;
        }
    }
    result.stretchesFound = int(offsets.size());
    result.found = !offsets.empty() && 2 * result.stretchesFound >= result.stretches;
    if (offsets.empty()) {
        if (result.reason.empty()) {
            result.reason = "the measurement signal is silent";
        }
        return result;
    }
    const auto [earliest, latest] = std::minmax_element(offsets.begin(), offsets.end());
    result.earliestFrames = *earliest;
    result.latestFrames = *latest;
    std::nth_element(offsets.begin(), offsets.begin() + offsets.size() / 2, offsets.end());
    result.offsetFrames = offsets[offsets.size() / 2];
    if (!result.found) {
        result.reason = "the measurement signal was found in only " +
                        std::to_string(result.stretchesFound) + " of " +
                        std::to_string(result.stretches) + " stretches";
    }
    return result;
}

}  // namespace tunebox
