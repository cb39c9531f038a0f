// LPC, the envelope, the factoring and the formant rules: against the
// Levinson reference, by round trips (envelope against the predictor's own
// transfer function, polynomial rebuilt from its factors), and on the exact
// cases of the root rules.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

#include "TestSignals.h"
#include "analysis/FactorPolynomial.h"
#include "analysis/LpcAnalysis.h"
#include "analysis/LpcSpectrum.h"
#include "analysis/RootToFormant.h"
#include "reference_vectors.inc"

namespace sonmetra {
namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;

// Monic polynomial (highest power first) with the given roots.
std::vector<double> fromRoots(const std::vector<std::complex<double>>& roots) {
    std::vector<std::complex<double>> c = {1.0};
    for (const auto& r : roots) {
        std::vector<std::complex<double>> next(c.size() + 1, 0.0);
        for (std::size_t i = 0; i < c.size(); ++i) {
            next[i] += c[i];
            next[i + 1] -= c[i] * r;
        }
        c = next;
    }
    std::vector<double> out(kMaxLpcOrder + 1, 0.0);
    for (std::size_t i = 0; i < c.size(); ++i) out[i] = c[i].real();
    return out;
}

std::vector<std::complex<double>> pair(double radius, double hz, double rate) {
    const auto z = std::polar(radius, kTwoPi * hz / rate);
    return {z, std::conj(z)};
}

TEST(LpcAnalysis, SchurAgreesWithLevinson) {
    auto x = test::referenceSignal(300);
    const LpcRecord& rec = LpcAnalysis(x.data(), 300, 12);
    ASSERT_EQ(rec.order, 12);
    for (int i = 1; i <= 12; ++i) EXPECT_NEAR(rec.reflection[i], kRefLpc12Reflection[i - 1], 1e-10) << i;
    for (int i = 0; i <= 12; ++i) EXPECT_NEAR(rec.predictor[i], kRefLpc12Predictor[i], 1e-9) << i;
    EXPECT_NEAR(rec.energy, kRefLpc12Energy, 1e-9 * kRefLpc12Energy);
}

TEST(LpcAnalysis, OrderOneAndTheOrderLimit) {
    auto x = test::referenceSignal(200);
    double r0 = 0, r1 = 0;
    for (int i = 0; i < 200; ++i) r0 += x[i] * x[i];
    for (int i = 0; i < 199; ++i) r1 += x[i] * x[i + 1];
    const LpcRecord& one = LpcAnalysis(x.data(), 200, 1);
    EXPECT_NEAR(one.predictor[1], -r1 / r0, 1e-15);
    EXPECT_EQ(one.predictor[1], one.reflection[1]);

    auto big = test::referenceSignal(1000);
    testing::internal::CaptureStderr();
    const LpcRecord& capped = LpcAnalysis(big.data(), 1000, 401);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Requested LPC order too large\n");
    EXPECT_EQ(capped.order, 400);
}

TEST(LpcSpectrum, EnvelopeIsThePowerOfThePredictorsTransferFunction) {
    auto x = test::referenceSignal(400);
    auto block = x;
    LpcSpectrum(block.data(), 10, 300, 0.9, 1, 0, 0, 0, 10000.0, 0, 0);
    const LpcRecord& rec = defaultWorkspace().m_lpc;
    for (int k = 0; k < 128; ++k) {
        std::complex<double> a = 0.0;
        for (int i = 0; i <= 10; ++i) a += rec.predictor[i] * std::polar(1.0, -kTwoPi * k * i / 256.0);
        EXPECT_NEAR(block[k], 10.0 * std::log10(std::norm(a)), 1e-9) << k;
    }
    // Resampled on 128 points up to half the rate: the same values at the knots.
    auto resampled = x;
    LpcSpectrum(resampled.data(), 10, 300, 0.9, 1, 1, 128, 5000, 10000.0, 0, 0);
    for (int k = 0; k < 128; ++k) EXPECT_NEAR(resampled[k], block[k], 1e-9) << k;
}

TEST(LpcSpectrum, SilentBlockDoesNotCrash) {
    std::vector<double> zero(600, 0.0);
    LpcSpectrum(zero.data(), 14, 300, 0.0, 1, 1, 100, 5000, 11025.0, 1, 0);
    EXPECT_FALSE(std::isfinite(defaultWorkspace().m_lpc.predictor[1]));
}

TEST(FactorPolynomial, RecoversKnownResonancesAndRebuildsThePolynomial) {
    const double rate = 10000.0;
    std::vector<std::complex<double>> roots;
    const double hz[] = {500, 1500, 2500, 3500}, bw[] = {80, 120, 200, 300};
    for (int i = 0; i < 4; ++i) {
        const auto p = pair(std::exp(-std::numbers::pi * bw[i] / rate), hz[i], rate);
        roots.insert(roots.end(), p.begin(), p.end());
    }
    auto c = fromRoots(roots);
    const auto original = c;
    const FormantRecord* rec = FactorPolynomial(8, 600.0, c.data(), rate);
    ASSERT_NE(rec, nullptr);
    ASSERT_EQ(rec->formantCount, 4);
    ASSERT_EQ(rec->quadraticCount, 4);
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(rec->frequency[i], hz[i], 0.01) << i;
        EXPECT_NEAR(rec->bandwidth[i], bw[i], 0.01) << i;
    }
    // The product of the stored quadratics is the polynomial again.
    std::vector<double> prod = {1.0};
    for (int q = 0; q < rec->quadraticCount; ++q) {
        std::vector<double> next(prod.size() + 2, 0.0);
        for (std::size_t i = 0; i < prod.size(); ++i) {
            next[i] += prod[i];
            next[i + 1] += prod[i] * rec->p1[q];
            next[i + 2] += prod[i] * rec->p2[q];
        }
        prod = next;
    }
    for (int i = 0; i <= 8; ++i) EXPECT_NEAR(prod[i], original[i], 1e-6) << i;
}

