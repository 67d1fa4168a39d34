#include "mp3/decoder/layer3_side_info.h"

#include <algorithm>

#include "mp3/decoder/scale_factor_bands.h"

namespace tunebox {
namespace {

// Region boundaries follow scale-factor bands; switched windows fix them.
void placeRegions(GranuleChannelInfo& info, int region0Count, int region1Count,
                  const ScaleFactorBands& bands) {
    if (info.windowSwitching) {
        info.region1Start = info.allShort() ? 3 * bands.shortBounds[3] : bands.longBounds[8];
        info.region2Start = kGranuleLines;
        return;
    }
    const int first = std::min(region0Count + 1, kLongBands);
    const int second = std::min(region0Count + region1Count + 2, kLongBands);
    info.region1Start = bands.longBounds[first];
    info.region2Start = bands.longBounds[second];
}

int readGranuleChannel(BitReader& reader, const MpegHeader& header, GranuleChannelInfo& info) {
    info.part23Length = static_cast<int>(reader.read(12));
    info.bigValues = std::min(static_cast<int>(reader.read(9)), kGranuleLines / 2);
    info.globalGain = static_cast<int>(reader.read(8));
    info.scalefacCompress = static_cast<int>(reader.read(header.isMpeg1() ? 4 : 9));
    info.windowSwitching = reader.readBit() != 0;
    int region0Count = 0;
    int region1Count = 0;
    if (info.windowSwitching) {
        info.blockType = static_cast<BlockType>(reader.read(2));
        info.mixedBlock = reader.readBit() != 0;
        info.tableSelect[0] = static_cast<int>(reader.read(5));
        info.tableSelect[1] = static_cast<int>(reader.read(5));
        info.tableSelect[2] = 0;
        for (int& gain : info.subblockGain) {
            gain = static_cast<int>(reader.read(3));
        }
        if (info.blockType == BlockType::Normal) {
            return 0;
        }
    } else {
        info.blockType = BlockType::Normal;
        info.mixedBlock = false;
        for (int& table : info.tableSelect) {
            table = static_cast<int>(reader.read(5));
        }
        info.subblockGain = {};
        region0Count = static_cast<int>(reader.read(4));
        region1Count = static_cast<int>(reader.read(3));
    }
    info.preflag = header.isMpeg1() ? reader.readBit() != 0 : info.scalefacCompress >= 500;
    info.scalefacScale = static_cast<int>(reader.readBit());
    info.count1Table = static_cast<int>(reader.readBit());
    placeRegions(info, region0Count, region1Count, scaleFactorBands(header.rateTableIndex()));
    return 1;
}

}  // namespace

int readSideInfo(BitReader& reader, const MpegHeader& header, Layer3SideInfo& info) {
    const int channels = header.channels();
    if (header.isMpeg1()) {
        info.mainDataBegin = static_cast<int>(reader.read(9));
        reader.skip(channels == 1 ? 5 : 3);
        for (int ch = 0; ch < channels; ++ch) {
            for (bool& shared : info.scfsi[ch]) {
                shared = reader.readBit() != 0;
            }
        }
    } else {
        info.mainDataBegin = static_cast<int>(reader.read(8));
        reader.skip(channels == 1 ? 1 : 2);
        info.scfsi = {};
    }
    for (int gr = 0; gr < header.granules(); ++gr) {
        for (int ch = 0; ch < channels; ++ch) {
            if (!readGranuleChannel(reader, header, info.granule[gr][ch])) {
                return 0;
            }
        }
    }
    return reader.overrun() ? 0 : 1;
}

}  // namespace tunebox
