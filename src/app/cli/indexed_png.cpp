#include "app/cli/indexed_png.h"

#include <zlib.h>

#include <string_view>

namespace tunebox::cli {
namespace {

void appendBigEndian(std::vector<uint8_t>& out, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        out.push_back(static_cast<uint8_t>(value >> shift));
    }
}

// Length, type, data and the CRC of type and data.
void appendChunk(std::vector<uint8_t>& out, std::string_view type, std::span<const uint8_t> data) {
    appendBigEndian(out, static_cast<uint32_t>(data.size()));
    const std::size_t typeAt = out.size();
    out.insert(out.end(), type.begin(), type.end());
    out.insert(out.end(), data.begin(), data.end());
    const uLong crc = crc32(0L, out.data() + typeAt, static_cast<uInt>(out.size() - typeAt));
    appendBigEndian(out, static_cast<uint32_t>(crc));
}

// Each row led by filter type 0 (none): the indices compress well as they are.
std::vector<uint8_t> compressedRows(int width, int height, std::span<const uint8_t> indices) {
    std::vector<uint8_t> raw;
    raw.reserve(static_cast<std::size_t>((width + 1) * height));
    for (int y = 0; y < height; ++y) {
        raw.push_back(0);
        const auto row =
            indices.subspan(static_cast<std::size_t>(y * width), static_cast<std::size_t>(width));
        raw.insert(raw.end(), row.begin(), row.end());
    }
    uLongf size = compressBound(static_cast<uLong>(raw.size()));
    std::vector<uint8_t> packed(size);
    compress2(packed.data(), &size, raw.data(), static_cast<uLong>(raw.size()), Z_BEST_COMPRESSION);
    packed.resize(size);
    return packed;
}

}  // namespace

std::vector<uint8_t> encodeIndexedPng(int width, int height, std::span<const uint8_t> indices,
                                      std::span<const PngColour> palette) {
    std::vector<uint8_t> png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<uint8_t> header;
    appendBigEndian(header, static_cast<uint32_t>(width));
    appendBigEndian(header, static_cast<uint32_t>(height));
    // 8 bits, colour type 3 (palette), deflate, no filter variants, not interlaced.
    header.insert(header.end(), {8, 3, 0, 0, 0});
    appendChunk(png, "IHDR", header);
    std::vector<uint8_t> entries;
    for (const PngColour& colour : palette) {
        entries.insert(entries.end(), colour.begin(), colour.end());
    }
    appendChunk(png, "PLTE", entries);
    appendChunk(png, "IDAT", compressedRows(width, height, indices));
    appendChunk(png, "IEND", {});
    return png;
}

}  // namespace tunebox::cli
