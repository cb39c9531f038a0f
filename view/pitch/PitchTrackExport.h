// "Export Track...": the pitch track as tab-separated text, a header line
// and one line per frame, `frame, time_ms, f0_hz` (0 = no pitch), numbers in
// the shortest form that reads back to the same double. These are the
// columns and the digits of `sonmetra-cli pitch`, so that a track goes
// straight into R or Python and can be compared with a batch run.
#pragma once

#include <QString>
#include <string>

struct PitchResults;

std::string pitchTrackText(const PitchResults& results);
// Writes through a temporary file renamed over `path` when complete; false
// after a message when the file cannot be written.
bool exportPitchTrack(const PitchResults& results, const QString& path);
