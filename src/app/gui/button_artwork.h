#pragma once
// The image buttons' artwork, drawn as vector paths so that it stays crisp
// at any size and pixel density. Frames keep their corner size however far a
// button is stretched; faces are drawn in the button's text colour.

#include <QColor>
#include <QPainter>
#include <QRectF>

namespace tunebox::gui {

// The frame `frameId` (FrameId) filling `bounds`.
void paintFrame(QPainter& painter, const QRectF& bounds, int frameId);

// The face `faceId` (FaceId) centred in `box`; nothing for an unknown face.
void paintFace(QPainter& painter, const QRectF& box, int faceId, const QColor& colour);

}  // namespace tunebox::gui
