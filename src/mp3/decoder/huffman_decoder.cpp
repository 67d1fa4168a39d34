#include "mp3/decoder/huffman_decoder.h"

#include <algorithm>
#include <vector>

#include "mp3/decoder/huffman_code_tables.h"

namespace tunebox {
namespace {

// A code book turned into lookup tables: the first kRootBits of the stream
// index the root; longer codes continue in a sub-table per root prefix.
class HuffmanLookup {
  public:
    HuffmanLookup() = default;
    explicit HuffmanLookup(const HuffmanCodeBook& book) {
        const int count = book.dimension * book.dimension;
        int longest = 0;
        for (int i = 0; i < count; ++i) {
            longest = std::max<int>(longest, book.lengths[i]);
        }
        rootBits_ = std::min(longest, kRootBits);
        entries_.assign(std::size_t{1} << rootBits_, Entry{});
        std::vector<int> subBits(entries_.size(), 0);
        for (int i = 0; i < count; ++i) {
            const int length = book.lengths[i];
            if (length > rootBits_) {
                int& bits = subBits[book.codes[i] >> (length - rootBits_)];
                bits = std::max(bits, length - rootBits_);
            }
        }
        for (std::size_t prefix = 0; prefix < subBits.size(); ++prefix) {
            if (subBits[prefix] > 0) {
                entries_[prefix] = Entry{static_cast<uint16_t>(entries_.size()), 0,
                                         static_cast<uint8_t>(subBits[prefix])};
                entries_.resize(entries_.size() + (std::size_t{1} << subBits[prefix]), Entry{});
            }
        }
        for (int i = 0; i < count; ++i) {
            const auto symbol =
                static_cast<uint16_t>(((i / book.dimension) << 4) | (i % book.dimension));
            place(book.codes[i], book.lengths[i], symbol);
        }
    }

    // Returns the symbol (x << 4 | y) and consumes its code.
    int decode(BitReader& reader) const {
        int length = 0;
        const int symbol = decode(reader.peek(kPeekBits), length);
        reader.skip(length);
        return symbol;
    }

    // The symbol at the front of `bits` (the next kPeekBits of the
    // stream), and in `length` how many bits its code takes.
    int decode(uint32_t bits, int& length) const {
        const Entry& root = entries_[bits >> (kPeekBits - rootBits_)];
        if (root.length != 0) {
            length = root.length;
            return root.value;
        }
        const uint32_t rest =
            (bits >> (kPeekBits - rootBits_ - root.subBits)) & ((1u << root.subBits) - 1);
        const Entry& leaf = entries_[root.value + rest];
        length = rootBits_ + leaf.length;
        return leaf.value;
    }

    // As many bits as one peek of the reader gives; codes take at most 19.
    static constexpr int kPeekBits = 24;

  private:
    static constexpr int kRootBits = 8;

    struct Entry {
        uint16_t value = 0;   // symbol, or sub-table offset when length is 0
        uint8_t length = 1;   // bits consumed within this level
        uint8_t subBits = 0;  // sub-table index width
    };

    void place(uint32_t code, int length, uint16_t symbol) {
        if (length <= rootBits_) {
            fill(0, code, length, rootBits_, symbol);
            return;
        }
        const Entry& link = entries_[code >> (length - rootBits_)];
        const int rest = length - rootBits_;
        fill(link.value, code & ((1u << rest) - 1), rest, link.subBits, symbol);
    }

    void fill(std::size_t base, uint32_t code, int length, int width, uint16_t symbol) {
        const std::size_t first = base + (std::size_t{code} << (width - length));
        const std::size_t span = std::size_t{1} << (width - length);
        for (std::size_t i = 0; i < span; ++i) {
            entries_[first + i] = Entry{symbol, static_cast<uint8_t>(length), 0};
        }
    }

