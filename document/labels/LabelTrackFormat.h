// Label tracks as tab-separated text, the form audio editors export and
// import: one label a line, "start<TAB>end<TAB>text", times in seconds,
// start == end for a label at one time. Lines that start with a backslash
// (the frequency range some editors add under a label) and empty lines
// are skipped.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "LabelTier.h"

namespace sonmetra {

// Reads the decoded text as one tier named `name`: a point tier when every
// label has start == end, else an interval tier (a label with start == end
// among intervals is a zero-length interval). Labels are taken in order of
// start time; intervals must not overlap. On failure returns nullopt with
// what is wrong in `error` ("line 3 holds no end time").
std::optional<LabelTier> parseLabelTrack(std::string_view text, const std::string& name, std::string& error);

// One line per item, in the same form; the caller has made sure that no
// text holds a tab or a line break.
std::string formatLabelTrack(const LabelTier& tier);

}  // namespace sonmetra
