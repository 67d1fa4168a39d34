#pragma once
// Result codes of the audio device calls. 0 is success; the engines log any
// other value as a number, so the values stay stable.

#include <cstdint>
#include <string_view>

namespace tunebox {

using AudioResult = uint32_t;

inline constexpr AudioResult kAudioOk = 0;
inline constexpr AudioResult kAudioError = 1;          // the server failed or went away
inline constexpr AudioResult kAudioBadDevice = 2;      // the device is not open
inline constexpr AudioResult kAudioNoDriver = 6;       // no sound server or device to open
inline constexpr AudioResult kAudioBadFormat = 32;     // only the native PCM layout is played
inline constexpr AudioResult kAudioStillPlaying = 33;  // a buffer is still queued
inline constexpr AudioResult kAudioUnprepared = 34;    // the header was not prepared

// One line for a log or an error message.
std::string_view audioResultText(AudioResult result);

}  // namespace tunebox
