#include "ChannelRate.h"

#include <cmath>
#include <cstdio>

namespace sonmetra {

std::string channelRateProblem(const CChannel& channel, int index) {
    const double rate = channel.m_rateHz;
    if (rateInRange(rate)) return {};
    std::string what;
    if (std::isnan(rate)) {
        what = "is not a number";
    } else if (std::isinf(rate)) {
        what = rate > 0 ? "is infinite" : "is minus infinity";
    } else {
        char text[64];
        std::snprintf(text, sizeof text, "is %.10g Hz", rate);
        what = text;
        if (rate <= 0.0) what += rate == 0.0 ? " (no rate at all)" : " (a negative rate)";
    }
    std::string name = "channel " + std::to_string(index + 1);
    if (!channel.m_name.empty()) name += " (" + channel.m_name + ")";
    char range[96];
    std::snprintf(range, sizeof range, "A channel's sample rate must be a number from %.10g Hz to %.10g Hz.",
                  kMinRateHz, kMaxRateHz);
    return "The sample rate of " + name + " " + what + ". " + range;
}

}  // namespace sonmetra
