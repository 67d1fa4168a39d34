#pragma once
// The export action beside the audition player: the take saved as FLAC, MP3,
// Ogg Vorbis or Opus with the same choices the export command offers.

#include <QDialog>
#include <optional>

#include "app/gui/dialog_services.h"
#include "platform/audio_encoder.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;

namespace tunebox::gui {

struct ExportChoices {
    ExportFormat format = ExportFormat::kFlac;
    double quality = 0.0;
    std::optional<double> normalizeLufs;
    QString artist;
};

class ExportDialog : public QDialog {
    Q_OBJECT

  public:
    // Starts with the artist the settings file names.
    explicit ExportDialog(QWidget* parent = nullptr);

    ExportChoices choices() const;

  private:
    void formatChanged();

    QComboBox* format_ = nullptr;
    QLabel* qualityMeaning_ = nullptr;
    QDoubleSpinBox* quality_ = nullptr;
    QCheckBox* normalize_ = nullptr;
    QDoubleSpinBox* target_ = nullptr;
    QLineEdit* artist_ = nullptr;
};

// Asks where to save `take` with `choices`, exports it and tells the user
// how it went. True when the file was written.
bool exportTakeAs(QWidget* parent, const DialogServices& services, const QString& take,
                  const ExportChoices& choices);

// The whole action: the choices, then exportTakeAs.
void offerExport(QWidget* parent, const DialogServices& services, const QString& take);

}  // namespace tunebox::gui
