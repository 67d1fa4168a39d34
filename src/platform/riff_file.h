#pragma once
// A RIFF file walked chunk by chunk over buffered stdio: descend into a chunk
// found from the current position, ascend past its end, create chunks whose
// sizes are filled in on the way out. Offsets are absolute file offsets.
//
// A file read from outside is not trusted: a header cut short, or a chunk
// whose declared size runs past its parent or past the end of the file, makes
// the descent fail as damaged instead of leading a reader beyond the data.

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace tunebox {

constexpr uint32_t fourCc(const char (&code)[5]) {
    return static_cast<uint32_t>(static_cast<uint8_t>(code[0])) |
           static_cast<uint32_t>(static_cast<uint8_t>(code[1])) << 8 |
           static_cast<uint32_t>(static_cast<uint8_t>(code[2])) << 16 |
           static_cast<uint32_t>(static_cast<uint8_t>(code[3])) << 24;
}

inline constexpr uint32_t kChunkRiff = fourCc("RIFF");
inline constexpr uint32_t kChunkList = fourCc("LIST");

// Chunk ids are four printable characters.
bool isChunkId(uint32_t id);

// Set on a chunk created for writing: its ascent writes the real size into
// the chunk's header.
inline constexpr uint32_t kChunkDirty = 0x10000000;

struct ChunkInfo {
    uint32_t id = 0;
    uint32_t size = 0;        // data bytes, form type included for RIFF and LIST
    uint32_t formType = 0;    // RIFF and LIST only
    uint32_t dataOffset = 0;  // RIFF and LIST: offset of the form type
    uint32_t flags = 0;
};

enum class ChunkSearch {
    atPosition,  // take the chunk that starts at the current position
    findChunk,   // the first chunk with the wanted id
    findRiff,    // the first RIFF chunk with the wanted form type
};

enum class DescendResult { found, notFound, damaged };

class RiffFile {
  public:
    // Null when the path cannot be opened or is not a regular file.
    static std::unique_ptr<RiffFile> openForRead(const std::string& path);
    // Null when the file cannot be created.
    static std::unique_ptr<RiffFile> createForWrite(const std::string& path);
    // An existing regular file opened to be read and rewritten in place;
    // null when it cannot be.
    static std::unique_ptr<RiffFile> openForUpdate(const std::string& path);

    ~RiffFile();
    RiffFile(const RiffFile&) = delete;
    RiffFile& operator=(const RiffFile&) = delete;

    // Searches from the current position, within `parent` when given (else
    // within the file), for the chunk `search` asks for (`chunk.id` or
    // `chunk.formType` name it). Found: `chunk` describes it and the file
    // stands at its first data byte (after the form type for RIFF and LIST).
    // Otherwise the file is back where the search began. For files opened
    // for reading.
    DescendResult descend(ChunkInfo& chunk, const ChunkInfo* parent, ChunkSearch search);

    // Reads the chunk header at `position` as it stands, form type included
    // for RIFF and LIST, and leaves its size unchecked: a file cut short while
    // it was written claims more, or less, than it holds. Damaged when the
    // header itself is cut short; not found at or past the end of the file.
    DescendResult readChunkHeader(uint64_t position, ChunkInfo& chunk);

    // Leaves the chunk: moves past its end and pad byte. A chunk created for
    // writing ends at the current position; its size is written into its
    // header and an odd size gets a zero pad byte. Returns 1 or 0.
    int ascend(ChunkInfo& chunk);

    // Write a chunk header at the current position (`chunk.id`, `chunk.size`)
    // or a RIFF header with `chunk.formType`, and stand at its data. Returns
    // 1 or 0.
    int createChunk(ChunkInfo& chunk);
    int createRiff(ChunkInfo& chunk);

    // For a chunk created for writing and not yet left: hands the buffered
    // bytes to the system, then writes the size the chunk has so far into
    // its header with a positioned write, so that the file never declares
    // bytes it does not hold. The position stays where it is. Returns 1 or 0.
    int publishSize(const ChunkInfo& chunk);

    // The system's descriptor of the open file, or -1 when closed.
    int descriptor() const;

    // Bytes transferred, or -1 when the file reports an error. A write that
    // would take the file past 4 GiB, where RIFF sizes end, is refused (-1).
    int64_t read(void* buffer, int64_t count);
    int64_t write(const void* data, int64_t count);

    // `origin` is SEEK_SET, SEEK_CUR or SEEK_END. Returns the new offset, or
    // -1 (and the position is unchanged) when it would fall before the start
    // of the file or beyond 4 GiB.
    int64_t seek(int64_t offset, int origin);

    // Cuts the file, or extends it with zeros, to `length` bytes. Returns 1
    // or 0.
    int setLength(uint64_t length);

    // Flushes and closes; later calls fail. Returns 1, or 0 when the data
    // could not be stored.
    int close();

  private:
    RiffFile(std::FILE* stream, uint64_t size);
    static std::unique_ptr<RiffFile> openRegular(const std::string& path, int flags,
                                                 const char* mode);

    int64_t tell() const;
    int writeHeader(ChunkInfo& chunk, bool withFormType);
    int writeSizeOf(const ChunkInfo& chunk, uint32_t size);
    DescendResult readChunkAt(uint64_t position, uint64_t end, ChunkInfo& chunk);

    std::FILE* stream_;
    uint64_t size_;  // of a file opened for reading; bounds every descent
};

// The handle every opener hands out; null while closed.
using RiffHandle = std::unique_ptr<RiffFile>;

}  // namespace tunebox
