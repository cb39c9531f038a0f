// CSL ".NSP" files: a little-endian "FORM" "DS16" file whose "HEDR" or
// "HDR8" chunk holds the sample rate (int32 at offset 20 of the chunk) and
// whose first "SDA_" or "SD_B" chunk holds the 16-bit samples.
#pragma once

#include "document/FileReader.h"

namespace sonmetra {

ReadStatus readNsp(BinaryFile& file, CKestruneDoc& doc, ReadContext& context);

}  // namespace sonmetra
