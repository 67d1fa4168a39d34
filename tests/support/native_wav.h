#pragma once
// Writes test signals as native-format WAV files through the program's own
// writer.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/little_endian.h"
#include "playback/wav_writer.h"

namespace tunebox::test {

inline void writeNativeWav(const std::string& path, const std::vector<int16_t>& samples) {
    std::vector<uint8_t> bytes(samples.size() * 2);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        storeLe16(&bytes[2 * i], static_cast<uint16_t>(samples[i]));
    }
    WaveWriter writer;
    wavResetWriter(writer);
    ASSERT_EQ(wavCreateFile(path, writer), 1);
    ASSERT_EQ(wavWrite(writer, bytes.data(), static_cast<uint32_t>(bytes.size())), 1);
    ASSERT_EQ(wavCloseFile(writer), 1);
}

}  // namespace tunebox::test
