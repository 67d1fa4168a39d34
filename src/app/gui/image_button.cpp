#include "app/gui/image_button.h"

#include <QMouseEvent>
#include <QPainter>

#include "app/gui/button_artwork.h"

namespace tunebox::gui {
namespace {

enum FrameSlot { kSlotNormal, kSlotHovered, kSlotPressed, kSlotFocused, kSlotDisabled };

}  // namespace

ImageButton::ImageButton(const QString& caption, QWidget* parent) : QPushButton(caption, parent) {
    setMouseTracking(true);
}

void ImageButton::setFrames(int normal, int hovered, int pressed, int focused, int disabled) {
    frames_[kSlotNormal] = normal;
    frames_[kSlotHovered] = hovered;
    frames_[kSlotPressed] = pressed;
    frames_[kSlotFocused] = focused;
    frames_[kSlotDisabled] = disabled;
    update();
}

QSize ImageButton::sizeHint() const {
    const QString caption = text().isEmpty() ? QStringLiteral("MM") : text();
    const QSize extent = fontMetrics().size(Qt::TextShowMnemonic, caption);
    return QSize(qMax(44, extent.width() + 20), qMax(30, extent.height() + 12));
}

int ImageButton::currentFrame() const {
    if (!isEnabled()) {
        return frames_[kSlotDisabled];
    }
    if (isDown()) {
        return frames_[kSlotPressed];
    }
    if (hoverState_ == kHovered) {
        return frames_[kSlotHovered];
    }
    if (option_ == 1 && hasFocus()) {
        return frames_[kSlotFocused];
    }
    return frames_[kSlotNormal];
}

void ImageButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintFrame(painter, rect(), currentFrame());
    // A pressed button sinks by one pixel.
    const QRectF content =
        QRectF(rect()).adjusted(4, 3, -4, -3).translated(isDown() ? 1 : 0, isDown() ? 1 : 0);
    QColor colour = textColour_;
    if (!isEnabled()) {
        colour.setAlpha(90);
    }
    const bool hasFace = face_ != kNoFace;
    const bool hasCaption = !text().isEmpty();
    QRectF faceBox = content;
    QRectF captionBox = content;
    if (hasFace && hasCaption) {
        faceBox.setWidth(content.height());
        captionBox.setLeft(faceBox.right() + 2);
    }
    if (hasFace) {
        paintFace(painter, faceBox, face_, colour);
    }
    if (hasCaption) {
        painter.setPen(colour);
        painter.drawText(captionBox, Qt::AlignCenter | Qt::TextShowMnemonic, text());
    }
}

void ImageButton::enterHover() {
    hoverCaptured_ = 1;
    hoverState_ = kHovered;
    grabMouse();
    repaint();
}

void ImageButton::leaveHover() {
    hoverState_ = kNormal;
    hoverCaptured_ = 0;
    repaint();
    releaseMouse();
}

void ImageButton::mouseMoveEvent(QMouseEvent* event) {
    if (hoverCaptured_ == 0 && hoverState_ == kNormal) {
        enterHover();
    } else if (hoverState_ == kHovered && !rect().contains(event->position().toPoint())) {
        leaveHover();
    }
    QPushButton::mouseMoveEvent(event);
}

void ImageButton::mousePressEvent(QMouseEvent* event) {
    if (hoverCaptured_ == 0 && hoverState_ == kNormal) {
        enterHover();
    }
    QPushButton::mousePressEvent(event);
}

void ImageButton::mouseReleaseEvent(QMouseEvent* event) {
    // The capture goes before the click is handled: a click may open a modal
    // picker, which must not find the pointer held by this button.
    if (hoverState_ == kHovered) {
        leaveHover();
    }
    QPushButton::mouseReleaseEvent(event);
}

void ImageButton::focusOutEvent(QFocusEvent* event) {
    QPushButton::focusOutEvent(event);
    if (hoverState_ == kHovered) {
        leaveHover();
    }
}

void ImageButton::hideEvent(QHideEvent* event) {
    if (hoverState_ == kHovered) {
        leaveHover();
    }
    QPushButton::hideEvent(event);
}

}  // namespace tunebox::gui
