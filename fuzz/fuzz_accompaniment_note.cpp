// Reads arbitrary bytes as a take's voice file for the accompaniment noted in
// it (and how its key and tempo moved), and as either note's text alone.

#include <cstdint>
#include <string>

#include "capture/accompaniment_note.h"
#include "fuzz/scratch_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const tunebox::fuzz::ScratchFile scratch("fuzz_accompaniment_note");
    scratch.store(data, size);
    static_cast<void>(tunebox::readAccompanimentNote(scratch.path()));
    const std::string text(reinterpret_cast<const char*>(data), size);
    static_cast<void>(tunebox::decodeAccompanimentNote(text));
    static_cast<void>(tunebox::decodeKeyTempoChanges(text));
    return 0;
}
