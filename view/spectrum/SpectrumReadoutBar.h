// The bar above the spectrum: the settings of the computation, the power and
// frequency under the mouse, and the five formants and bandwidths.
#pragma once

#include <QString>
#include <QWidget>
#include <array>

class QLabel;

class SpectrumReadoutBar : public QWidget {
    Q_OBJECT
public:
    enum class Readout {
        SampleRate,
        LpcCoefficients,
        Bandwidth,
        WindowLength,
        AppliedWindow,
        AverageStep,
        Power,
        Frequency
    };

    explicit SpectrumReadoutBar(QWidget* parent = nullptr);

    // "Sample Rate (Hz) = " the rate cut to a whole number, "Bandwidth (Hz) =  "
    // cut(rate) / N in whole numbers, and the rest as given.
    void setAnalysis(double rateHz, int lpcOrder, int fftPoints, int appliedWindowMs, int averageStepMs);
    void setMouse(double powerDb, double frequencyHz);
    void clearMouse();
    void setFormants(const std::array<double, 5>& formantHz, const std::array<double, 5>& bandwidthHz);

    QString text(Readout readout) const;
    QString formantText() const { return m_formants; }

    // "Formants\t=" and "\t%7.1f" per formant, "\nBandwidths\t=" and the same per bandwidth.
    static QString formatFormants(const std::array<double, 5>& formantHz, const std::array<double, 5>& bandwidthHz);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::array<QLabel*, 8> m_labels{};
    QString m_formants;
    int m_tabPx = 80;
    int m_formantHeightPx = 30;
};
