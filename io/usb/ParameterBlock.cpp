#include "ParameterBlock.h"

#include <algorithm>
#include <cmath>

#include "Multiplex.h"
#include "document/MessageService.h"
#include "document/UserException.h"
#include "res/StringTable.h"

namespace sonmetra::usb {
namespace {

constexpr double kUnitClockHz = 60000000.0;

void putDivider(ParameterBlock& block, std::size_t at, int count) {
    block[at] = static_cast<std::uint8_t>(count >> 2);
    block[at + 1] = static_cast<std::uint8_t>((count << 6) & 0xFF);
}

template <std::size_t N>
int stepIndex(const std::array<int, N>& steps, double value) {
    int index = 0;
    for (std::size_t i = 0; i < N; ++i)
        if (value >= steps[i]) index = static_cast<int>(i);
    return index;
}

}  // namespace

int DividerCount(double rateHz, int divisor) {
    if (!(rateHz > 0.0) || !std::isfinite(rateHz)) return 0;
    const double count = std::trunc(kUnitClockHz / (rateHz * divisor)) - 2.0;
    return static_cast<int>(std::clamp(count, 0.0, 1023.0));
}

double RateFromDividerCount(int count, int divisor) { return kUnitClockHz / (divisor * (count + 2.0)); }

int StoredDividerCount(const std::uint8_t* block, std::size_t at) { return (block[at] << 2) | (block[at + 1] >> 6); }

int GainStep(double gain) { return stepIndex(kGainSteps, gain); }
int BandwidthStep(double bandwidthHz) { return stepIndex(kBandwidthStepsHz, bandwidthHz); }

ParameterBlock BuildParameterBlock(const AcquisitionSettings& settings) {
    ParameterBlock block{};
    if (const auto row = MultiplexRowFor(settings.unitChannels, settings.multiplexType)) {
        for (std::size_t r = 0; r < kSlotsPerRow; ++r) std::copy(row->begin(), row->end(), block.begin() + r * 16);
    }
    putDivider(block, kBlockAudioDivider, DividerCount(settings.audioRateHz, kAudioDivisor));
    for (int input = 1; input <= kDividedInputs; ++input) {
        const std::size_t at = kBlockInputDividers + 2 * static_cast<std::size_t>(input - 1);
        putDivider(block, at, DividerCount(settings.inputs[static_cast<std::size_t>(input)].rateHz, kDataDivisor));
    }

    if (settings.inputLine == "Mic") {
        block[kBlockInputSelector] = 0;
        block[kBlockInputSelector + 1] = 0;
    } else if (settings.inputLine == "Line") {
        block[kBlockInputSelector] = 0;
        block[kBlockInputSelector + 1] = 1;
    } else {
        beep();
        showMessage(IDS_WRONG_INPUT_SOURCE);
        throw UserException();
    }
    block[kBlockBits] = 16;

    for (int input = 1; input <= kFrontEndInputs; ++input) {
        const InputFrontEnd& fe = settings.inputs[static_cast<std::size_t>(input)];
        block[kBlockFrontEnd + static_cast<std::size_t>(input - 1)] =
            static_cast<std::uint8_t>((BandwidthStep(fe.bandwidthHz) << 4) | GainStep(fe.gain));
    }
    return block;
}

}  // namespace sonmetra::usb
