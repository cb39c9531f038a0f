#include "LabelTrackFormat.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "TextGridFormat.h"

namespace sonmetra {
namespace {

// Intervals may touch with this much overlap, the rounding of a written time.
constexpr double kTouchS = 1e-6;

std::optional<double> seconds(std::string_view field) {
    while (!field.empty() && field.front() == ' ') field.remove_prefix(1);
    while (!field.empty() && field.back() == ' ') field.remove_suffix(1);
    if (!field.empty() && field.front() == '+') field.remove_prefix(1);
    double v = 0.0;
    const auto [end, ec] = std::from_chars(field.data(), field.data() + field.size(), v);
    if (field.empty() || ec != std::errc() || end != field.data() + field.size() || !std::isfinite(v))
        return std::nullopt;
    return v;
}

}  // namespace

std::optional<LabelTier> parseLabelTrack(std::string_view text, const std::string& name, std::string& error) {
    LabelTier tier;
    tier.name = name;
    std::vector<int> lines;  // the line of each item, for messages
    int lineNumber = 0;
    std::size_t pos = 0;
    while (pos < text.size()) {
        std::size_t end = text.find('\n', pos);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(pos, end - pos);
        pos = end + 1;
        ++lineNumber;
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (line.find_first_not_of(" \t") == std::string_view::npos || line.front() == '\\') continue;
        const std::string where = "line " + std::to_string(lineNumber);
        const std::size_t tab1 = line.find('\t');
        if (tab1 == std::string_view::npos) {
            error = where + " is not \"start<TAB>end<TAB>text\": it holds no tab";
            return std::nullopt;
        }
        const std::size_t tab2 = line.find('\t', tab1 + 1);
        const auto start = seconds(line.substr(0, tab1));
        const auto stop =
            seconds(line.substr(tab1 + 1, tab2 == std::string_view::npos ? std::string_view::npos : tab2 - tab1 - 1));
        if (!start || !stop) {
            error = where + " does not start with two times in seconds";
            return std::nullopt;
        }
        if (*stop < *start) {
            error = where + " ends (" + praatNumber(*stop) + " s) before it starts (" + praatNumber(*start) + " s)";
            return std::nullopt;
        }
        TierItem item;
        item.startS = *start;
        item.endS = *stop;
        if (tab2 != std::string_view::npos) item.text = std::string(line.substr(tab2 + 1));
        tier.items.push_back(std::move(item));
        lines.push_back(lineNumber);
    }

    std::vector<std::size_t> order(tier.items.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return tier.items[a].startS < tier.items[b].startS; });
    const bool points =
        std::all_of(tier.items.begin(), tier.items.end(), [](const TierItem& it) { return it.startS == it.endS; });
    tier.kind = points ? TierKind::Point : TierKind::Interval;
    std::vector<TierItem> sorted;
    sorted.reserve(order.size());
    for (std::size_t k = 0; k < order.size(); ++k) {
        const TierItem& it = tier.items[order[k]];
        if (!points && k > 0 && it.startS < sorted.back().endS - kTouchS) {
            error = "the label on line " + std::to_string(lines[order[k]]) + " overlaps the one on line " +
                    std::to_string(lines[order[k - 1]]) + ", and the labels of a channel cannot overlap";
            return std::nullopt;
        }
        sorted.push_back(it);
    }
    tier.items = std::move(sorted);
    tier.xminS = 0.0;
    tier.xmaxS = 0.0;
    for (const TierItem& it : tier.items) {
        tier.xminS = std::min(tier.xminS, it.startS);
        tier.xmaxS = std::max(tier.xmaxS, it.endS);
    }
    return tier;
}

std::string formatLabelTrack(const LabelTier& tier) {
    std::string out;
    for (const TierItem& it : tier.items) {
        out += praatNumber(it.startS);
        out += '\t';
        out += praatNumber(it.endS);
        out += '\t';
        out += it.text;
        out += '\n';
    }
    return out;
}

}  // namespace sonmetra
