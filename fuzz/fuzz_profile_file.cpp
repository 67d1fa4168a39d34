// The settings file as a user or another program may have left it: reading
// must not crash, and writing one key must leave every other value as it was
// and make that key read back exactly.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "platform/profile_file.h"

namespace {

const std::filesystem::path& scratchFile() {
    static const std::filesystem::path file = [] {
        std::random_device random;
        return std::filesystem::temp_directory_path() /
               ("tunebox-fuzz-" + std::to_string(random()) + ".INI");
    }();
    return file;
}

struct Values {
    int32_t delay;
    int32_t manual;
    int32_t decoder;
    std::string karaokeFolder;
    bool operator==(const Values&) const = default;
};

Values readValues(const std::filesystem::path& file) {
    using tunebox::profileReadInt;
    return {profileReadInt(file, "REC_DIFFERENCE", "DIFF_PLAY_BYTE", -1),
            profileReadInt(file, "REC_DIFFERENCE", "MANUAL_DIFF", -1),
            profileReadInt(file, "MP3_DECODER", "ORIGINAL", -1),
            tunebox::profileReadString(file, "KARAOKE_FOLDER", "PATH", "", 260)};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::filesystem::path& file = scratchFile();
    std::ofstream(file, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));

    const Values before = readValues(file);
    const std::string folder = "/fuzz/folder/";
    if (tunebox::profileWriteString(file, "MIC_FOLDER", "PATH", folder) != 1) {
        std::abort();
    }
    if (readValues(file) != before ||
        tunebox::profileReadString(file, "mic_folder", "path", "", 260) != folder) {
        std::abort();
    }
    std::filesystem::remove(file);
    return 0;
}
