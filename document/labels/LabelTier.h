// Labels as other annotation tools keep them: named tiers of intervals
// (a text over a stretch of time) or points (a text at one time), in
// seconds. This is the common ground of the TextGrid and tab-separated
// label files; LabelTransfer.h turns tiers into channel labels and back.
#pragma once

#include <string>
#include <vector>

namespace sonmetra {

enum class TierKind { Interval, Point };

// One interval (startS < endS, or equal for a degenerate one) or one point
// (startS == endS). Text is UTF-8.
struct TierItem {
    double startS = 0.0;
    double endS = 0.0;
    std::string text;
};

struct LabelTier {
    std::string name;
    TierKind kind = TierKind::Interval;
    double xminS = 0.0;
    double xmaxS = 0.0;
    std::vector<TierItem> items;  // in order of time
};

// The tiers read from, or to be written to, one label file.
struct LabelFile {
    double xminS = 0.0;
    double xmaxS = 0.0;
    std::vector<LabelTier> tiers;
};

}  // namespace sonmetra
