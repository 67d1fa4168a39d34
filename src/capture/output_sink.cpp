#include "capture/output_sink.h"

#include <cstdlib>
#include <string_view>

namespace tunebox {
namespace {

// TUNEBOX_HEADER_REFRESH=off leaves the header's sizes to the close, the way
// to measure what keeping them up to date costs during a take.
uint32_t headerRefreshBytes() {
    const char* setting = std::getenv("TUNEBOX_HEADER_REFRESH");
    return setting != nullptr && std::string_view(setting) == "off" ? 0 : kHeaderRefreshBytes;
}

}  // namespace

int OutputSink::open(const std::string& path, const NoteChunk* note) {
    writeFailed_ = 0;
    switch (mode_) {
        case kSinkDiscard:
            return 1;
        case kSinkWavFile:
            wavResetWriter(writer_);
            writer_.refreshBytes = headerRefreshBytes();
            return wavCreateFile(path, writer_, note);
        case kSinkNone:
            break;
    }
    return 0;
}

int OutputSink::write(const uint8_t* bytes, uint32_t count) {
    if (mode_ != kSinkWavFile) {
        return mode_ == kSinkDiscard ? 1 : 0;
    }
    if (writeFailed_) {
        return 0;
    }
    if (wavWrite(writer_, bytes, count) != 1) {
        writeFailed_ = 1;
        return 0;
    }
    return 1;
}

int OutputSink::close(const NoteChunk* note) {
    if (mode_ != kSinkWavFile) {
        return mode_ == kSinkDiscard ? 1 : 0;
    }
    // A file cut short by a failed write holds a prefix, which the note,
    // written for the whole, would not describe.
    return writer_.file ? wavCloseFile(writer_, writeFailed_ ? nullptr : note) : 1;
}

}  // namespace tunebox
