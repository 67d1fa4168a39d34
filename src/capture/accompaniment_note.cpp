#include "capture/accompaniment_note.h"

#include <charconv>
#include <cstdio>
#include <string_view>

namespace tunebox {
namespace {

// A path is at most a few kilobytes; anything larger is not ours.
constexpr uint32_t kLargestNote = 16 * 1024;
// Some 20,000 changes: a singer at the controls through a very long song.
constexpr uint32_t kLargestChanges = 1024 * 1024;

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

std::string keyTempoText(const KeyTempo& moved) {
    return "key=" + std::to_string(moved.semitones) + "\ncents=" + std::to_string(moved.cents) +
           "\ntempo=" + std::to_string(moved.tempoPercent) +
           "\nformants=" + (moved.preserveFormants ? "1" : "0") + "\n";
}

NoteChunk chunkOf(uint32_t id, const std::string& text) {
    return {id, std::vector<uint8_t>(text.begin(), text.end())};
}

// The first chunk `id` of the WAV file; the file then stands at its data.
std::optional<ChunkInfo> findChunk(RiffFile& file, const ChunkInfo& riff, uint32_t id) {
    constexpr int64_t kFormTypeBytes = 4;
    ChunkInfo chunk;
    chunk.id = id;
    if (file.seek(int64_t{riff.dataOffset} + kFormTypeBytes, SEEK_SET) < 0 ||
        file.descend(chunk, &riff, ChunkSearch::findChunk) != DescendResult::found) {
        return std::nullopt;
    }
    return chunk;
}

std::optional<std::string> readText(RiffFile& file, const ChunkInfo& chunk, uint32_t largest) {
    if (chunk.size > largest) {
        return std::nullopt;
    }
    std::string text(chunk.size, '\0');
    if (file.read(text.data(), chunk.size) != int64_t{chunk.size}) {
        return std::nullopt;
    }
    return text;
}

}  // namespace

NoteChunk encodeAccompanimentNote(const AccompanimentNote& note) {
    return chunkOf(kAccompanimentNoteId, "start=" + std::to_string(note.start) +
                                             "\nlength=" + std::to_string(note.length) +
                                             "\nbuiltin=" + (note.builtinDecoderFirst ? "1" : "0") +
                                             "\n" + keyTempoText(note.keyTempo) +
                                             "path=" + note.path);
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
    return AccompanimentNote{std::string(rest), *start, *length, *builtin, *keyTempo, {}};
}

NoteChunk encodeKeyTempoChanges(const KeyTempoChanges& changes) {
    std::string text;
    for (const KeyTempoChange& change : changes) {
        text += "block=" + std::to_string(change.block) + "\n" + keyTempoText(change.keyTempo);
    }
    return chunkOf(kKeyTempoChangesId, text);
}

std::optional<KeyTempoChanges> decodeKeyTempoChanges(const std::string& text) {
    std::string_view rest = text;
    KeyTempoChanges changes;
    while (!rest.empty()) {
        const auto block = takeSize(rest, "block");
        const auto keyTempo = block ? takeKeyTempo(rest) : std::nullopt;
        if (!keyTempo || (!changes.empty() && *block < changes.back().block)) {
            return std::nullopt;
        }
        changes.push_back({*block, *keyTempo});
    }
    return changes;
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
    const auto noteChunk = findChunk(*file, riff, kAccompanimentNoteId);
    const auto noteText = noteChunk ? readText(*file, *noteChunk, kLargestNote) : std::nullopt;
    auto note = noteText ? decodeAccompanimentNote(*noteText) : std::nullopt;
    if (!note) {
        return std::nullopt;
    }
    // Without changes the take kept its key and tempo (or was cut off); a
    // list that is there but cannot be read is another matter.
    if (const auto changesChunk = findChunk(*file, riff, kKeyTempoChangesId)) {
        const auto text = readText(*file, *changesChunk, kLargestChanges);
        auto changes = text ? decodeKeyTempoChanges(*text) : std::nullopt;
        if (!changes) {
            return std::nullopt;
        }
        note->changes = std::move(*changes);
    }
    return note;
}

}  // namespace tunebox
