#pragma once
// A push button drawn from the shared frame artwork with a face that shows
// the button's state. While the pointer is over it the button holds the
// mouse capture, so it notices the pointer leaving even in one quick move.

#include <QPushButton>

#include "app/gui/image_ids.h"

namespace tunebox::gui {

class ImageButton : public QPushButton {
    Q_OBJECT

  public:
    explicit ImageButton(const QString& caption, QWidget* parent = nullptr);

    // The five frames in the order normal, hovered, pressed, focused,
    // disabled. Repaints the button.
    void setFrames(int normal, int hovered, int pressed, int focused, int disabled);
    // Does not repaint: the owner repaints after changing faces.
    void setFace(int faceId) { face_ = faceId; }
    void setTextColour(const QColor& colour) { textColour_ = colour; }
    // 1 shows keyboard focus with the focused frame.
    void setOption(int option) { option_ = option; }

    int face() const { return face_; }
    bool hovered() const { return hoverState_ == kHovered; }
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    static constexpr int kNormal = 0;
    static constexpr int kHovered = 2;

    void enterHover();
    void leaveHover();
    int currentFrame() const;

    int hoverCaptured_ = 0;
    int hoverState_ = kNormal;
    QColor textColour_ = QColor(0, 0, 255);
    int option_ = 0;
    int frames_[5] = {kFrameNormal, kFrameHovered, kFramePressed, kFrameFocused, kFrameDisabled};
    int face_ = kNoFace;
};

}  // namespace tunebox::gui