TEST(FactorPolynomial, RealRootsAreTakenOutAndYieldNoFormant) {
    const double rate = 8000.0;
    std::vector<std::complex<double>> roots = {0.5, -0.7};
    const auto p = pair(0.95, 1000.0, rate);
    roots.insert(roots.end(), p.begin(), p.end());
    auto c = fromRoots(roots);
    const FormantRecord* rec = FactorPolynomial(4, 600.0, c.data(), rate);
    ASSERT_NE(rec, nullptr);
    ASSERT_EQ(rec->formantCount, 1);
    EXPECT_NEAR(rec->frequency[0], 1000.0, 0.5);
    EXPECT_NEAR(rec->bandwidth[0], -std::log(0.95 * 0.95) * rate / kTwoPi, 0.5);
    // A root outside the scan (|x| > 1.2) is found through the reversed polynomial.
    auto c2 = fromRoots({3.0, p[0], p[1]});
    const FormantRecord* rec2 = FactorPolynomial(3, 600.0, c2.data(), rate);
    ASSERT_NE(rec2, nullptr);
    ASSERT_EQ(rec2->formantCount, 1);
    EXPECT_NEAR(rec2->frequency[0], 1000.0, 0.5);
}

TEST(FactorPolynomial, SecondDegreeIsAnalysedDirectly) {
    const double rate = 10000.0;
    const double scale = rate / kTwoPi;
    // z² + 0.81: h = 0 gives the bare π/2, not rate/4.
    std::vector<double> c = {1.0, 0.0, 0.81};
    const FormantRecord* rec = FactorPolynomial(2, 600.0, c.data(), rate);
    ASSERT_NE(rec, nullptr);
    ASSERT_EQ(rec->formantCount, 1);
    EXPECT_DOUBLE_EQ(rec->frequency[0], std::numbers::pi / 2);
    EXPECT_DOUBLE_EQ(rec->bandwidth[0], -std::log(0.81) * scale);
    // z² − 1.8z + 0.81: double real root 0.9, placed at the Nyquist frequency.
    std::vector<double> c2 = {1.0, -1.8, 0.81};
    rec = FactorPolynomial(2, 600.0, c2.data(), rate);
    ASSERT_EQ(rec->formantCount, 1);
    EXPECT_EQ(rec->frequency[0], 5000.0);
    EXPECT_NEAR(rec->bandwidth[0], 335.4, 0.05);
    EXPECT_DOUBLE_EQ(rec->rootReal[0], -0.9);
    EXPECT_EQ(rec->rootImag[0], 0.0);
}

