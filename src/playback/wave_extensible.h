#pragma once
// The extensible form of the "fmt " chunk (format tag 0xFFFE): the plain
// record followed by the valid bits, the speaker mask and a sub-format GUID
// that names the real format. Recorders write it for plain PCM too.

#include <cstddef>
#include <cstdint>
#include <span>

namespace tunebox {

inline constexpr uint16_t kFormatExtensible = 0xFFFE;
inline constexpr std::size_t kExtensibleFormatBytes = 40;

// When the first `chunkSize` bytes of `chunk` are an extensible record whose
// sub-format is PCM, rewrites them as the same record with format tag 1 and
// no extra bytes and returns true; otherwise leaves them and returns false.
bool plainPcmFromExtensible(std::span<uint8_t> chunk, std::size_t chunkSize);

}  // namespace tunebox
