// The accompaniment's key and tempo: the controls beside its player, applied
// at once to a player that runs (a take included, which records what the
// singer hears), and remembered for each song when the settings say so.

#include "app/gui/key_tempo_controls.h"
#include "app/gui/key_tempo_memory.h"
#include "app/gui/main_dialog.h"

namespace tunebox::gui {

void MainDialog::createKeyTempoControls() {
    keyTempoControls_ = new KeyTempoControls(this);
    rememberKeyTempo_ = keyTempoRemembered();
    connect(keyTempoControls_, &KeyTempoControls::changed, this, &MainDialog::keyTempoMoved);
}

void MainDialog::keyTempoMoved() {
    const KeyTempo keyTempo = keyTempoControls_->value();
    controller_.accompanimentPlayer().wavSetKeyTempo(keyTempo);
    if (rememberKeyTempo_ && !karaokeName_.isEmpty()) {
        rememberKeyTempo(karaokeName_.toStdString(), keyTempo);
    }
}

// A song never moved starts as it is; without the memory the controls keep
// whatever they show.
void MainDialog::recallKeyTempoFor(const std::string& path) {
    if (rememberKeyTempo_) {
        keyTempoControls_->setValue(recallKeyTempo(path).value_or(KeyTempo{}));
    }
}

// The player is set up with the stage even at neutral, so that the key can
// leave it while audio flows.
void MainDialog::moveKeyTempo(TrackEntry& entry) const {
    entry.keyTempo = keyTempoControls_->value();
    entry.keyTempoMayMove = true;
}

}  // namespace tunebox::gui
