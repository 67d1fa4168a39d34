#pragma once
// The ID3 tags around an MP3 file's audio: the ID3v1 block at its end, kept
// raw, and the ID3v2 tags at its start, whose text frames fill a tag record.
// Nothing in the player reads the tags back; `tunebox info` shows them.

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

namespace tunebox {

inline constexpr std::size_t kId3v1Bytes = 128;
inline constexpr std::size_t kId3v2HeaderBytes = 10;
// A frame larger than this ends the frame loop: the rest of the tag is skipped.
inline constexpr uint32_t kId3LargestFrame = 30000;

struct Id3Tag {
    std::array<uint8_t, kId3v2HeaderBytes> header{};  // of the last tag read
    uint32_t tagSize = 0;
    std::string artist;
    std::string album;
    std::string title;
    std::string genre;
    std::string composer;
    int32_t year = 0;
    int32_t track = 0;
    int32_t lengthSeconds = 0;
    int32_t size = 0;
};

// Reads the last 128 bytes of `stream` into `block`. Returns 1 when they are
// an ID3v1 tag ("TAG"), else 0.
int mp3GetId3v1(std::array<uint8_t, kId3v1Bytes>& block, std::FILE* stream);

// Reads every ID3v2 tag at the start of `stream`, one after the other.
// Returns 1 when there was at least one, with `totalSize` the bytes they take
// (headers included); the stream then stands just after them.
int mp3GetId3v2(Id3Tag& tag, uint32_t& totalSize, std::FILE* stream);

}  // namespace tunebox
