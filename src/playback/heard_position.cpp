#include "playback/heard_position.h"

#include "core/wave_format.h"

namespace tunebox {

std::optional<uint32_t> heardSongPosition(WaveCtl& player, uint32_t runStart) {
    const uint32_t played = player.wavGetSongPosition();
    // The state is read after the position: a player that stopped in between
    // has closed its device, whose position reads 0.
    if (player.state() == kPlayerStopped) {
        return std::nullopt;
    }
    return runStart + played;
}

std::optional<double> heardSongSeconds(WaveCtl& player, uint32_t runStart) {
    const std::optional<uint32_t> heard = heardSongPosition(player, runStart);
    if (!heard) {
        return std::nullopt;
    }
    return double(*heard) / kNativeBytesPerSecond;
}

}  // namespace tunebox
