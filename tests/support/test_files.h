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

}  // namespace tunebox::test
