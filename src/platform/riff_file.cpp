#include "platform/riff_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <limits>

#include "core/little_endian.h"

namespace tunebox {
namespace {

// RIFF sizes and offsets are 32-bit: nothing beyond this offset is reachable.
constexpr uint64_t kRiffLimit = std::numeric_limits<uint32_t>::max();
constexpr uint64_t kHeaderBytes = 8;
constexpr uint64_t kFormTypeBytes = 4;

bool hasFormType(uint32_t id) {
    return id == kChunkRiff || id == kChunkList;
}

uint64_t paddedEnd(const ChunkInfo& chunk) {
    return uint64_t{chunk.dataOffset} + chunk.size + (chunk.size & 1);
}

bool matches(const ChunkInfo& candidate, const ChunkInfo& wanted, ChunkSearch search) {
    switch (search) {
        case ChunkSearch::findChunk:
            return candidate.id == wanted.id;
        case ChunkSearch::findRiff:
            return candidate.id == kChunkRiff && candidate.formType == wanted.formType;
        case ChunkSearch::atPosition:
            break;
    }
    return true;
}

}  // namespace

bool isChunkId(uint32_t id) {
    for (int shift = 0; shift < 32; shift += 8) {
        const uint32_t character = (id >> shift) & 0xFF;
        if (character < 0x20 || character > 0x7E) {
            return false;
        }
    }
    return true;
}

std::unique_ptr<RiffFile> RiffFile::openForRead(const std::string& path) {
    return openRegular(path, O_RDONLY, "rb");
}

std::unique_ptr<RiffFile> RiffFile::openForUpdate(const std::string& path) {
    return openRegular(path, O_RDWR, "r+b");
}

std::unique_ptr<RiffFile> RiffFile::openRegular(const std::string& path, int flags,
                                                const char* mode) {
    // Non-blocking, so that a FIFO or device node is refused instead of
    // waiting for a writer.
    const int descriptor = ::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return nullptr;
    }
    struct stat status {};
    std::FILE* stream = nullptr;
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        stream = ::fdopen(descriptor, mode);
    }
    if (stream == nullptr) {
        ::close(descriptor);
        return nullptr;
    }
    const uint64_t size = std::min<uint64_t>(static_cast<uint64_t>(status.st_size), kRiffLimit);
    return std::unique_ptr<RiffFile>(new RiffFile(stream, size));
}

std::unique_ptr<RiffFile> RiffFile::createForWrite(const std::string& path) {
    std::FILE* stream = std::fopen(path.c_str(), "wb");
    if (stream == nullptr) {
        return nullptr;
    }
    return std::unique_ptr<RiffFile>(new RiffFile(stream, 0));
}

RiffFile::RiffFile(std::FILE* stream, uint64_t size) : stream_(stream), size_(size) {}

RiffFile::~RiffFile() {
    if (stream_ != nullptr) {
        std::fclose(stream_);
    }
}

int64_t RiffFile::tell() const {
    if (stream_ == nullptr) {
        return -1;
    }
    return ::ftello(stream_);
}

DescendResult RiffFile::descend(ChunkInfo& chunk, const ChunkInfo* parent, ChunkSearch search) {
    const int64_t start = tell();
    if (start < 0) {
        return DescendResult::notFound;
    }
    uint64_t end = size_;
    if (parent != nullptr) {
        end = std::min(end, uint64_t{parent->dataOffset} + parent->size);
    }
    uint64_t position = static_cast<uint64_t>(start);
    for (;;) {
        ChunkInfo candidate;
        const DescendResult result = readChunkAt(position, end, candidate);
        if (result != DescendResult::found) {
            seek(start, SEEK_SET);
            return result;
        }
        // Where the search for a RIFF form meets something that is no chunk
        // id, the file is of another kind: walking on would step through its
        // bytes eight at a time (gigabytes of zeros take minutes).
        if (search == ChunkSearch::findRiff && !isChunkId(candidate.id)) {
            seek(start, SEEK_SET);
            return DescendResult::notFound;
        }
        if (matches(candidate, chunk, search)) {
            const uint64_t data =
                candidate.dataOffset + (hasFormType(candidate.id) ? kFormTypeBytes : 0);
            seek(static_cast<int64_t>(data), SEEK_SET);
            chunk = candidate;
            return DescendResult::found;
        }
        position = paddedEnd(candidate);
    }
}

DescendResult RiffFile::readChunkAt(uint64_t position, uint64_t end, ChunkInfo& chunk) {
    if (position >= end) {
        return DescendResult::notFound;
    }
    if (end - position < kHeaderBytes || readChunkHeader(position, chunk) != DescendResult::found ||
        uint64_t{chunk.dataOffset} + chunk.size > end ||
        (hasFormType(chunk.id) && chunk.size < kFormTypeBytes)) {
        return DescendResult::damaged;
    }
    return DescendResult::found;
}

