#include "playback/wav_writer.h"

#include <array>
#include <cstdio>
#include <memory>

namespace tunebox {
namespace {

constexpr uint32_t kPcmFormatBytes = 16;

// The record without its extra size: PCM's "fmt " chunk is 16 bytes.
std::array<uint8_t, kWaveFormatBytes> encodeFormat(const WaveFormat& format) {
    std::array<uint8_t, kWaveFormatBytes> bytes{};
    storeWaveFormat(format, bytes);
    return bytes;
}

bool writeNote(RiffFile& file, const NoteChunk& note) {
    ChunkInfo chunk;
    chunk.id = note.id;
    const auto size = static_cast<int64_t>(note.bytes.size());
    return file.createChunk(chunk) == 1 && file.write(note.bytes.data(), size) == size &&
           file.ascend(chunk) == 1;
}

bool writeHeader(WaveWriter& writer, const NoteChunk* note) {
    RiffFile& file = *writer.file;
    writer.riffChunk.formType = fourCc("WAVE");
    if (file.createRiff(writer.riffChunk) != 1) {
        return false;
    }
    writer.subChunk.id = fourCc("fmt ");
    writer.subChunk.size = kPcmFormatBytes;
    const auto format = encodeFormat(writer.format);
    if (file.createChunk(writer.subChunk) != 1 ||
        file.write(format.data(), kPcmFormatBytes) != kPcmFormatBytes ||
        file.ascend(writer.subChunk) != 1) {
        return false;
    }
    if (note != nullptr && !writeNote(file, *note)) {
        return false;
    }
    writer.subChunk.id = fourCc("data");
    writer.subChunk.size = 0;
    return file.createChunk(writer.subChunk) == 1;
}

// The RIFF size goes first: a process killed between the two writes leaves a
// data chunk that still fits inside its parent.
bool publishSizes(WaveWriter& writer) {
    RiffFile& file = *writer.file;
    if (file.publishSize(writer.riffChunk) != 1 || file.publishSize(writer.subChunk) != 1) {
        return false;
    }
    writer.unpublishedBytes = 0;
    writer.flusher->request();
    return writer.flusher->failed() == 0;
}

// A write the disk took only in part can end inside a frame, and the audio
// after a note chunk need not start on a frame's boundary of the disk's
// pages: the file keeps its whole frames only.
bool endOnWholeFrame(WaveWriter& writer) {
    RiffFile& file = *writer.file;
    const int64_t end = file.seek(0, SEEK_CUR);
    if (end < writer.subChunk.dataOffset || writer.format.blockAlign == 0) {
        return false;
    }
    const int64_t whole = end - (end - writer.subChunk.dataOffset) % writer.format.blockAlign;
    return whole == end || (file.setLength(static_cast<uint64_t>(whole)) == 1 &&
                            file.seek(whole, SEEK_SET) == whole);
}

}  // namespace

void wavResetWriter(WaveWriter& writer) {
    writer = WaveWriter{};
    writer.format = kNativeFormat;
}

int wavCreateFile(const std::string& path, WaveWriter& writer, const NoteChunk* note) {
    writer.file = RiffFile::createForWrite(path);
    if (!writer.file) {
        return 0;
    }
    if (!writeHeader(writer, note)) {
        writer.file.reset();
        return 0;
    }
    writer.flusher = std::make_unique<BackgroundFlusher>(writer.file->descriptor());
    return 1;
}

int wavWrite(WaveWriter& writer, const uint8_t* bytes, uint32_t count) {
    if (!writer.file) {
        return 0;
    }
    if (writer.file->write(bytes, count) == -1) {
        return 0;
    }
    writer.unpublishedBytes += count;
    if (writer.refreshBytes != 0 && writer.unpublishedBytes >= writer.refreshBytes) {
        return publishSizes(writer) ? 1 : 0;
    }
    return 1;
}

int wavCloseFile(WaveWriter& writer, const NoteChunk* note) {
    if (!writer.file) {
        return 0;
    }
    const bool flushed = writer.flusher->finish() == 1;
    writer.flusher.reset();
    const bool finished = endOnWholeFrame(writer) && writer.file->ascend(writer.subChunk) == 1 &&
                          (note == nullptr || writeNote(*writer.file, *note)) &&
                          writer.file->ascend(writer.riffChunk) == 1;
    const bool closed = writer.file->close() == 1;
    writer.file.reset();
    return flushed && finished && closed ? 1 : 0;
}

}  // namespace tunebox
