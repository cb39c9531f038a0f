// The "Log..." option dialog: the frequency step of the spectrum window's
// "Enter All FFT/LPC Frame", 1 to 5000 Hz.
#pragma once

#include <QDialog>

class QSpinBox;

class LogOptionDialog : public QDialog {
    Q_OBJECT
public:
    explicit LogOptionDialog(int frameStepHz, QWidget* parent = nullptr);
    int frameStepHz() const;
    QSpinBox* frameStepField() const { return m_step; }

private:
    QSpinBox* m_step;
};

// "Log...": on OK the step goes into the configuration and its file.
void runLogOptions(QWidget* parent);
