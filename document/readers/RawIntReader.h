// Raw integer files ("int_binary file"): after a header of the size given in
// the "Generic File Selection" dialog, the rest of the file is two's
// complement samples of 8 or 16 bits in the chosen byte order. A trailing
// odd byte of a 16-bit file is ignored. A file of plain text (numbers or
// words) is declined so that the ASCII reader reads it or says why not.
#pragma once

#include "document/FileReader.h"

namespace sonmetra {

ReadStatus readRawInt(BinaryFile& file, CKestruneDoc& doc, ReadContext& context);

}  // namespace sonmetra
