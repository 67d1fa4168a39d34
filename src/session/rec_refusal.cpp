#include "session/rec_refusal.h"

#include <filesystem>

#include "core/wave_format.h"

namespace tunebox {
namespace {

constexpr uint64_t kSpareBytes = 60ULL * kNativeBytesPerSecond;
// A voice-only take runs until STOP, so its length is unknown. Ten minutes
// outlasts nearly every song: a disk too full for that is better refused at
// the start than found full half-way through.
constexpr uint64_t kVoiceAloneBytes = 10ULL * 60 * kNativeBytesPerSecond;
constexpr uint64_t kMegabyte = 1000 * 1000;

std::string folderOf(const std::string& output) {
    const std::string folder = std::filesystem::path(output).parent_path().string();
    return folder.empty() ? "." : folder;
}

RecCheck refused(RecRefusal kind, const std::string& output, const std::string& reason) {
    return {kind, output + ": " + reason};
}

// What an existing file gives back when the take writes over it.
uint64_t replacedBytes(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return 0;
    }
    const uint64_t size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

}  // namespace

uint64_t takeRoomBytes(std::optional<uint32_t> accompanimentBytes) {
    return accompanimentBytes.value_or(kVoiceAloneBytes) + kSpareBytes;
}

RecCheck judgeOutput(const std::string& output, const FolderRoom& folder, uint64_t neededBytes,
                     bool withVoiceFile) {
    if (output.empty()) {
        return {RecRefusal::kNoOutputName, "no output file is named"};
    }
    if (!folder.exists) {
        return refused(RecRefusal::kNoFolder, output,
                       "the folder " + folderOf(output) + " does not exist");
    }
    if (!folder.isFolder) {
        return refused(RecRefusal::kNoFolder, output, folderOf(output) + " is not a folder");
    }
    if (!folder.writable) {
        return refused(RecRefusal::kFolderNotWritable, output,
                       "the folder " + folderOf(output) + " is not writable");
    }
    if (folder.freeBytes < neededBytes) {
        // The need rounded up and the room down, so that the two never read
        // as equal.
        const uint64_t needed = (neededBytes + kMegabyte - 1) / kMegabyte;
        const uint64_t left = folder.freeBytes / kMegabyte;
        // Named, so that the singer knows that switching the voice file off
        // halves the need.
        const std::string purpose = withVoiceFile ? " for the take and its voice file" : "";
        return refused(RecRefusal::kNoRoom, output,
                       "needs " + std::to_string(needed) + " MB free" + purpose + ", " +
                           std::to_string(left) + " MB left");
    }
    return {};
}

RecCheck checkOutputBeforeRec(const std::string& output, uint64_t neededBytes,
                              const std::string& voiceFile) {
    const bool withVoiceFile = !voiceFile.empty();
    if (output.empty()) {
        return judgeOutput(output, {}, neededBytes, withVoiceFile);
    }
    FolderRoom folder = examineFolder(std::filesystem::path(output).parent_path().string());
    folder.freeBytes += replacedBytes(output) + (withVoiceFile ? replacedBytes(voiceFile) : 0);
    return judgeOutput(output, folder, neededBytes, withVoiceFile);
}

}  // namespace tunebox
