#pragma once
// Helpers for driving the player in tests: generated WAV files, the
// player's usual start-up, and waiting.

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "platform/virtual_audio.h"
#include "playback/wav_writer.h"
#include "playback/wave_ctl.h"

namespace tunebox::test {

// Native PCM that holds no zero and no -32768 sample: silence around it is
// told apart, and an effect chain with every stage off leaves it unchanged.
inline std::vector<uint8_t> patternBytes(uint32_t byteCount) {
    std::vector<uint8_t> bytes(byteCount);
    for (uint32_t i = 0; i + 1 < byteCount; i += 2) {
        const uint32_t sample = i / 2;
        const int16_t value = sample % 2 == 0 ? static_cast<int16_t>(1 + sample * 7 % 30000)
                                              : static_cast<int16_t>(-1 - sample * 13 % 30000);
        bytes[i] = static_cast<uint8_t>(value);
        bytes[i + 1] = static_cast<uint8_t>(static_cast<uint16_t>(value) >> 8);
    }
    return bytes;
}

inline bool writeWav(const std::filesystem::path& path, const std::vector<uint8_t>& data) {
    WaveWriter writer;
    wavResetWriter(writer);
    return wavCreateFile(path.string(), writer) == 1 &&
           wavWrite(writer, data.data(), static_cast<uint32_t>(data.size())) == 1 &&
           wavCloseFile(writer) == 1;
}

// The dialog's defaults for a track: level 100, every band 24, every effect
// flag off, room size 0.9.
inline void initPlayer(WaveCtl& player, const PlayRange& range = {}, int32_t reverbFlag = 0) {
    player.wavInit({.reverbFlag = reverbFlag, .playRange = range});
    player.wavSetRoomSize(9);
}

// Polls `done` until it holds or `timeout` of real time passed, running
// `onPoll` at every turn.
inline bool waitUntil(const std::function<bool()>& done,
                      std::chrono::milliseconds timeout = std::chrono::seconds(20),
                      const std::function<void()>& onPoll = {}) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        if (onPoll) {
            onPoll();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace tunebox::test
