#pragma once
// Where the lyrics pane lives: in the dialog, or on its own in a window of
// its own (full screen on a second display, when there is one) that the
// singer can read from across the room. Closing that window brings the pane
// back into the dialog.

#include <QWidget>

class QPushButton;
class QVBoxLayout;

namespace tunebox::gui {

class LyricsPane;

class LyricsDock : public QWidget {
    Q_OBJECT

  public:
    explicit LyricsDock(QWidget* parent = nullptr);

    LyricsPane& pane() const { return *pane_; }
    // The pane's own window while it is detached, else null.
    QWidget* lyricsWindow() const { return window_; }

    void detach();
    void attach();
    // Shown in the dialog only while there are lyrics.
    void lyricsChanged();

  private:
    LyricsPane* pane_ = nullptr;
    QVBoxLayout* layout_ = nullptr;
    QPushButton* detachButton_ = nullptr;
    // A window of the dialog's own, so that the dialog, modal as it runs,
    // does not shut it out.
    QWidget* window_ = nullptr;
};

}  // namespace tunebox::gui
