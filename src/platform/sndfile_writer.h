#pragma once
// FLAC, Ogg Vorbis and Opus files through libsndfile. Opus streams run at
// 48,000 Hz only, so a take is resampled on its way in; the stream's
// pre-skip header tells decoders how much of the encoder's start to drop.

#include <memory>
#include <string>

#include "platform/audio_encoder.h"

namespace tunebox {

// `settings.format` is not MP3. Null with `error` when the file cannot be
// created.
std::unique_ptr<AudioEncoder> openSndfileWriter(const std::string& path,
                                                const EncoderSettings& settings,
                                                std::string& error);

}  // namespace tunebox
