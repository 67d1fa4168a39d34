#pragma once
// Where the capture engine's blocks go: nowhere (level monitor) or into the
// output WAV file. A write that fails once (a full disk) is not retried: the
// file keeps a clean prefix of the take and is finished with a header that
// matches it. A header that cannot be kept up to date during the take, or
// data that cannot be pushed to the disk, counts as such a failed write.

#include <cstdint>
#include <string>

#include "playback/wav_writer.h"

namespace tunebox {

enum SinkMode : int32_t { kSinkNone = 0, kSinkDiscard = 1, kSinkWavFile = 2 };

class OutputSink {
  public:
    OutputSink() { wavResetWriter(writer_); }
    ~OutputSink() { close(); }
    OutputSink(const OutputSink&) = delete;
    OutputSink& operator=(const OutputSink&) = delete;

    void setMode(SinkMode mode) { mode_ = mode; }
    SinkMode mode() const { return mode_; }

    // Returns 1, or 0 when the file cannot be created. `note` goes before the
    // audio.
    int open(const std::string& path, const NoteChunk* note = nullptr);
    int write(const uint8_t* bytes, uint32_t count);
    // Finishes the file, with `note` after the audio when given and every
    // write went through; 0 when its header could not be written.
    int close(const NoteChunk* note = nullptr);

    // 1 once a write has failed since the last open.
    int writeFailed() const { return writeFailed_; }

  private:
    SinkMode mode_ = kSinkNone;
    WaveWriter writer_;
    int writeFailed_ = 0;
};

}  // namespace tunebox
