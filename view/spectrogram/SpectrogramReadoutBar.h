// The readout bar under the spectrogram: the analysis settings of the
// picture (rate, LPC order, bandwidth, window length, dynamic range,
// pre-emphasis) and the time, frequency and duration under the mouse or at
// the cursor and selection.
#pragma once

#include <QWidget>
#include <optional>

class QLabel;

class SpectrogramReadoutBar : public QWidget {
    Q_OBJECT
public:
    explicit SpectrogramReadoutBar(QWidget* parent = nullptr);

    struct Analysis {
        double rateHz = 0.0;
        int lpcOrder = 0;
        int windowPoints = 0;
        int dynamicRangeDb = 0;
        double preEmphasis = 0.0;
    };
    void setAnalysis(const Analysis& analysis);
    // An empty value clears the readout.
    void setTime(std::optional<double> ms);
    void setFrequency(std::optional<double> hz);
    void setDuration(std::optional<double> ms);

    // The texts as shown, caption and value (tests).
    QString timeText() const;
    QString frequencyText() const;
    QString durationText() const;
    QStringList texts() const;

private:
    QLabel* addItem(int row, int column);

    QLabel* m_rate;
    QLabel* m_lpc;
    QLabel* m_bandwidth;
    QLabel* m_window;
    QLabel* m_dynamic;
    QLabel* m_preEmphasis;
    QLabel* m_time;
    QLabel* m_frequency;
    QLabel* m_duration;
};
