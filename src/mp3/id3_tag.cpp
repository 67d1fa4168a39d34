#include "mp3/id3_tag.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>
#include <vector>

#include "mp3/id3_text.h"

namespace tunebox {
namespace {

bool readExactly(std::FILE* stream, void* buffer, std::size_t count) {
    return std::fread(buffer, 1, count, stream) == count;
}

uint32_t bigEndian(const uint8_t* bytes, std::size_t count) {
    uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        value = (value << 8) | bytes[i];
    }
    return value;
}

// The tag size is sync-safe, except that the last byte is taken whole.
uint32_t tagSizeOf(const std::array<uint8_t, kId3v2HeaderBytes>& header) {
    return ((header[6] & 0x7Fu) << 21) + ((header[7] & 0x7Fu) << 14) + ((header[8] & 0x7Fu) << 7) +
           header[9];
}

void dispatchFrame(Id3Tag& tag, std::string_view id, std::span<const char> text,
                   std::size_t count) {
    const auto copyInto = [&](std::string& target) { target = id3CopyText(text, count); };
    const std::string_view raw(text.data(), std::min(count, text.size()));
    // Numbers may be written in UTF-16 too: read them from the converted text.
    const auto number = [&] { return id3TextNumber(id3CopyText(text, count)); };
    if (id == "TIT2" || id == "TAL") {
        copyInto(tag.title);
    } else if (id == "TALB" || id == "TP2") {
        copyInto(tag.album);
    } else if (id == "TPE1" || id == "TP1") {
        copyInto(tag.artist);
    } else if (id == "TCOM") {
        copyInto(tag.composer);
    } else if (id == "TLEN") {
        tag.lengthSeconds = number() / 1000;
    } else if (id == "TYER") {
        tag.year = number();
    } else if (id == "TRCK") {
        tag.track = number();
    } else if (id == "TSIZ") {
        tag.size = number();
    } else if (id == "TCON") {
        bool stores = true;
        std::string genre = id3GenreText(raw, stores);
        if (stores) {
            tag.genre = std::move(genre);
        }
    }
}

// The frame id compared as text: it ends at its first NUL.
std::string_view frameId(const std::array<uint8_t, 10>& header, std::size_t length) {
    const auto* begin = reinterpret_cast<const char*>(header.data());
    return {begin, static_cast<std::size_t>(std::find(begin, begin + length, '\0') - begin)};
}

constexpr uint8_t kUnsynchronised = 0x80;
constexpr uint8_t kExtendedHeader = 0x40;
constexpr std::size_t kBodyChunk = 65536;

// The tag's body as the file holds it: `size` bytes, or fewer where the file
// ends first (read in chunks, so a hostile size costs no more than the file).
std::vector<uint8_t> readBody(std::FILE* stream, uint32_t size) {
    std::vector<uint8_t> body;
    while (body.size() < size) {
        const std::size_t want = std::min<std::size_t>(kBodyChunk, size - body.size());
        const std::size_t before = body.size();
        body.resize(before + want);
        const std::size_t got = std::fread(body.data() + before, 1, want, stream);
        body.resize(before + got);
        if (got < want) {
            break;
        }
    }
    return body;
}

// Version 2.2 and 2.3 writers that unsynchronise put a 0x00 after every 0xFF.
// A frame's size counts the bytes as stored, as other players read it, so
// each frame's data is restored after it has been taken.
void undoUnsynchronisation(std::vector<char>& body) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < body.size(); ++i) {
        if (!(i > 0 && body[i] == 0 && static_cast<uint8_t>(body[i - 1]) == 0xFF)) {
            body[kept++] = body[i];
        }
    }
    body.resize(kept);
}

// Takes `count` bytes from the front of `rest`; false when fewer are left.
bool take(std::span<const uint8_t>& rest, std::size_t count, std::span<const uint8_t>& taken) {
    if (rest.size() < count) {
        return false;
    }
    taken = rest.first(count);
    rest = rest.subspan(count);
    return true;
}

// Version 2.3 gives the extended header's size big-endian, without its own
// four bytes; version 2.4 sync-safe, with them. Reading the size as written
// keeps the texts of tags that carry one. False when it runs past the body.
bool skipExtendedHeader(std::span<const uint8_t>& rest, int majorVersion) {
    std::span<const uint8_t> sizeBytes;
    if (!take(rest, 4, sizeBytes)) {
        return false;
    }
    std::size_t left = bigEndian(sizeBytes.data(), 4);
    if (majorVersion >= 4) {
        left = ((sizeBytes[0] & 0x7Fu) << 21 | (sizeBytes[1] & 0x7Fu) << 14 |
                (sizeBytes[2] & 0x7Fu) << 7 | (sizeBytes[3] & 0x7Fu));
        left = left >= 4 ? left - 4 : 0;
    }
    std::span<const uint8_t> skipped;
    return take(rest, left, skipped);
}

