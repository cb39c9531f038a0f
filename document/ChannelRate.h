// The message that says why a channel's sample rate cannot be used, for
// every command that would derive settings from it or analyse it.
#pragma once

#include <string>

#include "analysis/SampleRateRange.h"
#include "document/CChannel.h"

namespace sonmetra {

// Empty when the rate of channel `index` (0-based) is within the range of
// analysis/SampleRateRange.h; otherwise what is wrong with it, for example
// "The sample rate of channel 1 (Audio) is 0 Hz. A channel's sample rate
// must be a number from 1 Hz to 1000000 Hz."
std::string channelRateProblem(const CChannel& channel, int index);

}  // namespace sonmetra
