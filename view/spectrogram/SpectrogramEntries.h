// The spectrogram window's rows for the measurement log and its formant
// table file.
//
//   "Spec. Marker Entry: time, frequency"          cursor time (ms), frequency cursor (Hz)
//   "Spec. Duration Entry: start, end, duration"   the selection (ms)
//   "Spec. Formants Marker Entry: time, F1, ... F5"   the column at the cursor:
//        its start time (ms) and its five formants (Hz, 0 = none)
//   "Spec. Formants Duration Entry: time, F1, ... F5" one such row for every
//        column that starts inside the selection
// The formant table ("Export Formants...") has a header line and one line
// per column: time (ms) and F1 … F5 (Hz, 0 = none), separated by tabs.
#pragma once

#include <QString>
#include <vector>

#include "view/MeasurementEntries.h"

struct SpectrogramData;

MeasurementRow spectrogramMarkerEntry(double timeMs, double frequencyHz);
MeasurementRow spectrogramDurationEntry(double startMs, double endMs);
MeasurementRow spectrogramFormantsMarkerEntry(const SpectrogramData& data, double timeMs);
std::vector<MeasurementRow> spectrogramFormantsSelectionEntries(const SpectrogramData& data, double startMs,
                                                                double endMs);

QString formantTableText(const SpectrogramData& data);
// Writes the table through a temporary file renamed over `path` once
// complete; false after a message when it cannot.
bool writeFormantTable(const SpectrogramData& data, const QString& path);
