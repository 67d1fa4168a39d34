#pragma once
// Private profile (INI) files, read and written with the classic rules:
// "[section]" lines open sections, "key=value" lines hold values, names match
// without regard to ASCII case, the first matching section and key win, and a
// missing file, section or key reads as the caller's default. Writes change
// one line (or add one) and keep every other byte of the file.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace tunebox {

// The value read as a decimal integer: optional sign, then the leading
// digits; text that does not start that way reads 0. An empty value reads as
// the default.
int32_t profileReadInt(const std::filesystem::path& file, std::string_view section,
                       std::string_view key, int32_t defaultValue);

// The value (surrounding matching quotes removed), cut to fit a buffer of
// `bufferBytes` with its terminator, never in the middle of a character.
std::string profileReadString(const std::filesystem::path& file, std::string_view section,
                              std::string_view key, std::string_view defaultValue,
                              std::size_t bufferBytes);

// Sets key=value, creating the file and its directory when missing. A value
// ends at its first line break. Returns 1 on success, 0 when the file could
// not be written (it is then left as it was).
int profileWriteString(const std::filesystem::path& file, std::string_view section,
                       std::string_view key, std::string_view value);

}  // namespace tunebox
