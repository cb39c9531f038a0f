// Writes one channel as a RIFF/WAVE file of exactly two chunks: a 16-byte
// "fmt " chunk (PCM, one channel, the channel's rate cut to a whole number,
// its bits per sample) and a "data" chunk of 16-bit samples: a 44-byte
// header, then the samples.
#pragma once

#include <cstdio>

#include "CChannel.h"

namespace sonmetra {

// Whole channel, or from the selection's start sample for (end − start)
// samples. False when a write fails.
bool writeWavChannel(std::FILE* file, const CChannel& channel, bool selectionOnly);

}  // namespace sonmetra
