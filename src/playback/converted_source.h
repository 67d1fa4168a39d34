#pragma once
// A source whose bytes go through the converter: an MP3 file, or a WAVE file
// of other PCM, G.711 or MPEG data. It owns the file and the conversion
// state the opener made.

#include <cstdint>
#include <memory>

#include "mp3/conversion_state.h"
#include "platform/riff_file.h"
#include "playback/audio_source.h"

namespace tunebox {

class ConvertedSource final : public AudioSource {
  public:
    // `state` has a decoder path open; `file` stands at its first byte.
    ConvertedSource(RiffHandle file, std::unique_ptr<ConversionState> state, uint32_t length);
    ~ConvertedSource() override;

    [[nodiscard]] SourceBlock read(uint8_t* destination, uint32_t requested) override;
    [[nodiscard]] bool seek(uint32_t position, uint32_t permyriad) override;
    [[nodiscard]] uint32_t length() const override { return length_; }
    [[nodiscard]] const WaveFormat& format() const override { return state_->outputFormat; }
    [[nodiscard]] SourceDescription describe() const override;
    [[nodiscard]] std::optional<WaveFormat> keepDecoderOutput() override;

  private:
    RiffHandle file_;
    std::unique_ptr<ConversionState> state_;
    uint32_t length_;
};

}  // namespace tunebox
