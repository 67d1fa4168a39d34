#pragma once
// The dialog's control identifiers. Each widget carries its identifier as
// its object name, so tools and tests find controls the way the dialog
// resource names them.

#include <QString>

namespace tunebox::gui {

enum ControlId : int {
    kAboutCommand = 16,  // the About entry of the window menu
    kKaraokePick = 1001,
    kKaraokePlay = 1002,
    kKaraokeStop = 1003,
    kKaraokePause = 1004,
    kLeftButton = 1005,
    kRightButton = 1006,
    kRecordedPick = 1007,
    kTrackListView = 1008,
    kKaraokeName = 1009,
    kKaraokeTrackbar = 1010,
    kTimeText = 1011,
    kRecordedName = 1012,
    kRecordedTrackbar = 1013,
    kRecordedPlay = 1014,
    kRecorderStop = 1015,
    kRecordedPause = 1016,
    kRecord = 1017,
    kEchoCheck = 1018,
    kManualDelayCheck = 1019,
    kAboutButton = 1020,
    kHelpButton = 1021,
    kDelayReadout = 1022,
    kManualDelayEdit = 1023,
    kCaptureStartReadout = 1024,
    kPlaybackStartReadout = 1025,
    kMonitor = 1026,
    kMeterFrame = 1028,
    kVoiceFileCheck = 1029,
    kNudgeSpin = 1030,
    kNudgeSave = 1031,
    kClipLight = 1040,
    kCalibrationNote = 1041,
    kKeySpin = 1050,
    kCentsSpin = 1051,
    kTempoSpin = 1052,
    kFormantCheck = 1053,
    kKeyTempoReset = 1054,
};

inline QString controlName(ControlId id) {
    return QString::number(static_cast<int>(id));
}

}  // namespace tunebox::gui
