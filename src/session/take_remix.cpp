#include "session/take_remix.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <optional>
#include <vector>

#include "capture/accompaniment_note.h"
#include "capture/sync_mx.h"
#include "core/wave_format.h"
#include "playback/source_opener.h"
#include "playback/source_options.h"
#include "playback/wav_length.h"
#include "playback/wav_writer.h"
#include "session/accompaniment_player.h"
#include "session/voice_file.h"

namespace tunebox {
namespace {

constexpr uint32_t kReadBytes = kEngineBlockBytes;

// The voice file as it was written: native PCM, read as it stands.
std::optional<std::vector<uint8_t>> readNativeWav(const std::string& path) {
    const SourceOpening opening = wavOpenSource(path, {});
    if (!opening.source || opening.source->describe().converted) {
        return std::nullopt;
    }
    std::vector<uint8_t> bytes(opening.source->length());
    uint32_t filled = 0;
    while (filled < bytes.size()) {
        const SourceBlock block = opening.source->read(
            bytes.data() + filled,
            std::min<uint32_t>(kReadBytes, static_cast<uint32_t>(bytes.size()) - filled));
        filled += block.count;
        if (block.count == 0 || block.ended) {
            break;
        }
    }
    bytes.resize(filled);
    return bytes;
}

// The voice moved by `nudge` frames, cut or padded with silence to its
// length.
std::vector<uint8_t> shifted(const std::vector<uint8_t>& voice, int32_t nudge) {
    std::vector<uint8_t> moved(voice.size(), 0);
    const int64_t offset = int64_t{nudge} * kNativeFrameBytes;
    const auto size = static_cast<int64_t>(voice.size());
    const int64_t from = std::max<int64_t>(0, -offset);
    const int64_t to = std::max<int64_t>(0, offset);
    if (from < size && to < size) {
        std::memcpy(moved.data() + to, voice.data() + from,
                    static_cast<std::size_t>(size - std::max(from, to)));
    }
    return moved;
}

bool writeTake(const std::string& path, const std::vector<uint8_t>& mixed) {
    WaveWriter writer;
    wavResetWriter(writer);
    if (wavCreateFile(path, writer) != 1) {
        return false;
    }
    const bool written = wavWrite(writer, mixed.data(), static_cast<uint32_t>(mixed.size())) == 1;
    return wavCloseFile(writer) == 1 && written;
}

// Written beside the output and renamed over it, so that a failure at any
// point leaves the old file whole.
std::string replaceWith(const std::string& output, const std::vector<uint8_t>& mixed) {
    const std::string temporary = output + ".remixing";
    std::error_code error;
    if (writeTake(temporary, mixed)) {
        std::filesystem::rename(temporary, output, error);
        if (!error) {
            return {};
        }
    }
    std::filesystem::remove(temporary, error);
    return output + ": could not be written";
}

struct TakeParts {
    std::vector<uint8_t> voice;
    AccompanimentNote note;
};

std::string findParts(const std::string& take, TakeParts& parts) {
    const std::string voicePath = voiceFilePath(take);
    std::error_code error;
    if (!std::filesystem::is_regular_file(voicePath, error)) {
        return voicePath + ": no voice file beside the take (recorded without one?)";
    }
    const auto note = readAccompanimentNote(voicePath);
    auto voice = readNativeWav(voicePath);
    if (!note || !voice) {
        return voicePath + ": not a finished voice file of a take";
    }
    uint32_t takeLength = 0;
    if (wavGetLength(take, takeLength) != 1) {
        return take + ": cannot be read as a take";
    }
    if (takeLength != voice->size()) {
        return voicePath + ": its length (" + std::to_string(voice->size()) +
               " bytes) does not match the take's (" + std::to_string(takeLength) + " bytes)";
    }
    uint32_t length = 0;
    if (wavGetLength(note->path, length) != 1) {
        return note->path + ": the take's accompaniment cannot be opened";
    }
    if (length != note->length) {
        return note->path + ": the accompaniment has changed since the take (" +
               std::to_string(length) + " bytes, was " + std::to_string(note->length) + ")";
    }
    parts = {std::move(*voice), *note};
    return {};
}

}  // namespace

int32_t nudgeFrames(double milliseconds) {
    return static_cast<int32_t>(std::llround(milliseconds * kNativeSampleRate / 1000.0));
}

std::string remixTake(const RemixRequest& request) {
    TakeParts parts;
    if (std::string problem = findParts(request.take, parts); !problem.empty()) {
        return problem;
    }
    TrackEntry track;
    track.path = parts.note.path;
    track.length = parts.note.length;
    track.keyTempo = parts.note.keyTempo;
    // Decoded as it was for the take, whatever the settings say now.
    auto mixed = renderAccompaniment(
        track, parts.note.start, SourceOptions{parts.note.builtinDecoderFirst}, parts.note.changes);
    if (!mixed) {
        return track.path + ": the take's accompaniment cannot be opened";
    }
    // Where the take ran past the accompaniment's end the voice went over
    // silence, and where it stopped early the take ends with it.
    mixed->resize(parts.voice.size(), 0);
    const std::vector<uint8_t> voice = shifted(parts.voice, request.nudge);
    mixVoiceInto(voice.data(), mixed->data(), static_cast<uint32_t>(mixed->size()));
    return replaceWith(request.output, *mixed);
}

}  // namespace tunebox