// Reads one frame and hands it to the dispatcher. Returns 0 when the loop
// must stop: a short read, an oversized frame, or padding reached.
int readFrame(Id3Tag& tag, int majorVersion, bool unsynchronised, int64_t& remaining,
              std::span<const uint8_t>& rest) {
    const bool version22 = majorVersion == 2;
    std::array<uint8_t, 10> header{};
    std::span<const uint8_t> headerBytes;
    if (!take(rest, version22 ? 6 : 10, headerBytes)) {
        return 0;
    }
    std::copy(headerBytes.begin(), headerBytes.end(), header.begin());
    const std::size_t idLength = version22 ? 3 : 4;
    // Plain big-endian, also for version 4 whose sizes should be sync-safe.
    int64_t size = bigEndian(&header[idLength], idLength);
    size = std::min(size, remaining);
    if (size > kId3LargestFrame) {
        return 0;
    }
    const auto frameBytes = static_cast<std::size_t>(std::max<int64_t>(size, 0));
    std::span<const uint8_t> frameData;
    if (!take(rest, frameBytes, frameData)) {
        return 0;
    }
    std::vector<char> data(frameData.begin(), frameData.end());
    if (unsynchronised) {
        undoUnsynchronisation(data);
    }
    data.push_back('\0');
    const std::string_view id = frameId(header, idLength);
    if (frameBytes > 0) {
        // The first byte names the text encoding, which the text itself overrides.
        dispatchFrame(tag, id, std::span<const char>(data).subspan(1), frameBytes);
    }
    remaining -= size + (version22 ? 9 : 10);
    return header[0] == 0 ? 0 : 1;
}

// Reads the frames of one tag whose header has been read.
void readTagFrames(Id3Tag& tag, const std::array<uint8_t, kId3v2HeaderBytes>& header, uint32_t size,
                   std::FILE* stream) {
    const int majorVersion = header[3];
    const std::vector<uint8_t> body = readBody(stream, size);
    const bool unsynchronised = (header[5] & kUnsynchronised) != 0 && majorVersion < 4;
    std::span<const uint8_t> rest(body);
    if ((header[5] & kExtendedHeader) != 0 && majorVersion >= 3 &&
        !skipExtendedHeader(rest, majorVersion)) {
        return;  // the frames of this tag are skipped
    }
    int64_t remaining = size;
    while (remaining >= 1 && readFrame(tag, majorVersion, unsynchronised, remaining, rest) != 0) {
    }
}

}  // namespace

int mp3GetId3v1(std::array<uint8_t, kId3v1Bytes>& block, std::FILE* stream) {
    if (std::fseek(stream, -static_cast<long>(kId3v1Bytes), SEEK_END) != 0 ||
        !readExactly(stream, block.data(), block.size())) {
        return 0;
    }
    return std::memcmp(block.data(), "TAG", 3) == 0 ? 1 : 0;
}

int mp3GetId3v2(Id3Tag& tag, uint32_t& totalSize, std::FILE* stream) {
    totalSize = 0;
    int found = 0;
    std::fseek(stream, 0, SEEK_SET);
    // Each tag moves the total on by at least its header, so the loop ends at
    // the first non-tag or at the end of the file; a sum past 4 GiB also ends it.
    while (totalSize <= UINT32_MAX - kId3v2HeaderBytes - 0x10000000u - 0xFFu) {
        std::array<uint8_t, kId3v2HeaderBytes> header{};
        if (!readExactly(stream, header.data(), header.size()) ||
            std::memcmp(header.data(), "ID3", 3) != 0) {
            break;
        }
        const uint32_t size = tagSizeOf(header);
        totalSize += size + static_cast<uint32_t>(kId3v2HeaderBytes);
        found = 1;
        tag.header = header;
        tag.tagSize = size;
        readTagFrames(tag, header, size, stream);
        std::fseek(stream, static_cast<long>(totalSize), SEEK_SET);
    }
    std::fseek(stream, static_cast<long>(totalSize), SEEK_SET);
    return found;
}

}  // namespace tunebox
