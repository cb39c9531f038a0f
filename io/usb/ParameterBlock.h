// The 320-byte acquisition parameter block sent with request 0xB1.
//
//   0..255   the multiplex table: its row (Multiplex.h) repeated 16 times,
//            zero when the unit has no row for the type
//   256..257 divider count of the audio rate
//   258..259 input selector of the audio front end: 0,0 "Mic"; 0,1 "Line"
//   260      bits per sample, 16
//   264..295 divider counts of data inputs 1..16, two bytes each
//   296..307 front-end codes of data inputs 1..12: high nibble the
//            bandwidth step, low nibble the gain step (tables below)
//   other    zero
//
// A divider count is the unit's 10-bit clock divider for a rate:
// trunc(60,000,000 / (rate x 512)) - 2 for audio and the same with 800 for
// data inputs, clamped to 0..1023 (0 also for a row without a rate), stored
// as count >> 2, then (count << 6) & 0xFF.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "UsbConstants.h"

namespace sonmetra::usb {

using ParameterBlock = std::array<std::uint8_t, kParameterBlockBytes>;

inline constexpr std::size_t kBlockAudioDivider = 256;
inline constexpr std::size_t kBlockInputSelector = 258;
inline constexpr std::size_t kBlockBits = 260;
inline constexpr std::size_t kBlockInputDividers = 264;
inline constexpr std::size_t kBlockFrontEnd = 296;
inline constexpr int kDividedInputs = 16;
inline constexpr int kFrontEndInputs = 12;
inline constexpr int kAudioDivisor = 512;
inline constexpr int kDataDivisor = 800;

// Gain and bandwidth steps of a data input's front end; a setting takes the
// largest step not above it (the first step when it is below them all).
inline constexpr std::array<int, 9> kGainSteps = {1, 2, 5, 10, 20, 50, 100, 200, 350};
inline constexpr std::array<int, 8> kBandwidthStepsHz = {125, 250, 500, 1000, 2000, 4000, 5500, 8000};

struct InputFrontEnd {
    double rateHz = 0.0;
    double bandwidthHz = 0.0;
    double gain = 1.0;
};

struct AcquisitionSettings {
    int unitChannels = 9;                    // as identified: 5, 9, 13, 16 (or -1)
    int multiplexType = 2;                   // 1, 2, 3
    std::string inputLine = "Mic";           // the audio front end's input: "Mic" or "Line"
    double audioRateHz = 11000.0;            // input 0
    std::array<InputFrontEnd, 17> inputs{};  // index = input; [0] is not used for the dividers
};

// Builds the block. A 9-channel unit with a type other than 1 or 2 reports
// "Unknown multiplex type.", an input line other than "Mic" or "Line"
// "Wrong input source..."; both beep and throw UserException.
ParameterBlock BuildParameterBlock(const AcquisitionSettings& settings);

int DividerCount(double rateHz, int divisor);
// The rate a divider count gives: 60,000,000 / (divisor x (count + 2)).
double RateFromDividerCount(int count, int divisor);
// The count stored at `at` in a block.
int StoredDividerCount(const std::uint8_t* block, std::size_t at);
int GainStep(double gain);
int BandwidthStep(double bandwidthHz);

}  // namespace sonmetra::usb
