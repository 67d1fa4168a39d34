#include "playback/wav_refusal.h"

namespace tunebox {

WavRefusal classifyRefusal(PathKind kind, WavOpenStatus status) {
    if (kind == PathKind::missing) {
        return WavRefusal::missing;
    }
    if (kind == PathKind::directory) {
        return WavRefusal::directory;
    }
    switch (status) {
        case WavOpenStatus::opened:
            return WavRefusal::none;
        case WavOpenStatus::cannotOpen:
            return WavRefusal::notReadable;
        case WavOpenStatus::notWave:
            return WavRefusal::notWave;
        case WavOpenStatus::damaged:
            return WavRefusal::damaged;
        case WavOpenStatus::unsupported:
            break;
    }
    return WavRefusal::unsupportedFormat;
}

const char* refusalText(WavRefusal refusal) {
    switch (refusal) {
        case WavRefusal::none:
            return "readable";
        case WavRefusal::missing:
            return "no such file";
        case WavRefusal::notReadable:
            return "cannot be read";
        case WavRefusal::directory:
            return "is a directory";
        case WavRefusal::notWave:
            return "not a WAVE file (other kinds are not supported yet)";
        case WavRefusal::damaged:
            return "damaged WAVE file";
        case WavRefusal::unsupportedFormat:
            break;
    }
    return "unsupported WAVE format (only PCM 44100 Hz 16-bit stereo is read yet)";
}

}  // namespace tunebox
