#pragma once
// CD+G graphics ("MP3+G" karaoke discs copied to files): a stream of 24-byte
// subcode packets, 300 a second, whose graphics instructions draw 6x12 tiles
// of a 16-colour palette onto a 300x216 screen with a border around it.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace tunebox {

inline constexpr std::size_t kCdgPacketBytes = 24;
inline constexpr int kCdgPacketsPerSecond = 300;

// The graphics instructions, by their number in the packet's second byte.
enum class CdgInstruction : uint8_t {
    kMemoryPreset = 1,
    kBorderPreset = 2,
    kTileBlock = 6,
    kScrollPreset = 20,
    kScrollCopy = 24,
    kDefineTransparent = 28,
    kLoadColoursLow = 30,
    kLoadColoursHigh = 31,
    kTileBlockXor = 38,
};

// Every instruction above, in their numeric order.
inline constexpr std::array<CdgInstruction, 9> kCdgInstructions = {
    CdgInstruction::kMemoryPreset,   CdgInstruction::kBorderPreset,
    CdgInstruction::kTileBlock,      CdgInstruction::kScrollPreset,
    CdgInstruction::kScrollCopy,     CdgInstruction::kDefineTransparent,
    CdgInstruction::kLoadColoursLow, CdgInstruction::kLoadColoursHigh,
    CdgInstruction::kTileBlockXor};

// "memory preset", "tile block XOR" and so on.
std::string_view cdgInstructionName(CdgInstruction instruction);

// The screen as its memory holds it: one palette index a pixel, row by row.
struct CdgScreen {
    static constexpr int kWidth = 300;
    static constexpr int kHeight = 216;
    static constexpr int kTileWidth = 6;
    static constexpr int kTileHeight = 12;
    // Outside this frame of one tile on each side lies the border.
    static constexpr int kBorderWidth = kTileWidth;
    static constexpr int kBorderHeight = kTileHeight;

    using Pixels = std::array<uint8_t, kWidth * kHeight>;
    Pixels pixels{};
    // 12-bit colours, 0xRGB.
    std::array<uint16_t, 16> palette{};
    // The index shown see-through when the screen is laid over video; -1
    // while the stream has not named one.
    int transparentIndex = -1;

    uint8_t at(int x, int y) const { return pixels[static_cast<std::size_t>(y * kWidth + x)]; }
};

// Draws a packet stream packet by packet. Packets that are not graphics, and
// instructions it does not know, change nothing.
class CdgDecoder {
  public:
    // Applies one 24-byte packet.
    void apply(std::span<const uint8_t, kCdgPacketBytes> packet);

    const CdgScreen& screen() const { return screen_; }

  private:
    void fillRectangle(int left, int top, int right, int bottom, uint8_t colour);
    void drawTile(std::span<const uint8_t> data, bool exclusiveOr);
    void scroll(std::span<const uint8_t> data, bool wrap);
    void loadColours(std::span<const uint8_t> data, int first);

    CdgScreen screen_;
};

// A stream drawn as the song plays: each moment asked for draws only the
// packets that came due since the last one, and a moment earlier than the
// last starts again from the top, as the stream can only be drawn forward.
class CdgPlayback {
  public:
    explicit CdgPlayback(std::vector<uint8_t> stream = {}) : stream_(std::move(stream)) {}

    // Draws every packet due by `seconds`; true when any was drawn.
    bool advanceTo(double seconds);

    const CdgScreen& screen() const { return decoder_.screen(); }

  private:
    std::vector<uint8_t> stream_;
    CdgDecoder decoder_;
    std::size_t drawn_ = 0;  // packets
};

// How many packets a stream holds, and of what kind.
struct CdgCensus {
    std::size_t packets = 0;
    std::size_t graphicsPackets = 0;
    std::array<std::size_t, kCdgInstructions.size()> instructions{};  // as in kCdgInstructions
    std::size_t unknownInstructions = 0;
    std::size_t trailingBytes = 0;  // a cut last packet
};

CdgCensus countCdgPackets(std::span<const uint8_t> stream);

// The screen `seconds` into the stream: every packet due by then drawn.
CdgScreen cdgScreenAt(std::span<const uint8_t> stream, double seconds);

}  // namespace tunebox
