// The "Pitch option" dialog: the calculation method, the track's window,
// step, jump test, gate and calculation range, the display range, the
// frequency and time grids, the optional panes, and the print / bitmap
// size. "Defaults " restores every value but the method. The grid spacing
// fields are enabled only while their boxes are checked.
#pragma once

#include <QDialog>

#include "analysis/AnalysisSettings.h"

class QCheckBox;
class QDoubleSpinBox;
class QRadioButton;
class QSpinBox;

class PitchOptionDialog : public QDialog {
    Q_OBJECT
public:
    explicit PitchOptionDialog(const sonmetra::PitchSettings& settings, QWidget* parent = nullptr);

    // The dialog's values (method included).
    sonmetra::PitchSettings settings() const;
    void setSettings(const sonmetra::PitchSettings& settings);
    // "Defaults ": every value but the method.
    void restoreDefaults();
    // Why the values cannot be taken, or empty.
    QString problem() const;

    // The controls, for tests.
    QRadioButton* cepstralButton() const { return m_cepstral; }
    QRadioButton* autocorrelationButton() const { return m_autocorrelation; }
    QSpinBox* windowField() const { return m_window; }
    QSpinBox* stepField() const { return m_step; }
    QSpinBox* deviationField() const { return m_deviation; }
    QSpinBox* thresholdField() const { return m_threshold; }
    QSpinBox* lowField() const { return m_low; }
    QSpinBox* highField() const { return m_high; }
    QSpinBox* displayLowField() const { return m_displayLow; }
    QSpinBox* displayHighField() const { return m_displayHigh; }
    QCheckBox* frequencyGridBox() const { return m_frequencyGrid; }
    QSpinBox* frequencyGridField() const { return m_frequencyGridHz; }
    QCheckBox* timeGridBox() const { return m_timeGrid; }
    QSpinBox* timeGridField() const { return m_timeGridMs; }
    QCheckBox* audioBox() const { return m_audio; }
    QCheckBox* intensityBox() const { return m_intensity; }
    QCheckBox* labelsBox() const { return m_labels; }
    QDoubleSpinBox* widthField() const { return m_width; }
    QDoubleSpinBox* heightField() const { return m_height; }
    QRadioButton* inchesButton() const { return m_inches; }
    QRadioButton* cmButton() const { return m_cm; }
    QRadioButton* colorButton() const { return m_color; }
    QRadioButton* blackWhiteButton() const { return m_blackWhite; }

    void accept() override;

private:
    QRadioButton* m_cepstral;
    QRadioButton* m_autocorrelation;
    QSpinBox* m_window;
    QSpinBox* m_step;
    QSpinBox* m_deviation;
    QSpinBox* m_threshold;
    QSpinBox* m_low;
    QSpinBox* m_high;
    QSpinBox* m_displayLow;
    QSpinBox* m_displayHigh;
    QCheckBox* m_frequencyGrid;
    QSpinBox* m_frequencyGridHz;
    QCheckBox* m_timeGrid;
    QSpinBox* m_timeGridMs;
    QCheckBox* m_audio;
    QCheckBox* m_intensity;
    QCheckBox* m_labels;
    QDoubleSpinBox* m_width;
    QDoubleSpinBox* m_height;
    QRadioButton* m_inches;
    QRadioButton* m_cm;
    QRadioButton* m_color;
    QRadioButton* m_blackWhite;
};

// "Pitch...": on OK the settings come into force, go to the configuration
// file, and every open pitch window computes its track again.
void runPitchOptions(QWidget* parent);
// Registers "Pitch..." in the Options menus of the waveform view and of the pitch window.
void registerPitchOptionCommands();
