// The pitch window's rows for the measurement log. Each row is one frame of
// the track: its time in ms (the frame's start, as the track's export and
// sonmetra-cli give it), its F0 in Hz (0 when the frame has no pitch) and
// its intensity in dB (10·log10 of the frame's mean power less the
// channel's reference level; 0 when silent).
//
//   "Pitch Marker Entry: time, pitch, intensity"     the frame at the cursor
//   "Pitch Selection Entry: time, pitch, intensity"  every frame that starts
//                                                     inside the selection (at
//                                                     least the one at its start)
//   "Pitch All Entry: time, pitch, intensity"        every frame of the track
#pragma once

#include <vector>

#include "view/MeasurementEntries.h"

struct PitchResults;

inline constexpr char kPitchMarkerEntry[] = "Pitch Marker Entry: time, pitch, intensity";
inline constexpr char kPitchSelectionEntry[] = "Pitch Selection Entry: time, pitch, intensity";
inline constexpr char kPitchAllEntry[] = "Pitch All Entry: time, pitch, intensity";

// None when the cursor lies outside the track.
std::vector<MeasurementRow> pitchMarkerEntry(const PitchResults& results, double cursorMs);
std::vector<MeasurementRow> pitchSelectionEntries(const PitchResults& results, double fromMs, double toMs);
std::vector<MeasurementRow> pitchAllEntries(const PitchResults& results);
