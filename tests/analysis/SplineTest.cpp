// The spline: natural second derivatives against a dense solve, clamped ends
// reproducing a cubic, and the zero-width answer.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "analysis/Spline.h"
#include "reference_vectors.inc"

namespace sonmetra {
namespace {

TEST(Spline, NaturalSecondDerivativesMatchTheFullSystem) {
    constexpr int n = static_cast<int>(std::size(kRefSplineX));
    std::vector<double> x(n + 1), y(n + 1), y2(n + 1);
    for (int i = 0; i < n; ++i) {
        x[i + 1] = kRefSplineX[i];
        y[i + 1] = kRefSplineY[i];
    }
    Spline(x.data(), y.data(), n, kNaturalSplineEnd, kNaturalSplineEnd, y2.data());
    for (int i = 0; i < n; ++i) EXPECT_NEAR(y2[i + 1], kRefSplineY2[i], 1e-12) << i;
    // The spline passes through its knots.
    for (int i = 1; i <= n; ++i) {
        double v = -1.0;
        ASSERT_EQ(SplineValue(x.data(), y.data(), y2.data(), n, x[i], v), 0);
        EXPECT_NEAR(v, y[i], 1e-12);
    }
}

TEST(Spline, ClampedEndsReproduceACubic) {
    const int n = 6;
    std::vector<double> x = {0, -1.0, -0.3, 0.4, 1.0, 1.7, 2.5}, y(n + 1), y2(n + 1);
    const auto f = [](double t) { return 2 * t * t * t - t * t + 0.5 * t - 3; };
    const auto df = [](double t) { return 6 * t * t - 2 * t + 0.5; };
    for (int i = 1; i <= n; ++i) y[i] = f(x[i]);
    Spline(x.data(), y.data(), n, df(x[1]), df(x[n]), y2.data());
    for (double t : {-0.9, -0.31, 0.0, 0.77, 1.5, 2.4}) {
        double v = 0.0;
        ASSERT_EQ(SplineValue(x.data(), y.data(), y2.data(), n, t, v), 0);
        EXPECT_NEAR(v, f(t), 1e-10) << t;
    }
}

TEST(Spline, LinearDataGivesZeroCurvatureAndExtrapolatesTheLastSegment) {
    const int n = 5;
    std::vector<double> x = {0, 0, 1, 2, 3, 4}, y = {0, 1, 3, 5, 7, 9}, y2(n + 1, 99.0);
    Spline(x.data(), y.data(), n, kNaturalSplineEnd, kNaturalSplineEnd, y2.data());
    for (int i = 1; i <= n; ++i) EXPECT_NEAR(y2[i], 0.0, 1e-14);
    double v = 0.0;
    ASSERT_EQ(SplineValue(x.data(), y.data(), y2.data(), n, 5.5, v), 0);
    EXPECT_NEAR(v, 12.0, 1e-12);
}

TEST(Spline, ZeroWidthIntervalAnswersOneAndLeavesTheResult) {
    std::vector<double> x = {0, 2.0, 2.0}, y = {0, 1.0, 5.0}, y2 = {0, 0.0, 0.0};
    double v = 42.0;
    EXPECT_EQ(SplineValue(x.data(), y.data(), y2.data(), 2, 2.0, v), 1);
    EXPECT_EQ(v, 42.0);
    // A single point is a zero-width table too.
    EXPECT_EQ(SplineValue(x.data(), y.data(), y2.data(), 1, 2.0, v), 1);
    EXPECT_EQ(v, 42.0);
}

TEST(Spline, UnitGridShortcutEqualsBisection) {
    const int n = 40;
    std::vector<double> x(n + 1), y(n + 1), y2(n + 1);
    for (int k = 1; k <= n; ++k) {
        x[k] = k - 1;
        y[k] = std::sin(0.37 * k) * k;
    }
    Spline(x.data(), y.data(), n, kNaturalSplineEnd, kNaturalSplineEnd, y2.data());
    for (int i = 0; i < 10 * n + 7; ++i) {
        const double at = i * 0.1;
        double a = 0.0, b = 0.0;
        SplineValue(x.data(), y.data(), y2.data(), n, at, a);
        detail::SplineValueOnUnitGrid(y.data(), y2.data(), n, at, b);
        ASSERT_EQ(a, b) << at;
    }
}

// The unit-grid construction gives Spline's numbers to the bit, also where
// the values are extreme, infinite or not numbers at all.
TEST(Spline, UnitGridConstructionEqualsTheGeneralOne) {
    std::uint32_t state = 3;
    for (const int n : {1, 2, 3, 4, 64, 198, 2048}) {
        for (int variant = 0; variant < 3; ++variant) {
            std::vector<double> x(n + 1), y(n + 1), general(n + 1, -1.0), unit(n + 1, -1.0);
            for (int k = 1; k <= n; ++k) {
                state = state * 1664525u + 1013904223u;
                x[k] = k - 1;
                y[k] = (static_cast<double>(state >> 8) / 16777216.0 - 0.5) * (variant == 1 ? 1e300 : 80.0);
            }
            if (variant == 2 && n > 3) {
                y[2] = std::numeric_limits<double>::infinity();
                y[n - 1] = std::numeric_limits<double>::quiet_NaN();
            }
            Spline(x.data(), y.data(), n, kNaturalSplineEnd, kNaturalSplineEnd, general.data());
            NaturalSplineOnUnitGrid(y.data(), n, unit.data());
            ASSERT_EQ(std::memcmp(general.data() + 1, unit.data() + 1, sizeof(double) * n), 0) << n << " " << variant;
            // Four tables side by side: each as alone (here one table four times
            // beside three others).
            std::vector<double> other(y.size());
            for (std::size_t k = 1; k < y.size(); ++k) other[k] = y[y.size() - k] * 0.5;
            std::vector<std::vector<double>> side(4, std::vector<double>(n + 1, -1.0));
            const double* tables[4] = {y.data(), other.data(), y.data(), other.data()};
            double* results[4] = {side[0].data(), side[1].data(), side[2].data(), side[3].data()};
            NaturalSplinesOnUnitGrid(tables, n, results);
            ASSERT_EQ(std::memcmp(side[2].data() + 1, unit.data() + 1, sizeof(double) * n), 0) << n << " " << variant;
            std::vector<double> alone(n + 1);
            NaturalSplineOnUnitGrid(other.data(), n, alone.data());
            ASSERT_EQ(std::memcmp(side[1].data() + 1, alone.data() + 1, sizeof(double) * n), 0) << n << " " << variant;
        }
    }
}

TEST(Spline, BatchEvaluationEqualsSplineValue) {
    for (const int n : {1, 2, 3, 64}) {
        std::vector<double> x(n + 1), y(n + 1), y2(n + 1);
        for (int k = 1; k <= n; ++k) {
            x[k] = k - 1;
            y[k] = std::cos(0.9 * k) * 7;
        }
        Spline(x.data(), y.data(), n, kNaturalSplineEnd, kNaturalSplineEnd, y2.data());
        for (const double step : {0.1, 0.37, 1.0, 2.5}) {
            std::vector<double> batch(200, -5.0);
            detail::SplineValuesOnUnitGrid(y.data(), y2.data(), n, step, 200, batch.data(), 3.25);
            double v = 3.25;  // a zero-width table keeps the running value
            for (int j = 0; j < 200; ++j) {
                SplineValue(x.data(), y.data(), y2.data(), n, j * step, v);
                ASSERT_EQ(batch[j], v) << n << " " << step << " " << j;
            }
        }
    }
}

}  // namespace
}  // namespace sonmetra
