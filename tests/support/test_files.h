#pragma once
// Reading test inputs: files kept in the repository and files a test made.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace tunebox::test {

// A missing input is a failure of the test that names the file (GoogleTest
// reports the exception on one line), never an empty vector to crash on.
inline std::vector<uint8_t> readBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw std::runtime_error("cannot read test input " + path.string());
    }
    return {std::istreambuf_iterator<char>(in), {}};
}

// The whole file as text; empty when it cannot be read.
inline std::string readText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// Signed 16-bit little-endian samples.
inline std::vector<int16_t> toSamples(const std::vector<uint8_t>& bytes) {
    std::vector<int16_t> samples(bytes.size() / 2);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<int16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
    }
    return samples;
}

// The samples of a RIFF/WAVE file's "data" chunk, found by walking its
// chunks: a voice file holds a note before its audio. The data runs to the
// end of the file, as in a take cut off before its close.
inline std::vector<int16_t> wavDataSamples(const std::filesystem::path& path) {
    const std::vector<uint8_t> bytes = readBytes(path);
    const auto sizeAt = [&](std::size_t at) {
        return uint32_t{bytes[at]} | uint32_t{bytes[at + 1]} << 8 | uint32_t{bytes[at + 2]} << 16 |
               uint32_t{bytes[at + 3]} << 24;
    };
    for (std::size_t at = 12; at + 8 <= bytes.size(); at += 8 + ((sizeAt(at + 4) + 1) & ~1u)) {
        if (std::string(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                        bytes.begin() + static_cast<std::ptrdiff_t>(at + 4)) == "data") {
            return toSamples({bytes.begin() + static_cast<std::ptrdiff_t>(at + 8), bytes.end()});
        }
    }
    throw std::runtime_error("no data chunk in " + path.string());
}

}  // namespace tunebox::test
