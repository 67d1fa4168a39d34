#pragma once
// A palette image as a PNG file: eight bits an index, one palette entry a
// colour, the rows packed by zlib.

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace tunebox::cli {

using PngColour = std::array<uint8_t, 3>;  // red, green, blue

// The bytes of the PNG file; `indices` holds `width` times `height` entries
// of `palette`, row by row.
std::vector<uint8_t> encodeIndexedPng(int width, int height, std::span<const uint8_t> indices,
                                      std::span<const PngColour> palette);

}  // namespace tunebox::cli
