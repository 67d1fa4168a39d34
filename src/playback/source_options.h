#pragma once
// How a source is to be opened. The front ends fill it from the settings
// file (or a command's options) and hand it down; the engines never read
// settings themselves.

namespace tunebox {

struct SourceOptions {
    // Try the built-in MPEG decoder before the codec manager; each is the
    // other's fallback.
    bool builtinDecoderFirst = false;
};

}  // namespace tunebox
