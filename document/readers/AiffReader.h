// AIFF and AIFC files: a big-endian "FORM" file of type "AIFF" or "AIFC".
// "COMM" gives channels, frames, sample size and the 80-bit extended sample
// rate; "SSND" holds the samples. AIFC compression "NONE" (big-endian) and
// "sowt" (little-endian) are read; 8-bit samples are two's complement.
#pragma once

#include <cstdint>

#include "document/FileReader.h"

namespace sonmetra {

ReadStatus readAiff(BinaryFile& file, CKestruneDoc& doc, ReadContext& context);

// The sample rate in the COMM chunk of an AIFF or AIFC file, NaN when the
// file has none. The libsndfile reader checks it: libsndfile itself turns
// an unusable rate into one it can report.
double aiffSampleRate(BinaryFile& file);

// The value of an IEEE 754 80-bit extended number stored big-endian (sign and
// 15-bit exponent, then a 64-bit mantissa with an explicit integer bit),
// decoded without relying on the host's long double. Infinity and NaN come
// back as such.
double decodeExtended80(const std::uint8_t bytes[10]);

}  // namespace sonmetra
