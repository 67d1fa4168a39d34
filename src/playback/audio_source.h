#pragma once
// An open accompaniment, whatever its kind: read as native PCM from the
// start, sought by byte position or by fraction, described for the user.
// The opener (source_opener.h) chooses the kind; a new file kind is a new
// implementation of this interface.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/wave_format.h"
#include "mp3/id3_tag.h"
#include "mp3/mp3_stream_facts.h"
#include "platform/sndfile_reader.h"

namespace tunebox {

// One read's outcome.
struct SourceBlock {
    uint32_t count = 0;   // bytes delivered
    bool ended = false;   // the source ran out
    bool failed = false;  // a conversion failed (with what came before it in count)
};

// A file read through libsndfile: its kind, how its samples are coded, and
// the texts it carries (Vorbis comments, AIFF names, ...).
struct CodedFileFacts {
    std::string kind;   // "FLAC", "Ogg", "AIFF", ...
    std::string codec;  // "Signed 16 bit PCM", "Vorbis", "Opus", ...
    std::vector<SndfileTag> tags;
};

// What `tunebox info` and `decode` tell about a source.
struct SourceDescription {
    WaveFormat format;  // the file's own
    bool converted = false;
    bool builtinDecoder = false;  // converted by the built-in decoder
    bool resampled = false;       // a second stage follows the decoder
    uint32_t lostFrames = 0;      // frames the built-in decoder replaced by silence
    std::optional<Mp3StreamFacts> mp3;
    // ID3v2 texts, an ID3v1 tag filling what they leave out.
    std::optional<Id3Tag> tags;
    std::optional<CodedFileFacts> coded;
};

class AudioSource {
  public:
    AudioSource() = default;
    virtual ~AudioSource() = default;
    AudioSource(const AudioSource&) = delete;
    AudioSource& operator=(const AudioSource&) = delete;

    // Reads up to `requested` native-PCM bytes, never past the source's data.
    [[nodiscard]] virtual SourceBlock read(uint8_t* destination, uint32_t requested) = 0;

    // Moves to native-PCM byte `position`, which is `permyriad`
    // ten-thousandths of the length: a source seeks by whichever it can
    // reach exactly. False when the file cannot be moved.
    [[nodiscard]] virtual bool seek(uint32_t position, uint32_t permyriad) = 0;

    // Native-PCM bytes.
    [[nodiscard]] virtual uint32_t length() const = 0;

    // The file's own format record.
    [[nodiscard]] virtual const WaveFormat& format() const = 0;

    [[nodiscard]] virtual SourceDescription describe() const = 0;

    // From now on reads deliver the decoder's own output (the stream's rate
    // and channels) in the format returned; nothing for a source that is not
    // decoded.
    [[nodiscard]] virtual std::optional<WaveFormat> keepDecoderOutput() { return std::nullopt; }
};

}  // namespace tunebox
