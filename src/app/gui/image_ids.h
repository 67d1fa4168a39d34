#pragma once
// Identifiers of the button artwork: the five frames every image button
// shares and the faces that show each button's state.

namespace tunebox::gui {

enum FrameId : int {
    kFrameNormal = 129,
    kFrameDisabled = 130,
    kFramePressed = 131,
    kFrameHovered = 132,
    kFrameFocused = 133,
};

enum FaceId : int {
    kNoFace = 0,
    kFacePlay = 135,
    kFaceStop = 136,
    kFacePause = 137,
    kFacePlaying = 138,
    kFacePaused = 142,
    kFaceRecord = 143,
    kFaceRecording = 144,
    kFaceMonitor = 147,
    kFaceMonitoring = 148,
};

}  // namespace tunebox::gui
