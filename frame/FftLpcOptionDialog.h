// The "FFT/LPC Option" dialog: FFT size (with each size's bin width at the
// document's rate), applied window length, frequency range, average step, LPC
// order, Draw LPC, the display format, the print size and the two grids.
// "Default size" puts every field back to its default at the document's rate.
// OK checks the applied window (at most the FFT size's duration) and the
// frequency range (at most half the rate); a value beyond is set to the
// maximum after the message that says so.
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

class FftLpcOptionDialog : public QDialog {
    Q_OBJECT
public:
    FftLpcOptionDialog(const sonmetra::FftLpcSettings& settings, double rateHz, QWidget* parent = nullptr);

    sonmetra::FftLpcSettings settings() const;
    void setSettings(const sonmetra::FftLpcSettings& settings);
    // "Default size".
    void setDefaults();
    // The longest applied window and the highest frequency range OK accepts.
    int maxAppliedWindowMs() const;
    int maxFrequencyRangeHz() const;

    void accept() override;

    // The fields, by what they set (tests drive them).
    QComboBox* fftSizeField() const { return m_fftSize; }
    QSpinBox* appliedWindowField() const { return m_applied; }
    QSpinBox* frequencyRangeField() const { return m_range; }
    QSpinBox* averageStepField() const { return m_step; }
    QSpinBox* lpcOrderField() const { return m_order; }
    QCheckBox* drawLpcField() const { return m_drawLpc; }
    QRadioButton* absoluteField() const { return m_absolute; }
    QRadioButton* relativeField() const { return m_relative; }
    QSpinBox* absoluteLevelField() const { return m_absoluteDb; }
    QDoubleSpinBox* widthField() const { return m_width; }
    QDoubleSpinBox* heightField() const { return m_height; }
    QRadioButton* inchesField() const { return m_inches; }
    QRadioButton* cmField() const { return m_cm; }
    QRadioButton* colorField() const { return m_color; }
    QRadioButton* blackWhiteField() const { return m_blackWhite; }
    QCheckBox* frequencyGridField() const { return m_frequencyGrid; }
    QSpinBox* frequencyGridSpacingField() const { return m_frequencyGridHz; }
    QCheckBox* powerGridField() const { return m_powerGrid; }
    QSpinBox* powerGridSpacingField() const { return m_powerGridDb; }

private:
    void followChecks();

    double m_rateHz;
    QComboBox* m_fftSize;
    QSpinBox *m_applied, *m_range, *m_step, *m_order;
    QCheckBox* m_drawLpc;
    QRadioButton *m_absolute, *m_relative;
    QSpinBox* m_absoluteDb;
    QDoubleSpinBox *m_width, *m_height;
    QRadioButton *m_inches, *m_cm, *m_color, *m_blackWhite;
    QCheckBox *m_frequencyGrid, *m_powerGrid;
    QSpinBox *m_frequencyGridHz, *m_powerGridDb;
};

// The audio rate the dialog of a document works at: its audio channel's, else
// its first channel's, else the rate in force.
double fftLpcDialogRateHz(const sonmetra::CKestruneDoc* doc);
// "FFT/LPC...": on OK the settings go into the configuration (written to its
// file) and the document, and every open spectrum window computes again.
void runFftLpcOptions(sonmetra::CKestruneDoc* doc, QWidget* parent);
