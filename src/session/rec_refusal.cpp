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

}  // namespace

uint64_t takeRoomBytes(std::optional<uint32_t> accompanimentBytes) {
    return accompanimentBytes.value_or(kVoiceAloneBytes) + kSpareBytes;
}

RecCheck judgeOutput(const std::string& output, const FolderRoom& folder, uint64_t neededBytes) {
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
        return refused(
            RecRefusal::kNoRoom, output,
            "needs " + std::to_string(needed) + " MB free, " + std::to_string(left) + " MB left");
    }
    return {};
}

RecCheck checkOutputBeforeRec(const std::string& output, uint64_t neededBytes) {
    if (output.empty()) {
        return judgeOutput(output, {}, neededBytes);
    }
    FolderRoom folder = examineFolder(std::filesystem::path(output).parent_path().string());
    std::error_code error;
    if (std::filesystem::is_regular_file(output, error)) {
        const uint64_t replaced = std::filesystem::file_size(output, error);
        folder.freeBytes += error ? 0 : replaced;
    }
    return judgeOutput(output, folder, neededBytes);
}

}  // namespace tunebox
