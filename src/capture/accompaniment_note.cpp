#include "capture/accompaniment_note.h"

#include <charconv>
#include <string_view>

namespace tunebox {
namespace {

// A path is at most a few kilobytes; anything larger is not ours.
constexpr uint32_t kLargestNote = 16 * 1024;

// Reads "KEY=digits\n" at the front of `text` and moves past it.
std::optional<uint32_t> takeNumber(std::string_view& text, std::string_view key) {
    if (!text.starts_with(key) || text.size() <= key.size() || text[key.size()] != '=') {
        return std::nullopt;
    }
    text.remove_prefix(key.size() + 1);
    uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end == text.data() || end == text.data() + text.size() ||
        *end != '\n') {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()) + 1);
    return value;
}

}  // namespace

NoteChunk encodeAccompanimentNote(const AccompanimentNote& note) {
    const std::string text =
        "start=" + std::to_string(note.start) + "\nlength=" + std::to_string(note.length) +
        "\nbuiltin=" + (note.builtinDecoderFirst ? "1" : "0") + "\npath=" + note.path;
    return {kAccompanimentNoteId, std::vector<uint8_t>(text.begin(), text.end())};
}

std::optional<AccompanimentNote> decodeAccompanimentNote(const std::string& text) {
    std::string_view rest = text;
    const auto start = takeNumber(rest, "start");
    const auto length = start ? takeNumber(rest, "length") : std::nullopt;
    const auto builtin = length ? takeNumber(rest, "builtin") : std::nullopt;
    constexpr std::string_view kPathKey = "path=";
    if (!builtin || *builtin > 1 || !rest.starts_with(kPathKey) || rest.size() == kPathKey.size()) {
        return std::nullopt;
    }
    rest.remove_prefix(kPathKey.size());
    return AccompanimentNote{std::string(rest), *start, *length, *builtin == 1};
}

std::optional<AccompanimentNote> readAccompanimentNote(const std::string& wavPath) {
    const RiffHandle file = RiffFile::openForRead(wavPath);
    if (!file) {
        return std::nullopt;
    }
    ChunkInfo riff;
    riff.formType = fourCc("WAVE");
    if (file->descend(riff, nullptr, ChunkSearch::findRiff) != DescendResult::found) {
        return std::nullopt;
    }
    ChunkInfo chunk;
    chunk.id = kAccompanimentNoteId;
    if (file->descend(chunk, &riff, ChunkSearch::findChunk) != DescendResult::found ||
        chunk.size > kLargestNote) {
        return std::nullopt;
    }
    std::string text(chunk.size, '\0');
    if (file->read(text.data(), chunk.size) != int64_t{chunk.size}) {
        return std::nullopt;
    }
    return decodeAccompanimentNote(text);
}

}  // namespace tunebox
