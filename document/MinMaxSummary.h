// Min/max summaries of one channel's samples, for drawing long signals.
//
// Three levels of blocks (256, 4096 and 65536 samples) hold the smallest and
// largest sample of each block. A query for the extremes of any sample range
// takes whole blocks from the coarsest level that fits and scans raw samples
// only at the two ragged ends, so the cost of one pixel column is bounded
// (a few hundred reads) whether the column spans a hundred samples or a
// million. The summary does not own the samples: every query is given the
// same block that the summary was built from.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace sonmetra {

struct SampleRange {
    std::int16_t min = 0;
    std::int16_t max = 0;
};

class MinMaxSummary {
public:
    static constexpr int kLevels = 3;
    static constexpr std::size_t kBaseBlock = 256;  // samples per block of level 0
    static constexpr std::size_t kFanOut = 16;      // blocks of level k per block of level k+1

    // Samples per block of a level: 256, 4096, 65536.
    static constexpr std::size_t blockSize(int level) {
        std::size_t size = kBaseBlock;
        for (int k = 0; k < level; ++k) size *= kFanOut;
        return size;
    }

    // Builds every level from the samples.
    void rebuild(const std::int16_t* samples, std::size_t count);
    // Rebuilds only the blocks from `firstChanged` to the end (an append, an
    // insertion or a cut changes everything after its position and nothing before).
    void updateFrom(const std::int16_t* samples, std::size_t count, std::size_t firstChanged);
    void clear();

    std::size_t sampleCount() const { return m_count; }
    // Extremes of samples [first, last) (clipped to the signal). False when
    // the clipped range is empty.
    bool range(const std::int16_t* samples, std::size_t first, std::size_t last, SampleRange& out) const;

    // Block extremes of one level (for tests and diagnostics).
    const std::vector<SampleRange>& level(int k) const { return m_levels[static_cast<std::size_t>(k)]; }

private:
    void rangeAt(int level, const std::int16_t* samples, std::size_t first, std::size_t last, std::int16_t& lo,
                 std::int16_t& hi) const;

    std::size_t m_count = 0;
    std::array<std::vector<SampleRange>, kLevels> m_levels;
};

}  // namespace sonmetra
