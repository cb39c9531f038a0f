// What every foreign-file import shares: the check that a sample rate is one
// the program can work with, the choice of one channel of many, the memory
// message, the conversions of 8-bit and mu-law samples to 16 bits, and the
// import defaults of the one channel that an import fills.
#pragma once

#include <cstdint>
#include <string>

#include "analysis/SampleRateRange.h"
#include "document/CKestruneDoc.h"
#include "document/FileReader.h"
#include "document/SampleBlock.h"

namespace sonmetra {

// The rates an import accepts: those of analysis/SampleRateRange.h. Any
// other makes a file "not of this type" (or a generic-file error).
bool plausibleImportRate(double rateHz);

// Asks which of channelCount channels to take when there is more than one.
// Returns the 0-based channel, or -1 when the user cancelled (the reader then
// declines, so that the next reader is tried). An answer outside the range
// counts as Cancel.
int chooseImportChannel(ReadContext& context, int channelCount);

// Sizes the block to n samples; on failure shows "Could not allocate enough
// memory for this operation." and returns false (the reader abandons).
bool allocateImportSamples(SampleBlock& samples, std::size_t n);

// Fills channel 1 of a fresh document with the samples and the import
// defaults (audio, in use, number 1, 16 bits, units "bits", gain 1, bandwidth
// half the rate, reserved word B 100 and D 1, whole-channel display), sets
// the channel count to 1, the foreign-file mark and the holds-data flag,
// clears the modified flag and records the reader's name.
void applyImportDefaults(CKestruneDoc& doc, SampleBlock&& samples, double rateHz, const std::string& channelName,
                         const char* readerName);

// 8-bit unsigned PCM (WAV) to 16 bits: 128 is silence.
inline std::int16_t unsigned8ToSample(std::uint8_t b) { return static_cast<std::int16_t>((b - 128) * 256); }
// 8-bit two's complement (AIFF, raw) to 16 bits.
inline std::int16_t signed8ToSample(std::uint8_t b) {
    return static_cast<std::int16_t>(static_cast<std::int8_t>(b) * 256);
}
// G.711 mu-law to 16 bits (full scale ±32124).
std::int16_t muLawToSample(std::uint8_t code);

}  // namespace sonmetra
