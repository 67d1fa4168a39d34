#pragma once
// Why REC may refuse to start, checked before anything runs: a take that
// cannot be written should be known before the singer sings, not found out
// when the file fails half-way through.

#include <cstdint>
#include <optional>
#include <string>

#include "platform/folder_room.h"

namespace tunebox {

enum class RecRefusal {
    kNone,
    kNoOutputName,
    kNoFolder,
    kFolderNotWritable,
    kNoRoom,
    kCaptureFailed,
};

struct RecCheck {
    RecRefusal kind = RecRefusal::kNone;
    std::string message;  // one line naming the output; empty with kNone
};

// The room a take asks for, in bytes: the part of the accompaniment that
// plays (native-PCM bytes) or, for the voice alone, an assumed length, and a
// minute to spare either way.
uint64_t takeRoomBytes(std::optional<uint32_t> accompanimentBytes);

// Judges `output` against what its folder offers, `neededBytes` the room
// the take (and its voice file, when `withVoiceFile`) asks for. Touches
// nothing on disk.
RecCheck judgeOutput(const std::string& output, const FolderRoom& folder, uint64_t neededBytes,
                     bool withVoiceFile = false);

// The same, asking the file system about the output's folder. The bytes of
// an existing output file, and of an existing `voiceFile` (empty when the
// take writes none), count as room, since the take replaces them.
RecCheck checkOutputBeforeRec(const std::string& output, uint64_t neededBytes,
                              const std::string& voiceFile = {});

}  // namespace tunebox
