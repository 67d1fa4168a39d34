#pragma once
// Builds RIFF files byte by byte, so that tests can make well-formed and
// deliberately broken files alike.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "core/wave_format.h"
#include "support/test_files.h"

namespace tunebox::test {

using Bytes = std::vector<uint8_t>;

inline void appendLe(Bytes& bytes, uint32_t value, int width) {
    for (int i = 0; i < width; ++i) {
        bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
    }
}

inline void appendText(Bytes& bytes, const std::string& text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

inline uint32_t loadLe32At(const Bytes& bytes, std::size_t offset) {
    uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        value = value << 8 | bytes.at(offset + i);
    }
    return value;
}

// A chunk with its pad byte; `declaredSize` replaces the true size in the
// header.
inline Bytes chunk(const std::string& id, const Bytes& data,
                   std::optional<uint32_t> declaredSize = std::nullopt) {
    Bytes bytes;
    appendText(bytes, id);
    appendLe(bytes, declaredSize.value_or(static_cast<uint32_t>(data.size())), 4);
    bytes.insert(bytes.end(), data.begin(), data.end());
    if (data.size() % 2 != 0) {
        bytes.push_back(0);
    }
    return bytes;
}

inline Bytes riff(const std::string& formType, const Bytes& body,
                  std::optional<uint32_t> declaredSize = std::nullopt) {
    Bytes data;
    appendText(data, formType);
    data.insert(data.end(), body.begin(), body.end());
    return chunk("RIFF", data, declaredSize);
}

inline Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// A linear PCM format record (or another tag with the same arithmetic).
inline WaveFormat pcmFormat(uint16_t channels, uint32_t rate, uint16_t bits,
                            uint16_t tag = kFormatPcm) {
    const auto align = static_cast<uint16_t>(channels * bits / 8);
    return {tag, channels, rate, align * rate, align, bits, 0};
}

// A "fmt " payload of `size` bytes: the format record, cut or zero-padded.
inline Bytes formatPayload(const WaveFormat& format, std::size_t size) {
    Bytes bytes;
    appendLe(bytes, format.formatTag, 2);
    appendLe(bytes, format.channels, 2);
    appendLe(bytes, format.samplesPerSec, 4);
    appendLe(bytes, format.avgBytesPerSec, 4);
    appendLe(bytes, format.blockAlign, 2);
    appendLe(bytes, format.bitsPerSample, 2);
    appendLe(bytes, format.extraSize, 2);
    bytes.resize(size, 0);
    return bytes;
}

// Bytes 0, 1, 2, ... wrapping at 256.
inline Bytes counting(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<uint8_t>(i);
    }
    return bytes;
}

inline Bytes nativeWave(const Bytes& samples, std::size_t formatSize = 16) {
    return riff("WAVE",
                chunk("fmt ", formatPayload(kNativeFormat, formatSize)) + chunk("data", samples));
}

inline void writeFile(const std::filesystem::path& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
}

}  // namespace tunebox::test
