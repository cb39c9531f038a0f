// Intensity contour, frame intensity and smoothing.
#include <gtest/gtest.h>

#include <cmath>
#include <thread>
#include <vector>

#include "TestSignals.h"
#include "analysis/FrameIntensity.h"
#include "analysis/IntensityContour.h"
#include "analysis/LpcAnalysis.h"
#include "analysis/SmoothSamples.h"

namespace sonmetra {
namespace {

TEST(IntensityContour, SilenceConstantAndShortChannels) {
    std::vector<std::int16_t> silent(1000, 5);
    std::vector<double> c(1000, -1.0);
    double lo = 0, hi = 0;
    ASSERT_TRUE(IntensityContour(silent.data(), c.data(), lo, hi, 5.0, 0, 100.5, 50, 1000, 0, 0));
    for (double v : c) EXPECT_EQ(v, 0.0);

    std::vector<std::int16_t> flat(1000, 100);
    ASSERT_TRUE(IntensityContour(flat.data(), c.data(), lo, hi, 0.0, 0, 100.5, 50, 1000, 0, 0));
    // 101 samples of power 10000 divided by 100.5.
    for (double v : c) EXPECT_NEAR(v, 10 * std::log10(101 * 10000 / 100.5), 1e-12);

    std::vector<double> shortContour(50, -1.0);
    ASSERT_TRUE(IntensityContour(flat.data(), shortContour.data(), lo, hi, 0.0, 0, 100.5, 50, 50, 0, 0));
    for (double v : shortContour) EXPECT_EQ(v, 0.0);
    EXPECT_EQ(lo, 0.0);
    EXPECT_EQ(hi, 0.0);
}

TEST(IntensityContour, FractionalWindowLaterFramesAndTail) {
    // 20 ms at 10 kHz: a window of 200.5 positions sums 201 samples.
    std::vector<std::int16_t> s(1000, 0);
    for (int i = 0; i < 201; ++i) s[i] = 100;
    std::vector<double> c(1000);
    double lo = 0, hi = 0;
    ASSERT_TRUE(IntensityContour(s.data(), c.data(), lo, hi, 0.0, 0, 200.5, 300, 1000, 0, 1));
    EXPECT_DOUBLE_EQ(c[0], 201 * 10000 / 200.5);
    EXPECT_DOUBLE_EQ(c[200], 201 * 10000 / 200.5);
    // nFrames = (1000 − 200.5)/300 = 2.66: frames at 0, 300, 600; the last
    // covers 600..800 and its value (0) fills the rest.
    EXPECT_EQ(c[201], 0.0);  // not covered by frame 0: the tail and gaps keep what frames wrote
    EXPECT_EQ(c[999], 0.0);

    // Overlap: the later frame's value wins.
    std::vector<std::int16_t> ramp(400, 0);
    for (int i = 100; i < 400; ++i) ramp[i] = 1000;
    std::vector<double> d(400);
    ASSERT_TRUE(IntensityContour(ramp.data(), d.data(), lo, hi, 0.0, 0, 200, 100, 400, 0, 1));
    EXPECT_DOUBLE_EQ(d[150], 1e6);  // frame 1 (100..300) overwrote frame 0's 5e5
    EXPECT_DOUBLE_EQ(d[50], 5e5);
}

TEST(IntensityContour, NormaliseMovesTheMinimumToZero) {
    auto x = test::noise(3000, 4u);
    std::vector<std::int16_t> s(3000);
    for (int i = 0; i < 3000; ++i) s[i] = static_cast<std::int16_t>(x[i] * (i < 1500 ? 300 : 3000));
    std::vector<double> plain(3000), norm(3000);
    double lo = 0, hi = 0, nlo = 0, nhi = 0;
    ASSERT_TRUE(IntensityContour(s.data(), plain.data(), lo, hi, 0.0, 0, 100.5, 50, 3000, 0, 0));
    ASSERT_TRUE(IntensityContour(s.data(), norm.data(), nlo, nhi, 0.0, 0, 100.5, 50, 3000, 1, 0));
    EXPECT_EQ(nlo, 0.0);
    EXPECT_DOUBLE_EQ(nhi, hi - lo);
    EXPECT_DOUBLE_EQ(norm[2000], plain[2000] - lo);
    EXPECT_FALSE(IntensityContour(s.data(), norm.data(), nlo, nhi, 0.0, 0, 100.5, 0.0, 3000, 0, 0));
}

TEST(FrameIntensity, MeanPowerPerFrame) {
    std::vector<std::int16_t> s = {10, 10, 0, 0, 3, 4};
    double v[3], lo = 0, hi = 0;
    FrameIntensity(s.data(), v, lo, hi, 0.0, 0, 2, 2, 3, 0, 1);
    EXPECT_EQ(v[0], 100.0);
    EXPECT_EQ(v[1], 0.0);
    EXPECT_EQ(v[2], 12.5);
    EXPECT_EQ(lo, 0.0);
    EXPECT_EQ(hi, 100.0);
    FrameIntensity(s.data(), v, lo, hi, 0.0, 0, 2, 2, 3, 1, 0);
    EXPECT_DOUBLE_EQ(v[0], 20.0);
    EXPECT_DOUBLE_EQ(hi, 20.0);
}

TEST(SmoothSamples, ForwardLookingAverage) {
    std::vector<std::int16_t> s = {0, 10, 20, 30};
    SmoothSamples(s.data(), 4, 2);
    EXPECT_EQ(s, (std::vector<std::int16_t>{5, 15, 20, 30}));
    std::vector<std::int16_t> neg = {-1, -2, -4, 7};
    SmoothSamples(neg.data(), 4, 2);  // −1.5 → −1, −3 → −3
    EXPECT_EQ(neg, (std::vector<std::int16_t>{-1, -3, -4, 7}));
    std::vector<std::int16_t> same = {1, 2, 3};
    SmoothSamples(same.data(), 3, 1);
    EXPECT_EQ(same, (std::vector<std::int16_t>{1, 2, 3}));
    SmoothSamples(same.data(), 3, 3);
    SmoothSamples(same.data(), 3, 9);
    EXPECT_EQ(same, (std::vector<std::int16_t>{1, 2, 3}));
}

TEST(SmoothSamples, RunningSumEqualsTheDirectSums) {
    auto x = test::noise(500, 8u);
    std::vector<std::int16_t> s(500);
    for (int i = 0; i < 500; ++i) s[i] = static_cast<std::int16_t>(x[i] * 30000);
    for (double m : {5.0, 2.5, 17.0}) {
        auto got = s, want = s;
        SmoothSamples(got.data(), 500, m);
        const long last = static_cast<long>(500 - m);
        for (long i = 0; i < last; ++i) {
            double sum = 0;
            for (long k = i; k < i + m; ++k) sum += s[k];
            want[i] = static_cast<std::int16_t>(std::trunc(sum / m));
        }
        EXPECT_EQ(got, want) << m;
    }
}

TEST(AnalysisWorkspace, ThreadsDoNotShareBuffers) {
    auto x = test::referenceSignal(2000);
    const LpcRecord& mine = LpcAnalysis(x.data(), 2000, 20);
    const double k5 = mine.reflection[5];
    std::thread other([] {
        auto y = test::noise(2000, 1u);
        for (int i = 0; i < 50; ++i) LpcAnalysis(y.data(), 2000, 20);
    });
    other.join();
    EXPECT_EQ(defaultWorkspace().m_lpc.reflection[5], k5);
}

}  // namespace
}  // namespace sonmetra
