// The "Intensity/Smooth Options" dialog: a grid with one row per channel of
// the document ("Audio" for the first, the channel number for the others)
// and the columns channel name, intensity window (ms), intensity step (ms),
// normalise, smoothing on and smoothing length (samples). Whole-number cells
// show the settings with their fractions cut off and are read back as
// doubles. OK and Cancel are refused while a cell is being edited, and OK
// is refused while a cell holds no number or a value out of range, so that
// nothing typed is lost.
#pragma once

#include <QDialog>
#include <vector>

#include "document/AppConfig.h"

class CDatatbl5;
class CKestruneView;

namespace sonmetra {
class CKestruneDoc;
}

class IntensitySmoothDialog : public QDialog {
    Q_OBJECT
public:
    enum Column { kName = 0, kWindow, kStep, kNormalise, kSmoothing, kLength, kColumns };
    // The largest whole numbers the cells take.
    static constexpr double kMaxWindowMs = 1.0e6;
    static constexpr double kMaxSmoothingLength = 1.0e7;

    // Rows for the document's channels (at most one per settings slot),
    // filled from the slots of `config`.
    IntensitySmoothDialog(const sonmetra::CKestruneDoc& doc, const sonmetra::AppConfig& config,
                          QWidget* parent = nullptr);

    // False when the grid could not be set up (its message has been shown).
    bool ready() const { return m_ready; }
    CDatatbl5* grid() const { return m_grid; }
    // The rows as read back by OK, one per row.
    const std::vector<sonmetra::ChannelAnalysisSettings>& settings() const { return m_settings; }

public slots:
    void accept() override;
    void reject() override;

private:
    bool editingRefused();
    bool readGrid();

    CDatatbl5* m_grid;
    bool m_ready = false;
    std::vector<sonmetra::ChannelAnalysisSettings> m_settings;
};

// Channel i of the document takes slot i's settings (the commands do this
// before they run, the dialog after OK).
void takeChannelSettings(const sonmetra::AppConfig& config, sonmetra::CKestruneDoc& doc);

// "Intensity/Smooth": on OK the settings go into the configuration record,
// which is written to its file, and into the document's channels.
void runIntensitySmoothOptions(CKestruneView& view);
