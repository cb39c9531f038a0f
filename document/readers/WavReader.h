// RIFF "WAVE" files of 8- or 16-bit PCM (format tag 1) or 8-bit mu-law
// (format tag 7). Every other RIFF layout (float, 24-bit, extensible, ...)
// is declined and left to the readers that follow.
#pragma once

#include "document/FileReader.h"

namespace sonmetra {

ReadStatus readWav(BinaryFile& file, CKestruneDoc& doc, ReadContext& context);

}  // namespace sonmetra
