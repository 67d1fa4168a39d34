#include "capture/accompaniment_note.h"

#include <charconv>
#include <string_view>

namespace tunebox {
namespace {

// A path is at most a few kilobytes; anything larger is not ours.
constexpr uint32_t kLargestNote = 16 * 1024;

// Reads "KEY=N\n" at the front of `text`, N within [low, high], and moves
// past it.
std::optional<int64_t> takeNumber(std::string_view& text, std::string_view key, int64_t low,
                                  int64_t high) {
    if (!text.starts_with(key) || text.size() <= key.size() || text[key.size()] != '=') {
        return std::nullopt;
    }
    const std::string_view rest = text.substr(key.size() + 1);
    int64_t value = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    if (error != std::errc{} || end == rest.data() || end == rest.data() + rest.size() ||
        *end != '\n' || value < low || value > high) {
        return std::nullopt;
    }
    text = rest.substr(static_cast<std::size_t>(end - rest.data()) + 1);
    return value;
}

std::optional<uint32_t> takeSize(std::string_view& text, std::string_view key) {
    const auto value = takeNumber(text, key, 0, UINT32_MAX);
    return value ? std::optional<uint32_t>(static_cast<uint32_t>(*value)) : std::nullopt;
}

std::optional<bool> takeSwitch(std::string_view& text, std::string_view key) {
    const auto value = takeNumber(text, key, 0, 1);
    return value ? std::optional<bool>(*value == 1) : std::nullopt;
}

std::optional<KeyTempo> takeKeyTempo(std::string_view& text) {
    const auto key = takeNumber(text, "key", -kMaxSemitones, kMaxSemitones);
    const auto cents = key ? takeNumber(text, "cents", -kMaxCents, kMaxCents) : std::nullopt;
    const auto tempo =
        cents ? takeNumber(text, "tempo", kSlowestTempo, kFastestTempo) : std::nullopt;
    const auto formants = tempo ? takeSwitch(text, "formants") : std::nullopt;
    if (!formants) {
        return std::nullopt;
    }
    return KeyTempo{static_cast<int>(*key), static_cast<int>(*cents), static_cast<int>(*tempo),
                    *formants};
}

}  // namespace

NoteChunk encodeAccompanimentNote(const AccompanimentNote& note) {
    const KeyTempo& moved = note.keyTempo;
    const std::string text =
        "start=" + std::to_string(note.start) + "\nlength=" + std::to_string(note.length) +
        "\nbuiltin=" + (note.builtinDecoderFirst ? "1" : "0") +
        "\nkey=" + std::to_string(moved.semitones) + "\ncents=" + std::to_string(moved.cents) +
        "\ntempo=" + std::to_string(moved.tempoPercent) +
        "\nformants=" + (moved.preserveFormants ? "1" : "0") + "\npath=" + note.path;
    return {kAccompanimentNoteId, std::vector<uint8_t>(text.begin(), text.end())};
}

std::optional<AccompanimentNote> decodeAccompanimentNote(const std::string& text) {
    std::string_view rest = text;
    const auto start = takeSize(rest, "start");
    const auto length = start ? takeSize(rest, "length") : std::nullopt;
    const auto builtin = length ? takeSwitch(rest, "builtin") : std::nullopt;
    const auto keyTempo = builtin ? takeKeyTempo(rest) : std::nullopt;
    constexpr std::string_view kPathKey = "path=";
    if (!keyTempo || !rest.starts_with(kPathKey) || rest.size() == kPathKey.size()) {
        return std::nullopt;
    }
    rest.remove_prefix(kPathKey.size());
    return AccompanimentNote{std::string(rest), *start, *length, *builtin, *keyTempo};
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
