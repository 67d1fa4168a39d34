#include "capture/output_sink.h"

namespace tunebox {

int OutputSink::open(const std::string& path) {
    writeFailed_ = 0;
    switch (mode_) {
        case kSinkDiscard:
            return 1;
        case kSinkWavFile:
            wavResetWriter(writer_);
            return wavCreateFile(path, writer_);
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

int OutputSink::close() {
    if (mode_ != kSinkWavFile) {
        return mode_ == kSinkDiscard ? 1 : 0;
    }
    return writer_.file ? wavCloseFile(writer_) : 1;
}

}  // namespace tunebox
