// The "Spectrogram Option" dialog: the analysis (window length, frequency
// range, dynamic range, pre-emphasis), formant tracking, the panes, the
// grids, the colour table and the print and bitmap size of the spectrogram
// window. "Defaults" puts back the values for the audio rate, except
// "Display formants". The controls carry object names for tests.
#pragma once

#include <QDialog>

#include "analysis/AnalysisSettings.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QRadioButton;
class QSpinBox;

namespace sonmetra {
class CKestruneDoc;
}

class SpectrogramOptionDialog : public QDialog {
    Q_OBJECT
public:
    // `rateHz` is the audio rate the defaults and the window-length list follow.
    SpectrogramOptionDialog(const sonmetra::SpectrogramSettings& settings, double rateHz, QWidget* parent = nullptr);

    sonmetra::SpectrogramSettings settings() const;
    void showSettings(const sonmetra::SpectrogramSettings& settings);
    // The "Defaults" button.
    void restoreDefaults();

private:
    double m_rateHz;
    sonmetra::SpectrogramSettings m_kept;  // fields the dialog does not show
    QComboBox* m_window;
    QSpinBox* m_frequencyRange;
    QSpinBox* m_dynamicRange;
    QDoubleSpinBox* m_preEmphasis;
    QCheckBox* m_formants;
    QSpinBox* m_lpcOrder;
    QCheckBox* m_drawAudio;
    QCheckBox* m_drawLabels;
    QCheckBox* m_drawIntensity;
    QCheckBox* m_frequencyGrid;
    QSpinBox* m_frequencyGridHz;
    QCheckBox* m_timeGrid;
    QSpinBox* m_timeGridMs;
    QRadioButton* m_grey;
    QRadioButton* m_colour;
    QDoubleSpinBox* m_width;
    QDoubleSpinBox* m_height;
    QRadioButton* m_inches;
    QRadioButton* m_cm;
    QRadioButton* m_printColour;
    QRadioButton* m_printBlackWhite;
};

// The audio rate the dialog follows for a document: its audio channel's,
// else the rate in force.
double spectrogramDialogRateHz(const sonmetra::CKestruneDoc* doc);
// "Spectrogram...": on OK the settings go into the configuration record
// (written to its file) and the document, and the open spectrogram windows
// compute again.
void runSpectrogramOptions(sonmetra::CKestruneDoc* doc, QWidget* parent);

// Registers the spectrogram window's commands, its option dialog in the
// waveform view's and the window's "&Options" menus, and its render kind.
void registerSpectrogramWindow();
