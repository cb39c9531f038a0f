#include "SpectrumLogEntries.h"

#include <algorithm>
#include <cmath>

MeasurementRow spectrumMarkerRow(const SpectrumResult& result, int bin, bool withLpc) {
    const double hz = bin * result.binHz();
    const double fft = result.levelDb.at(static_cast<std::size_t>(bin));
    if (withLpc)
        return {QStringLiteral("FFT/LPC Marker Entry: freq., FFT_dB, LPC_dB"), {hz, fft, result.envelopeAt(hz)}};
    return {QStringLiteral("FFT/LPC Marker Entry: freq., FFT_dB"), {hz, fft}};
}

MeasurementRow spectrumFormantRow(const SpectrumResult& result) {
    MeasurementRow row{QStringLiteral("FFT/LPC Formants & BW Entry: F1, F2, F3, F4, F5, BW1, BW2, BW3, BW4, BW5"), {}};
    row.values.assign(result.formantHz.begin(), result.formantHz.end());
    row.values.insert(row.values.end(), result.bandwidthHz.begin(), result.bandwidthHz.end());
    return row;
}

std::vector<MeasurementRow> spectrumFrameRows(const SpectrumResult& result, int stepHz, double rangeHz, bool withLpc) {
    std::vector<MeasurementRow> rows;
    if (result.empty() || stepHz < 1) return rows;
    const QString kind = withLpc ? QStringLiteral("FFT/LPC Frame Entry: freq., FFT_dB, LPC_dB")
                                 : QStringLiteral("FFT/LPC Frame Entry: freq., FFT_dB");
    const long steps = static_cast<long>(std::floor(rangeHz / stepHz + 1e-9));
    rows.reserve(static_cast<std::size_t>(steps) + 1);
    for (long i = 0; i <= steps; ++i) {
        const double hz = static_cast<double>(i) * stepHz;
        MeasurementRow row{kind, {hz, result.levelAt(hz)}};
        if (withLpc) row.values.push_back(result.envelopeAt(hz));
        rows.push_back(std::move(row));
    }
    return rows;
}

QString spectrumTable(const SpectrumResult& result, bool withLpc) {
    QString text =
        withLpc ? QStringLiteral("Frequency (Hz)\tFFT (dB)\tLPC (dB)\n") : QStringLiteral("Frequency (Hz)\tFFT (dB)\n");
    for (int k = 0; k < result.bins(); ++k) {
        const double hz = k * result.binHz();
        text += QString::asprintf("%.2f\t%.2f", hz, result.levelDb[static_cast<std::size_t>(k)]);
        if (withLpc) text += QString::asprintf("\t%.2f", result.envelopeAt(hz));
        text += QLatin1Char('\n');
    }
    return text;
}
