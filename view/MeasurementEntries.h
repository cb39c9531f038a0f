// The waveform view's measurement entries for the log: one row each, with
// its kind and, for every present channel in order, its values, each named
// by a heading with the channel's name and unit so that a row reads on its
// own in the log and in a spreadsheet.
//
//   "Marker Entry: time"                    the time of the sample at the cursor (ms) and
//                                           the calibrated value there
//   "Duration Entry: start, end, duration"  selection start, end and length (ms)
//   "Data Selection Entry: time"            the selection's start time (ms) and the mean,
//                                           minimum and maximum of the calibrated values
//                                           over the selection
//
// Calibrated values are read relative to the channel's reference, as the
// status window shows them.
#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace sonmetra {
class CChannel;
class CKestruneDoc;
}  // namespace sonmetra

// One row for the log. `headings` names the values one by one (empty, or
// shorter than `values`: the log shows "Value N" for the rest); analysis
// windows fill it the same way.
struct MeasurementRow {
    QString kind;
    std::vector<double> values;
    QStringList headings;
};

MeasurementRow markerEntry(const sonmetra::CKestruneDoc& doc);
MeasurementRow durationEntry(const sonmetra::CKestruneDoc& doc);
MeasurementRow dataSelectionEntry(const sonmetra::CKestruneDoc& doc);

// Calibrated values of a channel over its selection (at least the sample at
// its start).
struct SelectionStatistics {
    double mean = 0.0;
    double minimum = 0.0;
    double maximum = 0.0;
};
SelectionStatistics selectionStatistics(const sonmetra::CChannel& channel);

// "Airflow (ml/s)": a heading naming a channel's quantity; `what` goes
// between name and unit ("Airflow mean (ml/s)").
QString channelHeading(const sonmetra::CChannel& channel, int index, const QString& what, const QString& unit);

// Appends the row to the open log; false when no log window is open.
bool sendToLog(const MeasurementRow& row);
