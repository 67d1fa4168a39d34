#include "platform/audio_result.h"

namespace tunebox {

std::string_view audioResultText(AudioResult result) {
    switch (result) {
        case kAudioOk:
            return "no error";
        case kAudioError:
            return "the sound server failed or went away";
        case kAudioBadDevice:
            return "the audio device is not open";
        case kAudioNoDriver:
            return "no sound server or audio device is available";
        case kAudioBadFormat:
            return "the audio format is not supported";
        case kAudioStillPlaying:
            return "a buffer is still queued on the audio device";
        case kAudioUnprepared:
            return "the buffer was not prepared for the audio device";
        default:
            return "unknown audio device error";
    }
}

}  // namespace tunebox
