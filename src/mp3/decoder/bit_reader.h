#pragma once
// Reads a byte buffer most significant bit first. Reading past the end yields
// zero bits and marks the reader as overrun instead of touching memory that
// is not there, so damaged frames can never read out of bounds.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace tunebox {

class BitReader {
  public:
    BitReader() = default;
    explicit BitReader(std::span<const uint8_t> bytes) : bytes_(bytes) {}

    // Up to 24 bits, left-aligned in the low `count` bits of the result.
    uint32_t peek(int count) const { return window() >> (32 - count); }
    void skip(int count) { position_ += static_cast<std::size_t>(count); }
    uint32_t read(int count) {
        if (count == 0) {
            return 0;
        }
        const uint32_t value = peek(count);
        skip(count);
        return value;
    }
    uint32_t readBit() { return read(1); }

    std::size_t position() const { return position_; }
    void seek(std::size_t bitPosition) { position_ = bitPosition; }
    std::size_t sizeInBits() const { return bytes_.size() * 8; }
    bool overrun() const { return position_ > sizeInBits(); }

  private:
    // The next 32 bits from the current position; only the first 25 are
    // guaranteed, which is why peek stops at 24.
    uint32_t window() const {
        const std::size_t byte = position_ >> 3;
        uint32_t word = 0;
        if (byte + 4 <= bytes_.size()) {
            std::memcpy(&word, bytes_.data() + byte, 4);
            word = __builtin_bswap32(word);  // the stream is big-endian
        } else {
            for (std::size_t i = 0; i < 4; ++i) {
                word <<= 8;
                if (byte + i < bytes_.size()) {
                    word |= bytes_[byte + i];
                }
            }
        }
        return word << (position_ & 7);
    }

    std::span<const uint8_t> bytes_;
    std::size_t position_ = 0;
};

}  // namespace tunebox