    int rootBits_ = 0;
    std::vector<Entry> entries_;
};

struct Lookups {
    std::array<HuffmanLookup, kBigValueTableCount> bigValues;
    std::array<HuffmanLookup, 2> count1;
};

const Lookups& lookups() {
    static const Lookups built = [] {
        Lookups tables;
        for (int i = 0; i < kBigValueTableCount; ++i) {
            if (bigValueCodeBook(i).dimension != 0) {
                tables.bigValues[i] = HuffmanLookup(bigValueCodeBook(i));
            }
        }
        tables.count1[0] = HuffmanLookup(count1CodeBook(0));
        tables.count1[1] = HuffmanLookup(count1CodeBook(1));
        return tables;
    }();
    return built;
}

int32_t withSign(BitReader& reader, int32_t magnitude) {
    if (magnitude == 0) {
        return 0;
    }
    return reader.readBit() ? -magnitude : magnitude;
}

void decodePairs(BitReader& reader, int tableSelect, int begin, int end, QuantizedSpectrum& lines) {
    const HuffmanCodeBook& book = bigValueCodeBook(tableSelect);
    if (book.dimension == 0) {
        std::fill(lines.begin() + begin, lines.begin() + end, 0);
        return;
    }
    const HuffmanLookup& lookup = lookups().bigValues[tableSelect];
    const int linbits = book.linbits;
    for (int i = begin; i < end; i += 2) {
        if (linbits == 0) {
            // The code and both sign bits (x's first) from one peek.
            const uint32_t bits = reader.peek(HuffmanLookup::kPeekBits);
            int length = 0;
            const int symbol = lookup.decode(bits, length);
            const int32_t x = symbol >> 4;
            const int32_t y = symbol & 15;
            // Without branches: whether a value is zero is what the stream
            // cannot predict. A sign bit follows each value that is not.
            uint32_t signs = bits << (32 - HuffmanLookup::kPeekBits + length);
            const int xCoded = x != 0;
            const int32_t xSign = -static_cast<int32_t>((signs >> 31) & xCoded);
            signs <<= xCoded;
            const int yCoded = y != 0;
            const int32_t ySign = -static_cast<int32_t>((signs >> 31) & yCoded);
            lines[i] = (x ^ xSign) - xSign;
            lines[i + 1] = (y ^ ySign) - ySign;
            length += xCoded + yCoded;
            reader.skip(length);
            continue;
        }
        const int symbol = lookup.decode(reader);
        int32_t x = symbol >> 4;
        int32_t y = symbol & 15;
        if (x == 15) {
            x += static_cast<int32_t>(reader.read(linbits));
        }
        lines[i] = withSign(reader, x);
        if (y == 15) {
            y += static_cast<int32_t>(reader.read(linbits));
        }
        lines[i + 1] = withSign(reader, y);
    }
}

// Every count1 quadruple, by which of v, w, x, y are 1 (a mask, v in bit
// 3) and the next four bits of the stream, where each 1 is followed in
// turn by its sign bit. A lookup in place of branches: which quadruples
// are zero is what the stream cannot predict.
struct QuadTable {
    std::array<std::array<std::array<int32_t, 4>, 16>, 16> values{};
    std::array<int, 16> signBits{};
};

constexpr QuadTable kQuads = [] {
    QuadTable table;
    for (int mask = 0; mask < 16; ++mask) {
        for (int next = 0; next < 16; ++next) {
            int used = 0;
            for (int k = 0; k < 4; ++k) {
                const int present = (mask >> (3 - k)) & 1;
                const int negative = (next >> (3 - used)) & present;
                table.values[mask][next][k] = present - 2 * negative;
                used += present;
            }
            table.signBits[mask] = used;
        }
    }
    return table;
}();

int decodeQuads(BitReader& reader, int table, int begin, int lineLimit, std::size_t part23End,
                QuantizedSpectrum& lines) {
    const HuffmanLookup& lookup = lookups().count1[table];
    int line = begin;
    while (line < lineLimit && line + 4 <= kGranuleLines && reader.position() < part23End) {
        // The symbol holds v, w in bits 5, 4 and x, y in bits 1, 0.
        // The code (at most 6 bits) and the four bits after it in one peek.
        const uint32_t bits = reader.peek(HuffmanLookup::kPeekBits);
        int length = 0;
        const int symbol = lookup.decode(bits, length);
        const int mask = ((symbol >> 2) & 0xC) | (symbol & 3);
        const uint32_t next = (bits >> (HuffmanLookup::kPeekBits - length - 4)) & 15;
        const auto& values = kQuads.values[mask][next];
        std::copy(values.begin(), values.end(), lines.begin() + line);
        reader.skip(length + kQuads.signBits[mask]);
        if (reader.position() > part23End) {
            // A quadruple that runs past the end was never coded.
            std::fill(lines.begin() + line, lines.begin() + line + 4, 0);
            break;
        }
        line += 4;
    }
    return line;
}

}  // namespace

int decodeHuffmanSpectrum(BitReader& reader, const GranuleChannelInfo& info, std::size_t part23End,
                          int lineLimit, QuantizedSpectrum& lines) {
    // Pairs end on even lines; the limit rounds up to one.
    const int bigEnd = std::min(info.bigValues * 2, (lineLimit + 1) & ~1);
    const int region1 = std::min(info.region1Start, bigEnd);
    const int region2 = std::clamp(info.region2Start, region1, bigEnd);
    decodePairs(reader, info.tableSelect[0], 0, region1, lines);
    decodePairs(reader, info.tableSelect[1], region1, region2, lines);
    decodePairs(reader, info.tableSelect[2], region2, bigEnd, lines);
    const int end = decodeQuads(reader, info.count1Table, bigEnd, lineLimit, part23End, lines);
    std::fill(lines.begin() + end, lines.end(), 0);
    return end;
}

}  // namespace tunebox
