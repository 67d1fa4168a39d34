#include "lyrics/lyric_finder.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "lyrics/lyric_format.h"

namespace tunebox {
namespace {

std::optional<std::filesystem::path> existingBeside(const std::filesystem::path& file,
                                                    const std::string& extension) {
    std::string upper = extension;
    for (char& c : upper) {
        c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    }
    for (const std::string& candidate : {extension, upper}) {
        std::filesystem::path path = file;
        path.replace_extension(candidate);
        std::error_code error;
        if (path != file && std::filesystem::is_regular_file(path, error)) {
            return path;
        }
    }
    return std::nullopt;
}

// The header of a song is at its top; a bigger file is damaged anyway, and
// the search must not stall on one.
std::string fileStart(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::string bytes(kMaxLyricTextBytes, '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(kMaxLyricTextBytes));
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    return bytes;
}

}  // namespace

std::optional<std::string> ultraStarAudioFile(const std::string& songPath) {
    const LyricReading reading = parseLyricText(LyricFormat::kUltraStar, fileStart(songPath));
    if (!reading.sheet || reading.sheet->audioFile.empty()) {
        return std::nullopt;
    }
    return (std::filesystem::path(songPath).parent_path() / reading.sheet->audioFile).string();
}

std::optional<std::string> findLyricsFor(const std::string& accompaniment) {
    const std::filesystem::path file(accompaniment);
    if (const auto lrc = existingBeside(file, ".lrc")) {
        return lrc->string();
    }
    if (const auto song = existingBeside(file, ".txt")) {
        const auto audio = ultraStarAudioFile(song->string());
        std::error_code error;
        if (audio && std::filesystem::equivalent(*audio, file, error)) {
            return song->string();
        }
    }
    if (const auto cdg = existingBeside(file, ".cdg")) {
        return cdg->string();
    }
    return std::nullopt;
}

}  // namespace tunebox