TEST(RootToFormant, RealRootsAreMirrored) {
    const FormantOfRoot up = RootToFormant(1.8, 0.81, 10000.0);  // true root −0.9
    EXPECT_EQ(up.frequencyHz, 0.0);
    EXPECT_DOUBLE_EQ(up.rootReal, 0.9);
    const FormantOfRoot zero = RootToFormant(0.0, 0.0, 10000.0);  // R = 0: infinite bandwidth
    EXPECT_TRUE(std::isinf(zero.bandwidthHz));
    const FormantOfRoot complex = RootToFormant(-2 * 0.9 * std::cos(0.3), 0.81, 10000.0);
    EXPECT_NEAR(complex.frequencyHz, 0.3 * 10000.0 / kTwoPi, 1e-9);
    EXPECT_NEAR(complex.rootImag, 0.9 * std::sin(0.3), 1e-12);
}

TEST(FactorPolynomial, BandwidthLimitIsInclusive) {
    const double rate = 10000.0;
    const double p2 = std::exp(-600.0 / (rate / kTwoPi));
    const double bw = RootToFormant(-1.0, p2, rate).bandwidthHz;
    std::vector<double> c = {1.0, -1.0, p2};
    EXPECT_EQ(FactorPolynomial(2, bw, c.data(), rate)->formantCount, 1);
    c = {1.0, -1.0, p2};
    EXPECT_EQ(FactorPolynomial(2, std::nextafter(bw, 0.0), c.data(), rate)->formantCount, 0);
}

TEST(FactorPolynomial, EqualFrequenciesKeepTheOrderFound) {
    // (z − 0.85)(z − 0.95)(z − 0.35)(z − 0.45): each pair of roots falls inside
    // one scan step, so no real root is found; Bairstow takes out the pair near
    // its start (z − 1)² first and the rest is read directly. Both factors have
    // real roots with P1 < 0 and read exactly half the rate.
    const auto c0 = fromRoots({0.85, 0.95, 0.35, 0.45});
    auto c = c0;
    const double rate = 10000.0, scale = rate / kTwoPi;
    const FormantRecord* rec = FactorPolynomial(4, 1e9, c.data(), rate);
    ASSERT_NE(rec, nullptr);
    ASSERT_EQ(rec->quadraticCount, 2);
    ASSERT_EQ(rec->formantCount, 2);
    EXPECT_EQ(rec->frequency[0], 5000.0);
    EXPECT_EQ(rec->frequency[1], 5000.0);
    EXPECT_NEAR(rec->rootReal[0], -0.95, 1e-6);
    EXPECT_NEAR(rec->bandwidth[0], -std::log(0.95 * 0.95) * scale, 1e-3);
    EXPECT_NEAR(rec->bandwidth[1], -std::log(0.45 * 0.45) * scale, 1e-3);
}

TEST(LpcSpectrum, FindsTheFormantsOfASyntheticResonator) {
    // An all-pole signal with two resonances, excited by noise: LPC of order 4
    // recovers them.
    const double rate = 8000.0;
    const auto a = fromRoots([&] {
        auto r = pair(0.97, 700.0, rate);
        auto s = pair(0.95, 1800.0, rate);
        r.insert(r.end(), s.begin(), s.end());
        return r;
    }());
    auto e = test::noise(4000, 77u);
    std::vector<double> x(4000, 0.0);
    for (int n = 0; n < 4000; ++n) {
        double v = e[n];
        for (int i = 1; i <= 4; ++i)
            if (n - i >= 0) v -= a[i] * x[n - i];
        x[n] = v;
    }
    std::vector<double> block(x.begin() + 500, x.end());
    block.resize(3600);
    LpcSpectrum(block.data(), 4, 3000, 0.0, 1, 0, 0, 0, rate, 1, 1);
    const FormantRecord* rec = LastFormants();
    ASSERT_NE(rec, nullptr);
    ASSERT_EQ(rec->formantCount, 2);
    EXPECT_NEAR(rec->frequency[0], 700.0, 15.0);
    EXPECT_NEAR(rec->frequency[1], 1800.0, 25.0);
}

}  // namespace
}  // namespace sonmetra
