// What the spectrum window sends to the measurement log and puts on the
// clipboard. Levels are in dB re one sample unit whatever the display format,
// so that entries of different frames and windows compare.
//
//   "FFT/LPC Marker Entry: freq., FFT_dB, LPC_dB"  the marker's bin (with LPC drawn)
//   "FFT/LPC Marker Entry: freq., FFT_dB"          the same without LPC
//   "FFT/LPC Formants & BW Entry: F1, F2, F3, F4, F5, BW1, BW2, BW3, BW4, BW5"
//   "FFT/LPC Frame Entry: freq., FFT_dB, LPC_dB"   one row per frequency step
//   "FFT/LPC Frame Entry: freq., FFT_dB"           from 0 Hz to the frequency range
#pragma once

#include <QString>
#include <vector>

#include "SpectrumAnalysis.h"
#include "view/MeasurementEntries.h"

MeasurementRow spectrumMarkerRow(const SpectrumResult& result, int bin, bool withLpc);
MeasurementRow spectrumFormantRow(const SpectrumResult& result);
// Rows at 0, step, 2·step … up to rangeHz; the spectrum between bins as drawn.
std::vector<MeasurementRow> spectrumFrameRows(const SpectrumResult& result, int stepHz, double rangeHz, bool withLpc);
// "Copy": a heading line, then one line per bin up to half the rate, TAB-separated.
QString spectrumTable(const SpectrumResult& result, bool withLpc);
