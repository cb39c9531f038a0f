// The reader of last resort before the generic dialog: what libsndfile can
// open among the common sound file families (WAV/RF64/W64 in every
// encoding, AIFF/AIFC, AU, CAF, FLAC, Ogg, NIST, IRCAM, VOC, 8SVX).
// The chosen channel is converted to 16 bits: integers are rounded, floats
// scaled by 32767 and clipped; how many samples were clipped is reported.
#pragma once

#include <cstdint>

#include "document/FileReader.h"

namespace sonmetra {

ReadStatus readSndfile(BinaryFile& file, CKestruneDoc& doc, ReadContext& context);

// A sample that libsndfile delivers left-justified in 32 bits, rounded to 16
// bits (half away from zero would favour one sign; this rounds half up).
inline std::int16_t roundIntTo16(std::int32_t v) {
    const std::int64_t r = (static_cast<std::int64_t>(v) + 0x8000) >> 16;
    return static_cast<std::int16_t>(r > 32767 ? 32767 : r);
}

// A float sample (full scale ±1.0) scaled by 32767, rounded and clipped to
// ±32767. Sets clipped when the value did not fit (NaN counts, and reads 0).
std::int16_t scaleFloatTo16(double x, bool& clipped);

}  // namespace sonmetra
