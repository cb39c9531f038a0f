// What the waveform view tells the status window and the cursor/duration
// bar: per present channel the value at the cursor and the selection, and
// the cursor time with the displayed and selected durations.
//
// The view calls this interface and the status window in frame/ implements
// it; it stands in a header of its own so that the implementation depends on
// the interface alone, never on the view code that calls it. The instance in
// force is AppServices::instance().readouts.
#pragma once

#include <string>
#include <vector>

// Columns of a channel's row that the view fills.
enum ReadoutColumn : int {
    kColumnName = 0,
    kColumnUnits = 1,
    kColumnRate = 2,
    kColumnGain = 3,
    kColumnReference = 4,
    kColumnCursorValue = 5,      // (value at the cursor less the reference, its calibrated value)
    kColumnSelectionLength = 6,  // (selection length in ms, in samples)
    kColumnSelection = 7,        // (selection start ms, selection end ms)
    kReadoutColumns = 8
};

struct ReadoutRow {
    std::string name;
    std::string units;
    double rateHz = 0.0;
    double gain = 0.0;
    double reference = 0.0;
    double cursorValue = 0.0;       // raw sample at the cursor less the reference
    double cursorCalibrated = 0.0;  // the same through the channel's calibration
    double selStartMs = 0.0, selEndMs = 0.0;
    double selLengthSamples = 0.0;
};

struct CursorTimes {
    double cursorMs = 0.0;
    double displayStartMs = 0.0, displayEndMs = 0.0;
    bool selectionPresent = false;
    double selStartMs = 0.0, selEndMs = 0.0;
    // What the bar shows after "Duration (ms): ": the selection while one
    // exists, else the displayed window.
    double durationMs() const { return selectionPresent ? selEndMs - selStartMs : displayEndMs - displayStartMs; }
};

class IViewReadouts {
public:
    virtual ~IViewReadouts() = default;
    // One row per present channel, in channel order (row = index among present channels).
    virtual void setRows(const std::vector<ReadoutRow>& rows) = 0;
    virtual void setCell(int row, int column, double first, double second) = 0;
    virtual void setCursorTime(const CursorTimes& times) = 0;
};
