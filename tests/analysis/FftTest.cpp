// The transform, the windows and FftSpectrum: against direct DFT sums, against
// a literal run of the stage recurrence, and on the exact cases of the dB rule.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <utility>
#include <vector>

#include "TestSignals.h"
#include "analysis/AnalysisWindow.h"
#include "analysis/Fft.h"
#include "analysis/FftSpectrum.h"
#include "reference_vectors.inc"

namespace sonmetra {
namespace {

// The transform exactly as its steps read: counter bit reversal, twiddles by
// recurrence inside every stage, butterflies in j-major order.
void literalFft(double* re, double* im, int m) {
    const int n = 1 << m;
    int j = 0;
    for (int i = 0; i < n - 1; ++i) {
        if (i < j) {
            std::swap(re[i], re[j]);
            std::swap(im[i], im[j]);
        }
        int k = n / 2;
        while (k <= j) {
            j -= k;
            k /= 2;
        }
        j += k;
    }
    for (int s = 1; s <= m; ++s) {
        const int le = 1 << s, half = le / 2;
        const double theta = std::numbers::pi / half;
        const double c = std::cos(theta), sn = std::sin(theta);
        double wr = 1.0, wi = 0.0;
        for (int jj = 0; jj < half; ++jj) {
            for (int i = jj; i < n; i += le) {
                const int ip = i + half;
                const double tr = wr * re[ip] - wi * im[ip];
                const double ti = wr * im[ip] + wi * re[ip];
                re[ip] = re[i] - tr;
                im[ip] = im[i] - ti;
                re[i] = re[i] + tr;
                im[i] = im[i] + ti;
            }
            const double nr = wr * c + wi * sn;
            wi = wi * c - wr * sn;
            wr = nr;
        }
    }
}

// Both vector paths (AVX2 where the processor has it, and SSE2), the gathered
// first stages of the sizes up to 4096 and the in-place swaps beyond.
TEST(Fft, GivesExactlyTheNumbersOfTheStageRecurrence) {
    for (const bool avx2 : {true, false}) {
        detail::FftUseAvx2(avx2);
        for (int m = 1; m <= 14; ++m) {
            const int n = 1 << m;
            auto re = test::noise(n, 11u + m), im = test::noise(n, 97u + m);
            auto re2 = re, im2 = im;
            Fft(re.data(), im.data(), m);
            literalFft(re2.data(), im2.data(), m);
            ASSERT_EQ(std::memcmp(re.data(), re2.data(), sizeof(double) * n), 0) << "m=" << m << " avx2 " << avx2;
            ASSERT_EQ(std::memcmp(im.data(), im2.data(), sizeof(double) * n), 0) << "m=" << m << " avx2 " << avx2;
        }
    }
    detail::FftUseAvx2(true);
}

// The outputs a caller asks for are Fft's to the bit, for ranges in either
// quarter and across the middle; other ranges and small sizes run the whole.
TEST(Fft, FirstHalfOutputsAreThoseOfTheWholeTransform) {
    for (const bool avx2 : {true, false}) {
        detail::FftUseAvx2(avx2);
        for (int m = 4; m <= 12; ++m) {
            const int n = 1 << m, half = n / 2;
            for (const auto& [from, to] : {std::pair{0, half}, std::pair{1, 2}, std::pair{half / 8, half / 2 - 3},
                                           std::pair{half / 2, half}, std::pair{half / 4, 3 * half / 4 + 1}}) {
                auto re = test::noise(n, 3u + m), im = test::noise(n, 7u + m);
                auto whole = re, wholeIm = im;
                Fft(whole.data(), wholeIm.data(), m);
                FftFirstHalf(re.data(), im.data(), m, from, to);
                for (int k = from; k < to; ++k) {
                    ASSERT_EQ(std::memcmp(&re[k], &whole[k], sizeof(double)), 0) << m << " " << from << " " << k;
                    ASSERT_EQ(std::memcmp(&im[k], &wholeIm[k], sizeof(double)), 0) << m << " " << from << " " << k;
                }
            }
        }
    }
    detail::FftUseAvx2(true);
}

TEST(Fft, AgreesWithDirectDftWithNegativeExponentAndNoScaling) {
    for (int m : {5, 8, 12}) {
        const int n = 1 << m;
        auto re = test::noise(n, 5u), im = test::noise(n, 6u);
        std::vector<std::complex<long double>> in(n);
        for (int i = 0; i < n; ++i) in[i] = {re[i], im[i]};
        Fft(re.data(), im.data(), m);
        for (int k = 0; k < n; k += (m == 12 ? 97 : 1)) {
            std::complex<long double> sum = 0;
            for (int i = 0; i < n; ++i) {
                const long double a = -2.0L * std::numbers::pi_v<long double> * ((static_cast<long>(k) * i) % n) / n;
                sum += in[i] * std::complex<long double>(std::cos(a), std::sin(a));
            }
            EXPECT_NEAR(re[k], static_cast<double>(sum.real()), 1e-9 * n) << "m=" << m << " k=" << k;
            EXPECT_NEAR(im[k], static_cast<double>(sum.imag()), 1e-9 * n) << "m=" << m << " k=" << k;
        }
    }
}

TEST(Fft, SinglePointIsLeftAlone) {
    double re = 3.5, im = -1.25;
    Fft(&re, &im, 0);
    EXPECT_EQ(re, 3.5);
    EXPECT_EQ(im, -1.25);
}

TEST(Window, HammingIsThePeriodicForm) {
    std::vector<double> w(8);
    HammingWindow(w.data(), 8);
    EXPECT_DOUBLE_EQ(w[0], 0.08);
    EXPECT_DOUBLE_EQ(w[4], 1.0);  // the middle of a periodic window is its peak
    EXPECT_NEAR(w[2], 0.54, 1e-15);
    EXPECT_NE(w[7], 0.08);  // no symmetric end point
}

TEST(FftSpectrum, MatchesDirectDftReferenceVectors) {
    auto x = test::referenceSignal(600);
    auto a = x;
    FftSpectrum(a.data(), 64, 0.0, 1, 0, 0, 0, 10000.0);
    for (int k = 0; k < 32; ++k) EXPECT_NEAR(a[k], kRefSpectrum64Hamming[k], 1e-9) << k;
    auto b = x;
    FftSpectrum(b.data(), 512, 0.95, 1, 0, 0, 0, 10000.0);
    for (int k = 0; k < 256; ++k) EXPECT_NEAR(b[k], kRefSpectrum512HammingPre95[k], 1e-8) << k;
    auto c = x;
    FftSpectrum(c.data(), 128, 0.0, 0, 0, 0, 0, 10000.0);
    for (int k = 0; k < 64; ++k) EXPECT_NEAR(c[k], kRefSpectrum128Rect[k], 1e-9) << k;
}

TEST(FftSpectrum, ExactCasesOfTheDecibelRule) {
    // Silence reads 0.0 dB, not minus infinity.
    std::vector<double> zero(257, 0.0);
    FftSpectrum(zero.data(), 256, 0.0, 1, 0, 0, 0, 11025.0);
    for (int k = 0; k < 128; ++k) EXPECT_EQ(zero[k], 0.0);

    // A unit impulse: power 1 everywhere (rectangular), w[0]² = 0.0064 with Hamming.
    std::vector<double> imp(65, 0.0);
    imp[0] = 1.0;
    auto rect = imp;
    FftSpectrum(rect.data(), 64, 0.0, 0, 0, 0, 0, 8000.0);
    for (int k = 0; k < 32; ++k) EXPECT_NEAR(rect[k], 0.0, 1e-12);
    auto ham = imp;
    FftSpectrum(ham.data(), 64, 0.0, 1, 0, 0, 0, 8000.0);
    for (int k = 0; k < 32; ++k) EXPECT_NEAR(ham[k], 10.0 * std::log10(0.0064), 1e-9);

    // A cosine on bin 5 scales with N: no normalisation.
    for (int n : {32, 1024}) {
        std::vector<double> s(n + 1);
        for (int i = 0; i <= n; ++i) s[i] = 3.0 * std::cos(2 * std::numbers::pi * 5 * i / n);
        FftSpectrum(s.data(), n, 0.0, 0, 0, 0, 0, 8000.0);
        EXPECT_NEAR(s[5], 10.0 * std::log10(std::pow(3.0 * n / 2, 2)), 1e-9) << n;
    }

    // Pre-emphasis 1 turns a constant block into zeros; the sample after the block is read.
    std::vector<double> flat(129, 7.0);
    FftSpectrum(flat.data(), 128, 1.0, 1, 0, 0, 0, 8000.0);
    for (int k = 0; k < 64; ++k) EXPECT_EQ(flat[k], 0.0);
    std::vector<double> step(129, 7.0);
    step[128] = 8.0;  // only sample N differs
    FftSpectrum(step.data(), 128, 1.0, 0, 0, 0, 0, 8000.0);
    EXPECT_NEAR(step[0], 0.0, 1e-12);  // |Σ| = 1 from the last difference alone
}

TEST(FftSpectrum, WritesOnlyTheBinsBelowNyquist) {
    for (int n : {32, 4096}) {
        std::vector<double> s = test::noise(n + 8, 3u);
        const double sentinel = s[n / 2];
        FftSpectrum(s.data(), n, 0.0, 1, 0, 0, 0, 8000.0);
        EXPECT_EQ(s[n / 2], sentinel) << n;
    }
}

TEST(FftSpectrum, ResamplingFollowsTheSplineThroughTheBins) {
    auto x = test::referenceSignal(600);
    auto bins = x;
    FftSpectrum(bins.data(), 256, 0.0, 1, 0, 0, 0, 8000.0);
    // Up to half the rate on N/2 points: one point per bin, the knots themselves.
    auto same = x;
    FftSpectrum(same.data(), 256, 0.0, 1, 1, 128, 4000, 8000.0);
    for (int k = 0; k < 128; ++k) EXPECT_NEAR(same[k], bins[k], 1e-9) << k;
    // One point: bin 0.
    auto one = x;
    FftSpectrum(one.data(), 256, 0.0, 1, 1, 1, 4000, 8000.0);
    EXPECT_NEAR(one[0], bins[0], 1e-12);
    // Half the range on 128 points: every other point is a knot.
    auto half = x;
    FftSpectrum(half.data(), 256, 0.0, 1, 1, 128, 2000, 8000.0);
    for (int j = 0; j < 128; j += 2) EXPECT_NEAR(half[j], bins[j / 2], 1e-9) << j;
}

// Four spectra at once are four FftSpectrum calls, to the bit, and leave the
// workspace's spline tables as the last call does; also for tables too short
// for a spline, silent blocks and a range beyond the last bin.
TEST(FftSpectrum, FourBlocksAtOnceAreFourSpectra) {
    for (const int n : {2, 4, 32, 128, 1024}) {
        for (const auto& [points, rangeHz] : {std::pair{256, 5000}, std::pair{7, 5512}, std::pair{300, 6000}}) {
            std::vector<std::vector<double>> one(4), four(4);
            for (int l = 0; l < 4; ++l) {
                one[l] = test::noise(std::max(n + 1, points) + 4, 31u * n + l);
                for (auto& v : one[l]) v *= 3000.0;
                if (l == 2) std::fill(one[l].begin(), one[l].end(), 0.0);
                four[l] = one[l];
            }
            AnalysisWorkspace single, batch;
            for (auto& block : one) FftSpectrum(block.data(), n, 0.97, 1, 1, points, rangeHz, 11025.0, single);
            double* blocks[4] = {four[0].data(), four[1].data(), four[2].data(), four[3].data()};
            ASSERT_EQ(FftSpectra(blocks, n, 0.97, 1, points, rangeHz, 11025.0, batch), 0);
            for (int l = 0; l < 4; ++l)
                ASSERT_EQ(std::memcmp(one[l].data(), four[l].data(), sizeof(double) * one[l].size()), 0)
                    << n << " " << points << " " << l;
            const std::size_t tables = static_cast<std::size_t>(n / 2) + 1;
            EXPECT_EQ(std::memcmp(single.m_splineY2.data(), batch.m_splineY2.data(), sizeof(double) * tables), 0);
            EXPECT_EQ(std::memcmp(single.m_re.data(), batch.m_re.data(), sizeof(double) * n), 0);
        }
    }
}

TEST(FftSpectrum, SizeLabelCutsTheBinWidth) {
    EXPECT_EQ(FftSizeLabel(0, 10000.0), "  312  Hz  (  32 pts)");
    EXPECT_EQ(FftSizeLabel(3, 11025.0), "  43  Hz   ( 256 pts)");
    EXPECT_EQ(FftSizeLabel(7, 44100.0), "  10  Hz   (4096 pts)");
}

}  // namespace
}  // namespace sonmetra
