// The readouts of a document: the rows, cells and cursor times that the
// waveform view sends to the status window (IViewReadouts.h).
#pragma once

#include "IViewReadouts.h"

namespace sonmetra {
class CKestruneDoc;
}

// The rows for a document: its present channels with the values at their cursor.
std::vector<ReadoutRow> computeReadouts(const sonmetra::CKestruneDoc& doc);
// The cursor times of the first present channel.
CursorTimes computeCursorTimes(const sonmetra::CKestruneDoc& doc, bool selectionPresent);
// Sends rows, cells and times to the readouts in force (if any).
void publishReadouts(IViewReadouts* target, const sonmetra::CKestruneDoc& doc, bool selectionPresent);
