// Export Channel As: one channel, always whole, as a 44-byte-header WAV file.
#pragma once

#include <string>

#include "document/CChannel.h"

namespace sonmetra {

// Writes every sample of the channel, whatever its selection, to a
// temporary file beside path that replaces path only once it is complete.
// On failure beeps, shows "Error in save operation." and returns false; the
// file at path, if any, is left as it was.
bool exportChannelWav(const CChannel& channel, const std::string& path);

}  // namespace sonmetra
