#include "MinMaxSummary.h"

#include <algorithm>
#include <limits>

namespace sonmetra {
namespace {

void scanRaw(const std::int16_t* p, std::size_t n, std::int16_t& lo, std::int16_t& hi) {
    // Plain loop over ints: the compiler turns it into vector min/max.
    int l = lo, h = hi;
    for (std::size_t i = 0; i < n; ++i) {
        const int v = p[i];
        l = v < l ? v : l;
        h = v > h ? v : h;
    }
    lo = static_cast<std::int16_t>(l);
    hi = static_cast<std::int16_t>(h);
}

void scanBlocks(const SampleRange* p, std::size_t n, std::int16_t& lo, std::int16_t& hi) {
    int l = lo, h = hi;
    for (std::size_t i = 0; i < n; ++i) {
        l = p[i].min < l ? p[i].min : l;
        h = p[i].max > h ? p[i].max : h;
    }
    lo = static_cast<std::int16_t>(l);
    hi = static_cast<std::int16_t>(h);
}

constexpr std::int16_t kEmptyLo = std::numeric_limits<std::int16_t>::max();
constexpr std::int16_t kEmptyHi = std::numeric_limits<std::int16_t>::min();

}  // namespace

void MinMaxSummary::clear() {
    m_count = 0;
    for (auto& level : m_levels) level.clear();
}

void MinMaxSummary::rebuild(const std::int16_t* samples, std::size_t count) {
    m_count = 0;
    for (auto& level : m_levels) level.clear();
    updateFrom(samples, count, 0);
}

void MinMaxSummary::updateFrom(const std::int16_t* samples, std::size_t count, std::size_t firstChanged) {
    m_count = count;
    firstChanged = std::min(firstChanged, count);
    for (int k = 0; k < kLevels; ++k) {
        const std::size_t block = blockSize(k);
        auto& level = m_levels[static_cast<std::size_t>(k)];
        const std::size_t blocks = (count + block - 1) / block;
        const std::size_t firstBlock = std::min(firstChanged / block, level.size());
        level.resize(blocks);
        for (std::size_t b = firstBlock; b < blocks; ++b) {
            std::int16_t lo = kEmptyLo, hi = kEmptyHi;
            if (k == 0) {
                const std::size_t begin = b * block;
                scanRaw(samples + begin, std::min(block, count - begin), lo, hi);
            } else {
                // A block of this level is kFanOut blocks of the level below.
                const auto& below = m_levels[static_cast<std::size_t>(k - 1)];
                const std::size_t begin = b * kFanOut;
                scanBlocks(below.data() + begin, std::min(kFanOut, below.size() - begin), lo, hi);
            }
            level[b] = {lo, hi};
        }
    }
}

bool MinMaxSummary::range(const std::int16_t* samples, std::size_t first, std::size_t last,
                          SampleRange& out) const {
    last = std::min(last, m_count);
    if (first >= last) return false;
    std::int16_t lo = kEmptyLo, hi = kEmptyHi;
    rangeAt(kLevels - 1, samples, first, last, lo, hi);
    out = {lo, hi};
    return true;
}

// Whole blocks of `level` inside [first, last) are read from the level; the
// ragged ends go one level down (raw samples below level 0).
void MinMaxSummary::rangeAt(int level, const std::int16_t* samples, std::size_t first, std::size_t last,
                            std::int16_t& lo, std::int16_t& hi) const {
    if (first >= last) return;
    if (level < 0) {
        scanRaw(samples + first, last - first, lo, hi);
        return;
    }
    const std::size_t block = blockSize(level);
    const std::size_t firstFull = (first + block - 1) / block;
    const std::size_t lastFull = last / block;  // one past the last whole block
    if (firstFull >= lastFull) {
        rangeAt(level - 1, samples, first, last, lo, hi);
        return;
    }
    rangeAt(level - 1, samples, first, firstFull * block, lo, hi);
    const auto& blocks = m_levels[static_cast<std::size_t>(level)];
    scanBlocks(blocks.data() + firstFull, lastFull - firstFull, lo, hi);
    rangeAt(level - 1, samples, lastFull * block, last, lo, hi);
}

}  // namespace sonmetra
