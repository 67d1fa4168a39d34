#include "lyrics/cdg_screen.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace tunebox {
namespace {

constexpr uint8_t kGraphicsCommand = 0x09;
// Subcode symbols carry six bits; the top two belong to other channels.
constexpr uint8_t kSymbolBits = 0x3F;
constexpr std::size_t kDataOffset = 4;
constexpr std::size_t kDataBytes = 16;
constexpr int kTileColumns = CdgScreen::kWidth / CdgScreen::kTileWidth;
constexpr int kTileRows = CdgScreen::kHeight / CdgScreen::kTileHeight;

bool isGraphics(std::span<const uint8_t> packet) {
    return (packet[0] & kSymbolBits) == kGraphicsCommand;
}

std::optional<CdgInstruction> instructionOf(std::span<const uint8_t> packet) {
    const int number = packet[1] & kSymbolBits;
    for (const CdgInstruction instruction : kCdgInstructions) {
        if (static_cast<int>(instruction) == number) {
            return instruction;
        }
    }
    return std::nullopt;
}

uint8_t colourIndex(uint8_t symbol) {
    return symbol & 0x0F;
}

// A scroll symbol's command bits: 0 none, 1 right or down, 2 left or up.
int scrollStep(uint8_t symbol, int distance) {
    switch ((symbol >> 4) & 0x03) {
        case 1:
            return distance;
        case 2:
            return -distance;
        default:
            return 0;
    }
}

std::size_t duePackets(std::size_t packets, double seconds) {
    if (!(seconds > 0)) {
        return 0;  // also when not a number
    }
    const double due = std::floor(seconds * kCdgPacketsPerSecond);
    return due >= static_cast<double>(packets) ? packets : static_cast<std::size_t>(due);
}

}  // namespace

std::string_view cdgInstructionName(CdgInstruction instruction) {
    switch (instruction) {
        case CdgInstruction::kMemoryPreset:
            return "memory preset";
        case CdgInstruction::kBorderPreset:
            return "border preset";
        case CdgInstruction::kTileBlock:
            return "tile block";
        case CdgInstruction::kScrollPreset:
            return "scroll preset";
        case CdgInstruction::kScrollCopy:
            return "scroll copy";
        case CdgInstruction::kDefineTransparent:
            return "define transparent";
        case CdgInstruction::kLoadColoursLow:
            return "load colours 0-7";
        case CdgInstruction::kLoadColoursHigh:
            return "load colours 8-15";
        case CdgInstruction::kTileBlockXor:
            return "tile block XOR";
    }
    return "unknown";
}

void CdgDecoder::apply(std::span<const uint8_t, kCdgPacketBytes> packet) {
    const auto instruction = instructionOf(packet);
    if (!isGraphics(packet) || !instruction) {
        return;
    }
    std::array<uint8_t, kDataBytes> data{};
    std::transform(packet.begin() + kDataOffset, packet.begin() + kDataOffset + kDataBytes,
                   data.begin(), [](uint8_t symbol) { return symbol & kSymbolBits; });
    switch (*instruction) {
        case CdgInstruction::kMemoryPreset:
            fillRectangle(0, 0, CdgScreen::kWidth, CdgScreen::kHeight, colourIndex(data[0]));
            break;
        case CdgInstruction::kBorderPreset: {
            const uint8_t colour = colourIndex(data[0]);
            constexpr int kRight = CdgScreen::kWidth - CdgScreen::kBorderWidth;
            constexpr int kBottom = CdgScreen::kHeight - CdgScreen::kBorderHeight;
            fillRectangle(0, 0, CdgScreen::kWidth, CdgScreen::kBorderHeight, colour);
            fillRectangle(0, kBottom, CdgScreen::kWidth, CdgScreen::kHeight, colour);
            fillRectangle(0, 0, CdgScreen::kBorderWidth, CdgScreen::kHeight, colour);
            fillRectangle(kRight, 0, CdgScreen::kWidth, CdgScreen::kHeight, colour);
            break;
        }
        case CdgInstruction::kTileBlock:
        case CdgInstruction::kTileBlockXor:
            drawTile(data, *instruction == CdgInstruction::kTileBlockXor);
            break;
        case CdgInstruction::kScrollPreset:
        case CdgInstruction::kScrollCopy:
            scroll(data, *instruction == CdgInstruction::kScrollCopy);
            break;
        case CdgInstruction::kDefineTransparent:
            screen_.transparentIndex = colourIndex(data[0]);
            break;
        case CdgInstruction::kLoadColoursLow:
        case CdgInstruction::kLoadColoursHigh:
            loadColours(data, *instruction == CdgInstruction::kLoadColoursHigh ? 8 : 0);
            break;
    }
}

void CdgDecoder::fillRectangle(int left, int top, int right, int bottom, uint8_t colour) {
    for (int y = top; y < bottom; ++y) {
        const auto row = screen_.pixels.begin() + y * CdgScreen::kWidth;
        std::fill(row + left, row + right, colour);
    }
}

