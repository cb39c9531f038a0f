#include "MinMaxSummary.h"

#include <algorithm>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace sonmetra {
namespace {

#if defined(__SSE2__)
// Horizontal reductions of eight 16-bit lanes.
std::int16_t lanesMin(__m128i v) {
    v = _mm_min_epi16(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2)));
    v = _mm_min_epi16(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(2, 3, 0, 1)));
    v = _mm_min_epi16(v, _mm_shufflelo_epi16(v, _MM_SHUFFLE(2, 3, 0, 1)));
    return static_cast<std::int16_t>(_mm_extract_epi16(v, 0));
}
std::int16_t lanesMax(__m128i v) {
    v = _mm_max_epi16(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2)));
    v = _mm_max_epi16(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(2, 3, 0, 1)));
    v = _mm_max_epi16(v, _mm_shufflelo_epi16(v, _MM_SHUFFLE(2, 3, 0, 1)));
    return static_cast<std::int16_t>(_mm_extract_epi16(v, 0));
}
#endif

// The ragged ends of a pixel column are read sample by sample, hundreds per
// column; eight at a time they cost less than the rest of the drawing.
void scanRaw(const std::int16_t* p, std::size_t n, std::int16_t& lo, std::int16_t& hi) {
    std::size_t i = 0;
    int l = lo, h = hi;
#if defined(__SSE2__)
    if (n >= 16) {
        __m128i vlo = _mm_set1_epi16(lo), vhi = _mm_set1_epi16(hi);
        for (; i + 8 <= n; i += 8) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
            vlo = _mm_min_epi16(vlo, v);
            vhi = _mm_max_epi16(vhi, v);
        }
        l = lanesMin(vlo);
        h = lanesMax(vhi);
    }
#endif
    for (; i < n; ++i) {
        const int v = p[i];
        l = v < l ? v : l;
        h = v > h ? v : h;
    }
    lo = static_cast<std::int16_t>(l);
    hi = static_cast<std::int16_t>(h);
}

void scanBlocks(const SampleRange* p, std::size_t n, std::int16_t& lo, std::int16_t& hi) {
    std::size_t i = 0;
    int l = lo, h = hi;
#if defined(__SSE2__)
    static_assert(sizeof(SampleRange) == 4, "pairs of min and max, packed");
    if (n >= 8) {
        // Four (min, max) pairs per register: mins in the even lanes, maxes in the odd.
        __m128i vlo = _mm_set1_epi16(lo), vhi = _mm_set1_epi16(hi);
        for (; i + 4 <= n; i += 4) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
            vlo = _mm_min_epi16(vlo, v);
            vhi = _mm_max_epi16(vhi, v);
        }
        // Keep only the lanes that hold what each reduction wants.
        const __m128i evenMask = _mm_set1_epi32(0x0000FFFF);
        vlo = _mm_or_si128(_mm_and_si128(vlo, evenMask), _mm_andnot_si128(evenMask, _mm_set1_epi16(0x7FFF)));
        vhi = _mm_or_si128(_mm_andnot_si128(evenMask, vhi), _mm_and_si128(evenMask, _mm_set1_epi16(-32768)));
        l = lanesMin(vlo);
        h = lanesMax(vhi);
    }
#endif
    for (; i < n; ++i) {
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

bool MinMaxSummary::range(const std::int16_t* samples, std::size_t first, std::size_t last, SampleRange& out) const {
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
