#pragma once
// A source read through libsndfile (FLAC, Ogg Vorbis, Opus, AIFF/AIFC, CAF,
// Wave64, RF64): its 16-bit PCM goes through the same rate and channel
// conversion as a WAVE file's, or is delivered as it stands when it is
// already native.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "mp3/audio_file_kind.h"
#include "platform/codec_manager.h"
#include "platform/sndfile_reader.h"
#include "playback/audio_source.h"
#include "playback/source_opener.h"

namespace tunebox {

class SndfileSource final : public AudioSource {
  public:
    // Opens `path`, whose first bytes say it is of `kind` (one libsndfile
    // reads). A file that cannot be read is refused with one phrase.
    static SourceOpening open(const std::string& path, AudioFileKind kind);

    [[nodiscard]] SourceBlock read(uint8_t* destination, uint32_t requested) override;
    [[nodiscard]] bool seek(uint32_t position, uint32_t permyriad) override;
    [[nodiscard]] uint32_t length() const override { return length_; }
    [[nodiscard]] const WaveFormat& format() const override { return format_; }
    [[nodiscard]] SourceDescription describe() const override;

    // Made by `open`, with the reader at the first frame and the length it
    // worked out.
    SndfileSource(std::unique_ptr<SndfileReader> reader, AudioFileKind kind, uint32_t length);

  private:
    [[nodiscard]] bool isNative() const;
    [[nodiscard]] bool openConverter();
    // Decodes the next block into `pending_`; false when a conversion failed.
    [[nodiscard]] bool refill();

    std::unique_ptr<SndfileReader> reader_;
    AudioFileKind kind_;
    WaveFormat format_;  // what the reader delivers: 16-bit PCM at the file's rate
    uint32_t length_;
    uint32_t delivered_ = 0;  // native bytes handed out since the start
    std::unique_ptr<CodecStream> converter_;
    std::vector<uint8_t> decoded_;
    std::vector<uint8_t> pending_;  // converted bytes not yet handed out
    std::size_t pendingAt_ = 0;
    bool drained_ = false;  // the reader and the converter have given everything
};

}  // namespace tunebox
