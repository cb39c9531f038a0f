// The waveform view's measurement entries for the log: one row each, with
// its kind and, for every present channel in order, its values in ms.
//
//   "Marker Entry: time"                    the cursor time
//   "Duration Entry: start, end, duration"  selection start, end and length
//   "Data Selection Entry: time"            the selection's start time
#pragma once

#include <QString>
#include <vector>

namespace sonmetra {
class CKestruneDoc;
}

struct MeasurementRow {
    QString kind;
    std::vector<double> values;
};

MeasurementRow markerEntry(const sonmetra::CKestruneDoc& doc);
MeasurementRow durationEntry(const sonmetra::CKestruneDoc& doc);
MeasurementRow dataSelectionEntry(const sonmetra::CKestruneDoc& doc);

// Appends the row to the open log; false when no log window is open.
bool sendToLog(const MeasurementRow& row);
