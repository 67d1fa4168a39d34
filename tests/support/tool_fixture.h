#pragma once
// Test material made at test time by the command-line tools sox and lame.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace tunebox::test {

// Runs a shell command; the test fails when it does.
inline void runTool(const std::string& command) {
    ASSERT_EQ(std::system((command + " >/dev/null 2>&1").c_str()), 0) << command;
}

inline std::vector<uint8_t> readBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline std::vector<int16_t> toSamples(const std::vector<uint8_t>& bytes) {
    std::vector<int16_t> samples(bytes.size() / 2);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<int16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
    }
    return samples;
}

}  // namespace tunebox::test
