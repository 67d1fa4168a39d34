#pragma once
// The key and tempo of the accompaniment, beside its player: the key in
// semitones and cents, the tempo in percent, whether voices keep their
// timbre, and a reset to the song as it is. It only shows and reports a
// setting; the dialog applies it.

#include <QWidget>

#include "effects/key_tempo.h"

class QCheckBox;
class QPushButton;
class QSpinBox;

namespace tunebox::gui {

class KeyTempoControls : public QWidget {
    Q_OBJECT

  public:
    explicit KeyTempoControls(QWidget* parent = nullptr);

    KeyTempo value() const;
    // Shows `keyTempo` without reporting it as a change.
    void setValue(const KeyTempo& keyTempo);

  signals:
    // The user moved a control or pressed the reset.
    void changed();

  private:
    QSpinBox* key_ = nullptr;
    QSpinBox* cents_ = nullptr;
    QSpinBox* tempo_ = nullptr;
    QCheckBox* formants_ = nullptr;
    QPushButton* reset_ = nullptr;
};

}  // namespace tunebox::gui
