#include "app/cli/play_progress.h"

#include <algorithm>

#include "playback/wav_length.h"

namespace tunebox::cli {
namespace {

constexpr int kBarWidth = 30;

}  // namespace

void PlayProgress::advance(uint32_t played) {
    const uint64_t position = std::min<uint64_t>(uint64_t{start_} + played, length_);
    position_ = std::max(position_, static_cast<uint32_t>(position));
}

std::string PlayProgress::line(bool paused) const {
    const double fraction = length_ == 0 ? 1.0 : double(position_) / length_;
    const int filled = static_cast<int>(fraction * kBarWidth);
    return formatSectorTime(position_) + " [" + std::string(filled, '#') +
           std::string(kBarWidth - filled, '-') + "] " +
           std::to_string(static_cast<int>(fraction * 100)) + "%" +
           (paused ? " paused" : "       ");
}

}  // namespace tunebox::cli
