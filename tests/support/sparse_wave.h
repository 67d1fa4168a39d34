#pragma once
// WAVE files hours long that take no disk space: a header declaring the
// data, then a hole the file system reads as zeros.

#include <filesystem>

#include "support/riff_bytes.h"

namespace tunebox::test {

// `dataBytes` must be even (no pad byte after the data).
inline void writeSparseWave(const std::filesystem::path& path, const WaveFormat& format,
                            uint32_t dataBytes) {
    constexpr uint32_t kFormAndChunks = 4 + (8 + 16) + 8;
    const Bytes head =
        riff("WAVE", chunk("fmt ", formatPayload(format, 16)) + chunk("data", {}, dataBytes),
             kFormAndChunks + dataBytes);
    writeFile(path, head);
    std::filesystem::resize_file(path, head.size() + dataBytes);
}

// 16-bit stereo at 22,050 Hz: each source second is two native seconds.
inline constexpr WaveFormat kHalfRateStereo{kFormatPcm, 2, 22050, 88200, 4, 16, 0};

}  // namespace tunebox::test
