#include "PitchEntries.h"

#include <algorithm>

#include "PitchComputation.h"

namespace {

MeasurementRow frameRow(const PitchResults& r, int frame, const char* kind) {
    const auto i = static_cast<std::size_t>(frame);
    const double level = i < r.levelDb.size() ? r.levelDb[i] : 0.0;
    return MeasurementRow{kind, {r.frameMs(frame), r.track.track[i], level}, {}};
}

}  // namespace

std::vector<MeasurementRow> pitchMarkerEntry(const PitchResults& results, double cursorMs) {
    const int frame = results.frameAt(cursorMs);
    if (frame < 0) return {};
    return {frameRow(results, frame, kPitchMarkerEntry)};
}

std::vector<MeasurementRow> pitchSelectionEntries(const PitchResults& results, double fromMs, double toMs) {
    if (toMs < fromMs) std::swap(fromMs, toMs);
    std::vector<MeasurementRow> rows;
    const int first = results.frameAt(fromMs);
    if (first < 0) return rows;
    rows.push_back(frameRow(results, first, kPitchSelectionEntry));
    for (int i = first + 1; i < results.frameCount() && results.frameMs(i) < toMs; ++i)
        rows.push_back(frameRow(results, i, kPitchSelectionEntry));
    return rows;
}

std::vector<MeasurementRow> pitchAllEntries(const PitchResults& results) {
    std::vector<MeasurementRow> rows;
    rows.reserve(static_cast<std::size_t>(results.frameCount()));
    for (int i = 0; i < results.frameCount(); ++i) rows.push_back(frameRow(results, i, kPitchAllEntry));
    return rows;
}