DescendResult RiffFile::readChunkHeader(uint64_t position, ChunkInfo& chunk) {
    if (position >= size_) {
        return DescendResult::notFound;
    }
    std::array<uint8_t, kHeaderBytes + kFormTypeBytes> header{};
    if (seek(static_cast<int64_t>(position), SEEK_SET) < 0 ||
        read(header.data(), kHeaderBytes) != static_cast<int64_t>(kHeaderBytes)) {
        return DescendResult::damaged;
    }
    chunk.id = loadLe32(header.data());
    chunk.size = loadLe32(header.data() + 4);
    chunk.dataOffset = static_cast<uint32_t>(position + kHeaderBytes);
    if (hasFormType(chunk.id)) {
        if (read(header.data() + kHeaderBytes, kFormTypeBytes) !=
            static_cast<int64_t>(kFormTypeBytes)) {
            return DescendResult::damaged;
        }
        chunk.formType = loadLe32(header.data() + kHeaderBytes);
    }
    return DescendResult::found;
}

int RiffFile::ascend(ChunkInfo& chunk) {
    if ((chunk.flags & kChunkDirty) == 0) {
        return seek(static_cast<int64_t>(paddedEnd(chunk)), SEEK_SET) >= 0 ? 1 : 0;
    }
    const int64_t end = tell();
    if (end < static_cast<int64_t>(chunk.dataOffset)) {
        return 0;
    }
    chunk.size = static_cast<uint32_t>(end - chunk.dataOffset);
    if (!writeSizeOf(chunk, chunk.size)) {
        return 0;
    }
    const uint8_t pad = 0;
    if ((chunk.size & 1) != 0 && write(&pad, 1) != 1) {
        return 0;
    }
    chunk.flags &= ~kChunkDirty;
    return 1;
}

int RiffFile::writeSizeOf(const ChunkInfo& chunk, uint32_t size) {
    const int64_t end = tell();
    std::array<uint8_t, 4> bytes{};
    storeLe32(bytes.data(), size);
    const bool written = seek(int64_t{chunk.dataOffset} - 4, SEEK_SET) >= 0 &&
                         write(bytes.data(), 4) == 4 && seek(end, SEEK_SET) >= 0;
    return written ? 1 : 0;
}

int RiffFile::publishSize(const ChunkInfo& chunk) {
    const int64_t end = tell();
    if (end < static_cast<int64_t>(chunk.dataOffset) || (chunk.flags & kChunkDirty) == 0 ||
        std::fflush(stream_) != 0) {
        return 0;
    }
    std::array<uint8_t, 4> bytes{};
    storeLe32(bytes.data(), static_cast<uint32_t>(end - chunk.dataOffset));
    const off_t field = static_cast<off_t>(chunk.dataOffset) - 4;
    return ::pwrite(::fileno(stream_), bytes.data(), bytes.size(), field) == 4 ? 1 : 0;
}

int RiffFile::descriptor() const {
    return stream_ == nullptr ? -1 : ::fileno(stream_);
}

int RiffFile::createChunk(ChunkInfo& chunk) {
    return writeHeader(chunk, false);
}

int RiffFile::createRiff(ChunkInfo& chunk) {
    chunk.id = kChunkRiff;
    return writeHeader(chunk, true);
}

int RiffFile::writeHeader(ChunkInfo& chunk, bool withFormType) {
    const int64_t position = tell();
    if (position < 0) {
        return 0;
    }
    std::array<uint8_t, kHeaderBytes + kFormTypeBytes> header{};
    storeLe32(header.data(), chunk.id);
    storeLe32(header.data() + 4, chunk.size);
    storeLe32(header.data() + 8, chunk.formType);
    const int64_t bytes = withFormType ? 12 : 8;
    if (write(header.data(), bytes) != bytes) {
        return 0;
    }
    chunk.dataOffset = static_cast<uint32_t>(position + kHeaderBytes);
    chunk.flags = kChunkDirty;
    return 1;
}

int64_t RiffFile::read(void* buffer, int64_t count) {
    if (stream_ == nullptr || count < 0) {
        return -1;
    }
    const size_t got = std::fread(buffer, 1, static_cast<size_t>(count), stream_);
    if (got == 0 && std::ferror(stream_) != 0) {
        return -1;
    }
    return static_cast<int64_t>(got);
}

int64_t RiffFile::write(const void* data, int64_t count) {
    const int64_t position = tell();
    if (position < 0 || count < 0 || static_cast<uint64_t>(position + count) > kRiffLimit) {
        return -1;
    }
    if (count == 0) {
        return 0;  // an empty block may come with no buffer at all
    }
    const size_t put = std::fwrite(data, 1, static_cast<size_t>(count), stream_);
    return put == static_cast<size_t>(count) ? count : -1;
}

int64_t RiffFile::seek(int64_t offset, int origin) {
    const int64_t current = tell();
    if (current < 0) {
        return -1;
    }
    if (::fseeko(stream_, offset, origin) != 0) {
        return -1;
    }
    const int64_t target = tell();
    if (target < 0 || static_cast<uint64_t>(target) > kRiffLimit) {
        ::fseeko(stream_, current, SEEK_SET);
        return -1;
    }
    return target;
}

int RiffFile::setLength(uint64_t length) {
    if (stream_ == nullptr || length > kRiffLimit || std::fflush(stream_) != 0 ||
        ::ftruncate(::fileno(stream_), static_cast<off_t>(length)) != 0) {
        return 0;
    }
    size_ = length;
    return 1;
}

int RiffFile::close() {
    if (stream_ == nullptr) {
        return 0;
    }
    const int result = std::fclose(stream_);
    stream_ = nullptr;
    return result == 0 ? 1 : 0;
}

}  // namespace tunebox
