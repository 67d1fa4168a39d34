#pragma once
// Which accompaniment a take was sung over, kept in a chunk of its own in
// the take's voice file, so that the voice can be mixed with it again
// later (a take that came out early or late is moved, not sung again).
//
// The chunk holds text: "start=N\nlength=N\nbuiltin=0|1\nkey=N\ncents=N\n
// tempo=N\nformants=0|1\npath=" and the path's bytes to the end of the
// chunk, so a path may hold any byte. It is written before the voice, so
// that a take cut off by a crash keeps it.
//
// Where the key or tempo moved during the take, a second chunk after the
// voice lists the changes, each as "block=N\nkey=N\ncents=N\ntempo=N\n
// formants=0|1\n"; it is written when the file is closed, as only then are
// they all known. Players and sox pass over chunks they do not know.

#include <cstdint>
#include <optional>
#include <string>

#include "effects/key_tempo.h"
#include "platform/riff_file.h"
#include "playback/key_tempo_change.h"
#include "playback/wav_writer.h"

namespace tunebox {

inline constexpr uint32_t kAccompanimentNoteId = fourCc("tbac");
inline constexpr uint32_t kKeyTempoChangesId = fourCc("tbkc");

struct AccompanimentNote {
    std::string path;     // absolute
    uint32_t start = 0;   // where it started playing, native-PCM bytes
    uint32_t length = 0;  // its whole length, native-PCM bytes
    // Whether the built-in MPEG decoder was tried first: an MP3 decoded by
    // the other one differs in its last bits, and the mix with it too.
    bool builtinDecoderFirst = false;
    // How the song was moved in key and tempo: the take holds it as heard.
    KeyTempo keyTempo{};
    // How that moved during the take; none for a take cut off by a crash.
    KeyTempoChanges changes{};

    bool operator==(const AccompanimentNote&) const = default;
};

NoteChunk encodeAccompanimentNote(const AccompanimentNote& note);

// Null when the text is not a note this program wrote.
std::optional<AccompanimentNote> decodeAccompanimentNote(const std::string& text);

NoteChunk encodeKeyTempoChanges(const KeyTempoChanges& changes);

// Null when the text is not a list of changes this program wrote.
std::optional<KeyTempoChanges> decodeKeyTempoChanges(const std::string& text);

// The note of a WAV file, with its changes; null when it has none or either
// chunk cannot be read.
std::optional<AccompanimentNote> readAccompanimentNote(const std::string& wavPath);

}  // namespace tunebox
