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
        case WavOpenStatus::refused:
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
            return "neither a WAVE nor an MP3 file (no audio frame found)";
        case WavRefusal::damaged:
            return "damaged WAVE file";
        case WavRefusal::unsupportedFormat:
            break;
    }
    return "unsupported WAVE format (8- or 16-bit PCM, A-law, mu-law or MPEG audio, 1 or 2 "
           "channels)";
}

}  // namespace tunebox
