#pragma once
// UTF-8, the one text encoding inside the program: texts read in other
// encodings (ID3 tags, lyrics files) are turned into it code point by code
// point.

#include <string>

namespace tunebox {

// Appends `code` as one to four UTF-8 bytes.
void appendUtf8(std::string& out, char32_t code);

}  // namespace tunebox
