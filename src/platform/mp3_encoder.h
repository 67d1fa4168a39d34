#pragma once
// MP3 files through LAME, variable bit rate, with an ID3v2 tag in front. The first frame is LAME's
// info tag: it carries the encoder's delay and padding, so that players which read it (and the
// built-in decoder) start and end the take where the take does.

#include <memory>
#include <string>

#include "platform/audio_encoder.h"

namespace tunebox {

// `settings.quality` is LAME's VBR quality, 0 (best) to 9.
std::unique_ptr<AudioEncoder> openMp3Encoder(const std::string& path,
                                             const EncoderSettings& settings, std::string& error);

}  // namespace tunebox
