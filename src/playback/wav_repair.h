#pragma once
// Takes whose recording was cut off (the program killed, the power lost)
// keep their audio but not the two sizes written at the end: the RIFF size
// and the "data" size say less, or more, than the file holds. This tells such
// a file from a finished one and repairs it in place.

#include <string>

namespace tunebox {

enum class WavCondition {
    kFinished,    // the sizes agree with the file
    kUnfinished,  // a RIFF/WAVE file whose sizes disagree with its length
    kNotWav,      // not a RIFF/WAVE file that can be understood
};

struct WavInspection {
    WavCondition condition = WavCondition::kNotWav;
    std::string detail;  // one line for a person
};

// Reads the file's chunk headers only; the file is never changed.
WavInspection inspectWav(const std::string& path);

struct RepairResult {
    bool repaired = false;         // the file was unfinished and is now finished
    std::string message;           // one line for a person
    bool alreadyFinished = false;  // nothing needed doing, nothing was changed
};

// Fixes an unfinished PCM file in place: the "data" size becomes the whole
// frames after the data chunk's start (when it is the last chunk), the file is
// cut after the last whole frame and the RIFF size rewritten. Everything is
// checked before the first byte is written; a file it cannot understand, or
// that is already finished, is left exactly as it was.
RepairResult repairWav(const std::string& path);

}  // namespace tunebox
