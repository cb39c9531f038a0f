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

// True when the whole file is made only of digits, signs, decimal points,
// exponent letters and white space, with at least one digit: a file that the
// raw integer reader leaves to the ASCII reader.
bool isNumberText(BinaryFile& file);

}  // namespace sonmetra
