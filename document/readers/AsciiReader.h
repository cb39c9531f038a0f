// Plain-text sample files ("ascii file"): numbers separated by white space
// (one per line or several on a line), each one sample, at the rate of the
// "Generic File Selection" dialog. A number is an optional sign, digits with
// an optional decimal point (".5" and "5." too) and an optional exponent
// ("1e3", "2.5E-1"); it is rounded to the nearest whole value, and values
// beyond the 16-bit range are clipped and counted.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "document/FileReader.h"

namespace sonmetra {

ReadStatus readAscii(BinaryFile& file, CKestruneDoc& doc, ReadContext& context);

// The value of one white-space-free token, or nothing when it is not a
// number in the syntax above.
std::optional<double> parseAsciiNumber(std::string_view token);

// True when the whole file is text: printable ASCII, white space and UTF-8
// characters, with no control byte, no NUL and no byte outside a valid
// UTF-8 sequence. The raw integer reader leaves such a file to the ASCII
// reader, whose message then says why it is no sample file. (Recorded
// integers nearly always hold bytes such as 0x00, 0xFF or 0x80.)
bool isPlainText(BinaryFile& file);

}  // namespace sonmetra