// Twelve rows of six bits, the leftmost pixel in the highest bit; a set bit
// takes the second colour. The XOR form combines with what is there.
void CdgDecoder::drawTile(std::span<const uint8_t> data, bool exclusiveOr) {
    const uint8_t colours[2] = {colourIndex(data[0]), colourIndex(data[1])};
    const int row = data[2] & 0x1F;
    const int column = data[3];
    if (row >= kTileRows || column >= kTileColumns) {
        return;
    }
    for (int y = 0; y < CdgScreen::kTileHeight; ++y) {
        const uint8_t bits = data[4 + y];
        const auto line = screen_.pixels.begin() +
                          (row * CdgScreen::kTileHeight + y) * CdgScreen::kWidth +
                          column * CdgScreen::kTileWidth;
        for (int x = 0; x < CdgScreen::kTileWidth; ++x) {
            const uint8_t colour = colours[(bits >> (CdgScreen::kTileWidth - 1 - x)) & 1];
            line[x] = exclusiveOr ? static_cast<uint8_t>(line[x] ^ colour) : colour;
        }
    }
}

// Moves the whole screen by one tile. The preset form fills what comes in
// with a colour; the copy form brings in what went out on the other side.
// The fine offsets in the low bits only shift the picture on a display that
// shows part of it; the screen memory is what is drawn here.
void CdgDecoder::scroll(std::span<const uint8_t> data, bool wrap) {
    const int dx = scrollStep(data[1], CdgScreen::kTileWidth);
    const int dy = scrollStep(data[2], CdgScreen::kTileHeight);
    if (dx == 0 && dy == 0) {
        return;
    }
    const uint8_t fill = colourIndex(data[0]);
    const CdgScreen::Pixels before = screen_.pixels;
    for (int y = 0; y < CdgScreen::kHeight; ++y) {
        for (int x = 0; x < CdgScreen::kWidth; ++x) {
            int fromX = x - dx;
            int fromY = y - dy;
            const bool inside =
                fromX >= 0 && fromX < CdgScreen::kWidth && fromY >= 0 && fromY < CdgScreen::kHeight;
            if (!inside && !wrap) {
                screen_.pixels[static_cast<std::size_t>(y * CdgScreen::kWidth + x)] = fill;
                continue;
            }
            fromX = (fromX + CdgScreen::kWidth) % CdgScreen::kWidth;
            fromY = (fromY + CdgScreen::kHeight) % CdgScreen::kHeight;
            screen_.pixels[static_cast<std::size_t>(y * CdgScreen::kWidth + x)] =
                before[static_cast<std::size_t>(fromY * CdgScreen::kWidth + fromX)];
        }
    }
}

// Eight colours of two symbols each: --RRRRGG --GGBBBB.
void CdgDecoder::loadColours(std::span<const uint8_t> data, int first) {
    for (int i = 0; i < 8; ++i) {
        const uint8_t high = data[2 * i];
        const uint8_t low = data[2 * i + 1];
        const int red = (high >> 2) & 0x0F;
        const int green = ((high & 0x03) << 2) | ((low >> 4) & 0x03);
        const int blue = low & 0x0F;
        screen_.palette[static_cast<std::size_t>(first + i)] =
            static_cast<uint16_t>(red << 8 | green << 4 | blue);
    }
}

CdgCensus countCdgPackets(std::span<const uint8_t> stream) {
    CdgCensus census;
    census.packets = stream.size() / kCdgPacketBytes;
    census.trailingBytes = stream.size() % kCdgPacketBytes;
    for (std::size_t i = 0; i < census.packets; ++i) {
        const auto packet = stream.subspan(i * kCdgPacketBytes, kCdgPacketBytes);
        if (!isGraphics(packet)) {
            continue;
        }
        ++census.graphicsPackets;
        const auto instruction = instructionOf(packet);
        if (!instruction) {
            ++census.unknownInstructions;
            continue;
        }
        const auto slot = std::find(kCdgInstructions.begin(), kCdgInstructions.end(), *instruction);
        ++census.instructions[static_cast<std::size_t>(slot - kCdgInstructions.begin())];
    }
    return census;
}

namespace {

// Draws packets [first, last) of `stream`.
void applyPackets(CdgDecoder& decoder, std::span<const uint8_t> stream, std::size_t first,
                  std::size_t last) {
    for (std::size_t i = first; i < last; ++i) {
        decoder.apply(stream.subspan(i * kCdgPacketBytes).first<kCdgPacketBytes>());
    }
}

}  // namespace

bool CdgPlayback::advanceTo(double seconds) {
    const std::size_t due = duePackets(stream_.size() / kCdgPacketBytes, seconds);
    const bool restart = due < drawn_;
    if (restart) {
        decoder_ = CdgDecoder();
        drawn_ = 0;
    }
    applyPackets(decoder_, stream_, drawn_, due);
    const bool changed = restart || due != drawn_;
    drawn_ = due;
    return changed;
}

CdgScreen cdgScreenAt(std::span<const uint8_t> stream, double seconds) {
    CdgDecoder decoder;
    applyPackets(decoder, stream, 0, duePackets(stream.size() / kCdgPacketBytes, seconds));
    return decoder.screen();
}

}  // namespace tunebox
