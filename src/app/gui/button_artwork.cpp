#include "app/gui/button_artwork.h"

#include <QLinearGradient>
#include <QPainterPath>

#include "app/gui/image_ids.h"

namespace tunebox::gui {
namespace {

constexpr qreal kCornerRadius = 5.0;

struct FrameLook {
    QColor top;
    QColor bottom;
    QColor border;
    QColor ring;  // inner ring; transparent for none
};

FrameLook frameLook(int frameId) {
    switch (frameId) {
        case kFrameHovered:
            return {QColor(255, 255, 255), QColor(218, 230, 252), QColor(80, 120, 220),
                    QColor(170, 195, 245)};
        case kFramePressed:
            return {QColor(196, 208, 232), QColor(232, 238, 250), QColor(60, 90, 180),
                    Qt::transparent};
        case kFrameFocused:
            return {QColor(248, 250, 255), QColor(214, 221, 236), QColor(110, 122, 150),
                    QColor(100, 140, 235)};
        case kFrameDisabled:
            return {QColor(236, 236, 236), QColor(224, 224, 224), QColor(184, 184, 184),
                    Qt::transparent};
        default:
            return {QColor(248, 250, 255), QColor(214, 221, 236), QColor(128, 138, 160),
                    Qt::transparent};
    }
}

// A square of side `side` centred in `box`.
QRectF centredSquare(const QRectF& box, qreal side) {
    return QRectF(box.center().x() - side / 2, box.center().y() - side / 2, side, side);
}

QPainterPath triangle(const QRectF& glyph) {
    QPainterPath path;
    const qreal inset = glyph.width() * 0.12;
    path.moveTo(glyph.left() + inset, glyph.top());
    path.lineTo(glyph.right(), glyph.center().y());
    path.lineTo(glyph.left() + inset, glyph.bottom());
    path.closeSubpath();
    return path;
}

QPainterPath square(const QRectF& glyph) {
    QPainterPath path;
    const qreal side = glyph.width() * 0.86;
    path.addRoundedRect(centredSquare(glyph, side), side * 0.08, side * 0.08);
    return path;
}

QPainterPath pauseBars(const QRectF& glyph) {
    QPainterPath path;
    const qreal bar = glyph.width() * 0.3;
    const qreal radius = bar * 0.15;
    path.addRoundedRect(
        QRectF(glyph.left() + glyph.width() * 0.1, glyph.top(), bar, glyph.height()), radius,
        radius);
    path.addRoundedRect(
        QRectF(glyph.right() - glyph.width() * 0.1 - bar, glyph.top(), bar, glyph.height()), radius,
        radius);
    return path;
}

QPainterPath dot(const QRectF& glyph) {
    QPainterPath path;
    path.addEllipse(centredSquare(glyph, glyph.width() * 0.86));
    return path;
}

// Three rising level bars: the microphone check.
QPainterPath levelBars(const QRectF& glyph) {
    QPainterPath path;
    const qreal bar = glyph.width() * 0.24;
    const qreal gap = (glyph.width() - 3 * bar) / 2;
    for (int i = 0; i < 3; ++i) {
        const qreal height = glyph.height() * (0.45 + 0.275 * i);
        path.addRoundedRect(
            QRectF(glyph.left() + i * (bar + gap), glyph.bottom() - height, bar, height), bar * 0.2,
            bar * 0.2);
    }
    return path;
}

QPainterPath glyphFor(int faceId, const QRectF& glyph) {
    switch (faceId) {
        case kFacePlay:
        case kFacePlaying:
            return triangle(glyph);
        case kFaceStop:
            return square(glyph);
        case kFacePause:
        case kFacePaused:
            return pauseBars(glyph);
        case kFaceRecord:
        case kFaceRecording:
            return dot(glyph);
        case kFaceMonitor:
        case kFaceMonitoring:
            return levelBars(glyph);
        default:
            return {};
    }
}

bool isActiveFace(int faceId) {
    return faceId == kFacePlaying || faceId == kFacePaused || faceId == kFaceRecording ||
           faceId == kFaceMonitoring;
}

}  // namespace

void paintFrame(QPainter& painter, const QRectF& bounds, int frameId) {
    const FrameLook look = frameLook(frameId);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF outline = bounds.adjusted(0.5, 0.5, -0.5, -0.5);
    QLinearGradient fill(outline.topLeft(), outline.bottomLeft());
    fill.setColorAt(0, look.top);
    fill.setColorAt(1, look.bottom);
    painter.setBrush(fill);
    painter.setPen(QPen(look.border, 1.0));
    painter.drawRoundedRect(outline, kCornerRadius, kCornerRadius);
    if (look.ring.alpha() != 0) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(look.ring, 1.5));
        painter.drawRoundedRect(outline.adjusted(1.75, 1.75, -1.75, -1.75), kCornerRadius - 1.5,
                                kCornerRadius - 1.5);
    }
    painter.restore();
}

void paintFace(QPainter& painter, const QRectF& box, int faceId, const QColor& colour) {
    const qreal side = qMin(box.width(), box.height());
    const QRectF glyph = centredSquare(box, side * 0.5);
    const QPainterPath shape = glyphFor(faceId, glyph);
    if (shape.isEmpty()) {
        return;
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    if (isActiveFace(faceId)) {
        // The active state shows the glyph cut out of a lit badge, readable
        // at a glance from across the room.
        const QRectF badge = centredSquare(box, side * 0.86);
        painter.setBrush(colour);
        painter.drawRoundedRect(badge, side * 0.16, side * 0.16);
        painter.setBrush(faceId == kFaceRecording ? QColor(255, 64, 64) : QColor(Qt::white));
        if (faceId == kFaceRecording) {
            painter.setPen(QPen(Qt::white, qMax<qreal>(1.0, side * 0.05)));
        }
    } else {
        painter.setBrush(colour);
    }
    painter.drawPath(shape);
    painter.restore();
}

}  // namespace tunebox::gui
