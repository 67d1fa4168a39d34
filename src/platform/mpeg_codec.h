#pragma once
// MPEG audio (Layers I, II and III of MPEG-1, MPEG-2 and MPEG 2.5) decoded by
// libmpg123 in feed mode into 16-bit PCM at the stream's own rate and
// channel count.

#include <memory>

#include "platform/codec_manager.h"

namespace tunebox {

// The wave format tag of MPEG Layer I and II data (Layer III has its own).
inline constexpr uint16_t kFormatMpegLayers12 = 0x50;

bool isMpegFormatTag(uint16_t formatTag);

// The PCM format libmpg123 delivers for an MPEG source.
WaveFormat mpegDecodedFormat(const WaveFormat& source);

// Null when libmpg123 cannot be set up for this source.
std::unique_ptr<CodecStream> openMpegStream(const WaveFormat& source);

}  // namespace tunebox
