// The min/max summaries against a plain scan, and the readouts the view sends.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "SyntheticDoc.h"
#include "document/MinMaxSummary.h"
#include "view/TimeBase.h"
#include "view/ViewReadouts.h"

using sonmetra::MinMaxSummary;
using sonmetra::SampleRange;

namespace {

SampleRange scan(const std::vector<std::int16_t>& v, std::size_t a, std::size_t b) {
    const auto [lo, hi] = std::minmax_element(v.begin() + static_cast<long>(a), v.begin() + static_cast<long>(b));
    return {*lo, *hi};
}

std::vector<std::int16_t> noise(std::size_t n, unsigned seed) {
    std::mt19937 gen(seed);
    std::uniform_int_distribution<int> d(-32768, 32767);
    std::vector<std::int16_t> v(n);
    for (auto& s : v) s = static_cast<std::int16_t>(d(gen));
    return v;
}

}  // namespace

TEST(MinMaxSummaryTest, AnyRangeMatchesAPlainScan) {
    // Not a multiple of any block size, so the last blocks are partial.
    auto v = noise(300000 + 77, 7);
    // Plant extremes where only the ragged ends can find them.
    v[65536 * 2 + 3] = 32767;
    v[65536 * 2 + 4] = -32768;
    MinMaxSummary s;
    s.rebuild(v.data(), v.size());
    std::mt19937 gen(11);
    std::uniform_int_distribution<std::size_t> pos(0, v.size());
    for (int k = 0; k < 500; ++k) {
        std::size_t a = pos(gen), b = pos(gen);
        if (a > b) std::swap(a, b);
        if (a == b) continue;
        SampleRange r;
        ASSERT_TRUE(s.range(v.data(), a, b, r));
        const SampleRange expect = scan(v, a, b);
        ASSERT_EQ(r.min, expect.min) << a << ".." << b;
        ASSERT_EQ(r.max, expect.max) << a << ".." << b;
    }
    SampleRange r;
    EXPECT_FALSE(s.range(v.data(), 10, 10, r));
    EXPECT_FALSE(s.range(v.data(), v.size(), v.size() + 100, r));
    // A range past the end is clipped to the signal.
    ASSERT_TRUE(s.range(v.data(), v.size() - 5, v.size() + 1000, r));
    EXPECT_EQ(r.max, scan(v, v.size() - 5, v.size()).max);
}

TEST(MinMaxSummaryTest, UpdateFromAChangeMatchesARebuild) {
    auto v = noise(200000, 3);
    MinMaxSummary s;
    s.rebuild(v.data(), v.size());
    // A cut of 5000 samples at 70000: everything after moves down.
    v.erase(v.begin() + 70000, v.begin() + 75000);
    v[70001] = 32767;
    s.updateFrom(v.data(), v.size(), 70000);
    MinMaxSummary fresh;
    fresh.rebuild(v.data(), v.size());
    for (int k = 0; k < MinMaxSummary::kLevels; ++k) {
        ASSERT_EQ(s.level(k).size(), fresh.level(k).size());
        for (std::size_t b = 0; b < s.level(k).size(); ++b) {
            ASSERT_EQ(s.level(k)[b].min, fresh.level(k)[b].min);
            ASSERT_EQ(s.level(k)[b].max, fresh.level(k)[b].max);
        }
    }
}

TEST(ReadoutsTest, RowsHoldTheValueAtTheCursorAndTheSelection) {
    sonmetra::CKestruneDoc doc;
    synthetic::fillChannel(
        doc, 0, "Audio", 1000.0, 1000, [](std::size_t i) { return std::int16_t(i); }, true);
    synthetic::fillChannel(doc, 1, "Force", 1000.0, 1000, [](std::size_t i) { return std::int16_t(2 * i); });
    doc.channel(1).m_units = "N";
    doc.channel(1).m_reference = 100.0;
    doc.channel(1).m_c1 = 2.0;  // calibrated = 2 x (range/fullscale) x v / gain
    doc.channel(1).m_converterRange = 32768.0;
    doc.channel(1).m_gain = 1.0;
    // An absent slot between present ones takes no row.
    doc.setChannelCount(3);
    synthetic::fillChannel(doc, 2, "ch3", 1000.0, 1000, [](std::size_t) { return std::int16_t(5); });
    doc.channel(2).m_inUse = 0;

    timebase::placeCursor(doc, 300.0);
    auto rows = computeReadouts(doc);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1].name, "Force");
    EXPECT_EQ(rows[1].units, "N");
    EXPECT_DOUBLE_EQ(rows[0].cursorValue, 300.0);
    EXPECT_DOUBLE_EQ(rows[1].cursorValue, 500.0);  // 600 less the reference
    EXPECT_DOUBLE_EQ(rows[1].cursorCalibrated, 1000.0);

    timebase::selectRange(doc, 200.0, 450.0);
    rows = computeReadouts(doc);
    EXPECT_DOUBLE_EQ(rows[1].selStartMs, 200.0);
    EXPECT_DOUBLE_EQ(rows[1].selEndMs, 450.0);
    EXPECT_DOUBLE_EQ(rows[1].selLengthSamples, 250.0);

    CursorTimes t = computeCursorTimes(doc, true);
    EXPECT_DOUBLE_EQ(t.durationMs(), 250.0);
    t = computeCursorTimes(doc, false);
    EXPECT_DOUBLE_EQ(t.durationMs(), 1000.0);  // the displayed window
}
