#include "LabelsAcrossUndo.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace sonmetra {
namespace {

bool sameFields(const CLabel& a, const CLabel& b) {
    return a.secondCoordinate == b.secondCoordinate && a.justification == b.justification && a.flag == b.flag &&
           std::equal(std::begin(a.params), std::end(a.params), std::begin(b.params)) && a.red == b.red &&
           a.green == b.green && a.blue == b.blue && a.font == b.font && a.text == b.text;
}

// Times carried through a span and back differ from the stored ones by
// rounding only.
bool sameTime(double a, double b) { return std::abs(a - b) <= 1e-6 * std::max(1.0, std::abs(a)); }

// The labels of `from` that have no equal in `in`, each counted once
// (two equal labels in `from` need two in `in`).
std::vector<CLabel> missingFrom(const std::vector<CLabel>& from, const std::vector<CLabel>& in) {
    std::vector<bool> used(in.size(), false);
    std::vector<CLabel> missing;
    for (const CLabel& l : from) {
        bool found = false;
        for (std::size_t i = 0; i < in.size() && !found; ++i) {
            if (!used[i] && sameLabel(l, in[i])) used[i] = found = true;
        }
        if (!found) missing.push_back(l);
    }
    return missing;
}

}  // namespace

double timeBeforeEdit(double ms, const EditSpan& span, double msPerSample) {
    const double startMs = static_cast<double>(span.first) * msPerSample;
    const double insertedMs = static_cast<double>(span.inserted) * msPerSample;
    const double removedMs = static_cast<double>(span.removed) * msPerSample;
    if (ms < startMs) return ms;
    if (ms >= startMs + insertedMs) return ms - insertedMs + removedMs;
    return startMs;
}

bool sameLabel(const CLabel& a, const CLabel& b) { return a.timeMs == b.timeMs && sameFields(a, b); }

std::vector<CLabel> carryLabelWork(const std::vector<CLabel>& restored, const std::vector<CLabel>& afterEdit,
                                   const std::vector<CLabel>& now, const EditSpan& span, double msPerSample) {
    std::vector<CLabel> result = restored;
    for (CLabel gone : missingFrom(afterEdit, now)) {
        gone.timeMs = timeBeforeEdit(gone.timeMs, span, msPerSample);
        const auto it = std::find_if(result.begin(), result.end(), [&gone](const CLabel& l) {
            return sameTime(l.timeMs, gone.timeMs) && sameFields(l, gone);
        });
        if (it != result.end()) result.erase(it);
    }
    for (CLabel added : missingFrom(now, afterEdit)) {
        added.timeMs = timeBeforeEdit(added.timeMs, span, msPerSample);
        std::fill(std::begin(added.placement), std::end(added.placement), 0);
        result.push_back(added);
    }
    std::stable_sort(result.begin(), result.end(),
                     [](const CLabel& a, const CLabel& b) { return a.timeMs < b.timeMs; });
    return result;
}

}  // namespace sonmetra
