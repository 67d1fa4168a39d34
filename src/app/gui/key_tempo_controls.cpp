#include "app/gui/key_tempo_controls.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>

#include "app/gui/control_ids.h"

namespace tunebox::gui {
namespace {

// Shows the sign of a move up as well as down: "+2" reads as a key change.
class SignedSpinBox : public QSpinBox {
  public:
    using QSpinBox::QSpinBox;

  protected:
    QString textFromValue(int value) const override {
        return value > 0 ? QStringLiteral("+%1").arg(value) : QString::number(value);
    }
};

QSpinBox* spinBox(QSpinBox* box, ControlId id, int low, int high, const QString& suffix,
                  const QString& tip) {
    box->setObjectName(controlName(id));
    box->setRange(low, high);
    box->setSuffix(suffix);
    box->setToolTip(tip);
    box->setKeyboardTracking(false);
    return box;
}

QLabel* caption(const QString& text, QWidget* buddy, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setAttribute(Qt::WA_TranslucentBackground);
    label->setBuddy(buddy);
    return label;
}

}  // namespace

KeyTempoControls::KeyTempoControls(QWidget* parent) : QWidget(parent) {
    key_ = spinBox(new SignedSpinBox(this), kKeySpin, -kMaxSemitones, kMaxSemitones, QString(),
                   tr("Move the accompaniment's key by semitones, to fit your voice"));
    cents_ = spinBox(new SignedSpinBox(this), kCentsSpin, -kMaxCents, kMaxCents, tr(" cents"),
                     tr("Fine tuning of the key, in hundredths of a semitone"));
    tempo_ = spinBox(new QSpinBox(this), kTempoSpin, kSlowestTempo, kFastestTempo,
                     QStringLiteral(" %"), tr("Play the accompaniment slower or faster"));
    tempo_->setValue(kFullTempo);
    formants_ = new QCheckBox(tr("Keep voices natural"), this);
    formants_->setObjectName(controlName(kFormantCheck));
    formants_->setToolTip(tr("Voices in the accompaniment keep their timbre when the key moves"));
    reset_ = new QPushButton(tr("Original"), this);
    reset_->setObjectName(controlName(kKeyTempoReset));
    reset_->setToolTip(tr("Back to the song's own key and tempo"));
    reset_->setAutoDefault(false);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(caption(tr("&Key:"), key_, this));
    row->addWidget(key_);
    row->addWidget(cents_);
    row->addSpacing(8);
    row->addWidget(caption(tr("&Tempo:"), tempo_, this));
    row->addWidget(tempo_);
    row->addSpacing(8);
    row->addWidget(formants_);
    row->addWidget(reset_);
    row->addStretch(1);

    for (QSpinBox* box : {key_, cents_, tempo_}) {
        connect(box, &QSpinBox::valueChanged, this, &KeyTempoControls::changed);
    }
    connect(formants_, &QCheckBox::toggled, this, &KeyTempoControls::changed);
    connect(reset_, &QPushButton::clicked, this, [this] {
        setValue(KeyTempo{.preserveFormants = formants_->isChecked()});
        emit changed();
    });
}

KeyTempo KeyTempoControls::value() const {
    return {key_->value(), cents_->value(), tempo_->value(), formants_->isChecked()};
}

void KeyTempoControls::setValue(const KeyTempo& keyTempo) {
    const QSignalBlocker blockKey(key_);
    const QSignalBlocker blockCents(cents_);
    const QSignalBlocker blockTempo(tempo_);
    const QSignalBlocker blockFormants(formants_);
    key_->setValue(keyTempo.semitones);
    cents_->setValue(keyTempo.cents);
    tempo_->setValue(keyTempo.tempoPercent);
    formants_->setChecked(keyTempo.preserveFormants);
}

}  // namespace tunebox::gui
