#include "app/gui/lyrics_dock.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <functional>
#include <utility>

#include "app/gui/lyrics_pane.h"

namespace tunebox::gui {
namespace {

// The pane's window: closing it, or Escape, gives the pane back.
class LyricsWindow : public QWidget {
  public:
    LyricsWindow(QWidget* dialog, std::function<void()> closing)
        : QWidget(dialog, Qt::Window), closing_(std::move(closing)) {
        new QVBoxLayout(this);
        layout()->setContentsMargins(0, 0, 0, 0);
    }

  protected:
    void closeEvent(QCloseEvent* event) override {
        event->ignore();
        // Later: attach() lets the window go.
        QMetaObject::invokeMethod(this, closing_, Qt::QueuedConnection);
    }
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Escape) {
            close();
            return;
        }
        QWidget::keyPressEvent(event);
    }

  private:
    std::function<void()> closing_;
};

// A display other than the one the dialog is on, if there is one.
QScreen* otherScreen(const QWidget& dialog) {
    for (QScreen* screen : QGuiApplication::screens()) {
        if (screen != dialog.screen()) {
            return screen;
        }
    }
    return nullptr;
}

}  // namespace

LyricsDock::LyricsDock(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("lyricsDock"));
    pane_ = new LyricsPane(this);
    pane_->setObjectName(QStringLiteral("lyricsPane"));
    detachButton_ = new QPushButton(tr("Lyrics window"), this);
    detachButton_->setObjectName(QStringLiteral("lyricsDetach"));
    detachButton_->setCheckable(true);
    detachButton_->setToolTip(
        tr("Show the lyrics in a window of their own (full screen on a second display); "
           "close it to bring them back"));
    connect(detachButton_, &QPushButton::toggled, this,
            [this](bool detaching) { detaching ? detach() : attach(); });

    layout_ = new QVBoxLayout(this);
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->addWidget(pane_, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(detachButton_);
    layout_->addLayout(buttons);
    lyricsChanged();
}

void LyricsDock::detach() {
    if (window_) {
        return;
    }
    window_ = new LyricsWindow(window(), [this] { detachButton_->setChecked(false); });
    window_->setWindowTitle(tr("Tunebox lyrics"));
    window_->setWindowIcon(window()->windowIcon());
    window_->layout()->addWidget(pane_);
    detachButton_->setChecked(true);
    if (QScreen* screen = otherScreen(*window())) {
        window_->setGeometry(screen->geometry());
        window_->showFullScreen();
    } else {
        window_->resize(900, 320);
        window_->show();
    }
}

void LyricsDock::attach() {
    if (!window_) {
        return;
    }
    layout_->insertWidget(0, pane_, 1);
    pane_->show();
    std::exchange(window_, nullptr)->deleteLater();
    detachButton_->setChecked(false);
}

void LyricsDock::lyricsChanged() {
    setVisible(pane_->hasLyrics() || window_ != nullptr);
}

}  // namespace tunebox::gui
