#include "analysis/Spline.h"

#include <cstdio>
#include <memory>
#include <new>

#include "analysis/CpuClones.h"

namespace sonmetra {
namespace {

std::function<void()>& failureNotice() {
    static std::function<void()> notice = [] { std::fputc('\a', stderr); };
    return notice;
}

}  // namespace

void SetSplineFailureNotice(std::function<void()> notice) { failureNotice() = std::move(notice); }

void Spline(const double* x, const double* y, int n, double yp1, double ypn, double* y2) {
    if (n < 1) return;
    // One more element than points so that index n − 1 = 0 stays inside for n = 1.
    std::unique_ptr<double[]> u(new (std::nothrow) double[static_cast<std::size_t>(n) + 1]);
    if (!u) {
        if (failureNotice()) failureNotice()();
        return;
    }
    u[0] = 0.0;
    if (yp1 > 9.9e29) {
        y2[1] = u[1] = 0.0;
    } else {
        y2[1] = -0.5;
        u[1] = (3.0 / (x[2] - x[1])) * ((y[2] - y[1]) / (x[2] - x[1]) - yp1);
    }
    for (int i = 2; i <= n - 1; ++i) {
        const double sig = (x[i] - x[i - 1]) / (x[i + 1] - x[i - 1]);
        const double p = sig * y2[i - 1] + 2.0;
        y2[i] = (sig - 1.0) / p;
        u[i] = (y[i + 1] - y[i]) / (x[i + 1] - x[i]) - (y[i] - y[i - 1]) / (x[i] - x[i - 1]);
        u[i] = (6.0 * u[i] / (x[i + 1] - x[i - 1]) - sig * u[i - 1]) / p;
    }
    double qn, un;
    if (ypn > 9.9e29) {
        qn = un = 0.0;
    } else {
        qn = 0.5;
        un = (3.0 / (x[n] - x[n - 1])) * (ypn - (y[n] - y[n - 1]) / (x[n] - x[n - 1]));
    }
    if (n >= 2) {
        y2[n] = (un - qn * u[n - 1]) / (qn * y2[n - 1] + 1.0);
    } else {
        y2[n] = 0.0;  // a single point: both ends natural, nothing to solve
    }
    for (int k = n - 1; k >= 1; --k) y2[k] = y2[k] * y2[k + 1] + u[k];
}

void NaturalSplineOnUnitGrid(const double* y, int n, double* y2) {
    if (n < 1) return;
    std::unique_ptr<double[]> u(new (std::nothrow) double[static_cast<std::size_t>(n) + 1]);
    if (!u) {
        if (failureNotice()) failureNotice()();
        return;
    }
    // With x[i] − x[i−1] = 1 and x[i+1] − x[i−1] = 2: sig = 0.5, a division by
    // 1 changes nothing, and halving by multiplying with 0.5 rounds as dividing
    // by 2 does. Everything else is Spline's arithmetic in Spline's order.
    u[0] = 0.0;
    y2[1] = u[1] = 0.0;
    for (int i = 2; i <= n - 1; ++i) {
        const double p = 0.5 * y2[i - 1] + 2.0;
        y2[i] = -0.5 / p;
        const double d = (y[i + 1] - y[i]) - (y[i] - y[i - 1]);
        u[i] = ((6.0 * d) * 0.5 - 0.5 * u[i - 1]) / p;
    }
    constexpr double qn = 0.0, un = 0.0;
    if (n >= 2) {
        y2[n] = (un - qn * u[n - 1]) / (qn * y2[n - 1] + 1.0);
    } else {
        y2[n] = 0.0;
    }
    for (int k = n - 1; k >= 1; --k) y2[k] = y2[k] * y2[k + 1] + u[k];
}

SONMETRA_AVX2_CLONES void NaturalSplinesOnUnitGrid(const double* const y[4], int n, double* const y2[4]) {
    if (n < 3) {
        for (int l = 0; l < 4; ++l) NaturalSplineOnUnitGrid(y[l], n, y2[l]);
        return;
    }
    // The tables side by side, element i of table l at [4i + l]: values,
    // the work array u, and the second derivatives.
    const std::size_t size = 4 * (static_cast<std::size_t>(n) + 1);
    std::unique_ptr<double[]> work(new (std::nothrow) double[3 * size]);
    if (!work) {
        for (int l = 0; l < 4; ++l)
            if (failureNotice()) failureNotice()();
        return;
    }
    double* const v = work.get();
    double* const u = v + size;
    double* const w = u + size;
    for (int i = 1; i <= n; ++i)
        for (int l = 0; l < 4; ++l) v[4 * i + l] = y[l][i];
    for (int l = 0; l < 4; ++l) {
        u[l] = 0.0;
        w[4 + l] = u[4 + l] = 0.0;
    }
    // As in NaturalSplineOnUnitGrid; p depends on i alone, the same for every table.
    double previous = 0.0;  // y2[i − 1] before the back-substitution
    for (int i = 2; i <= n - 1; ++i) {
        const double p = 0.5 * previous + 2.0;
        previous = -0.5 / p;
        for (int l = 0; l < 4; ++l) {
            const double d = (v[4 * (i + 1) + l] - v[4 * i + l]) - (v[4 * i + l] - v[4 * (i - 1) + l]);
            w[4 * i + l] = previous;
            u[4 * i + l] = ((6.0 * d) * 0.5 - 0.5 * u[4 * (i - 1) + l]) / p;
        }
    }
    constexpr double qn = 0.0, un = 0.0;
    for (int l = 0; l < 4; ++l) w[4 * n + l] = (un - qn * u[4 * (n - 1) + l]) / (qn * w[4 * (n - 1) + l] + 1.0);
    for (int k = n - 1; k >= 1; --k)
        for (int l = 0; l < 4; ++l) w[4 * k + l] = w[4 * k + l] * w[4 * (k + 1) + l] + u[4 * k + l];
    for (int i = 1; i <= n; ++i)
        for (int l = 0; l < 4; ++l) y2[l][i] = w[4 * i + l];
}

int SplineValue(const double* x, const double* y, const double* y2, int n, double at, double& result) {
    int klo = 1, khi = n;
    if (n - 1 >= 2) {
        while (khi - klo > 1) {
            const int k = (khi + klo) / 2;
            if (x[k] > at)
                khi = k;
            else
                klo = k;
        }
    }
    const double h = x[khi] - x[klo];
    if (h == 0.0) return 1;
    const double a = (x[khi] - at) / h;
    const double b = (at - x[klo]) / h;
    result = a * y[klo] + b * y[khi] + ((a * a * a - a) * y2[klo] + (b * b * b - b) * y2[khi]) * (h * h) / 6.0;
    return 0;
}

namespace detail {

SONMETRA_AVX2_CLONES void SplineValuesOnUnitGrid(const double* y, const double* y2, int n, double step, int count,
                                                 double* out, double value) {
    if (n < 3) {
        for (int j = 0; j < count; ++j) {
            SplineValueOnUnitGrid(y, y2, n, j * step, value);
            out[j] = value;
        }
        return;
    }
    constexpr int kBlock = 64;
    double at[kBlock], xhi[kBlock], ylo[kBlock], yhi[kBlock], dlo[kBlock], dhi[kBlock];
    for (int base = 0; base < count; base += kBlock) {
        const int len = count - base < kBlock ? count - base : kBlock;
        for (int i = 0; i < len; ++i) {
            at[i] = (base + i) * step;
            int klo = static_cast<int>(at[i]) + 1;
            if (klo > n - 1) klo = n - 1;
            xhi[i] = static_cast<double>(klo);
            ylo[i] = y[klo];
            yhi[i] = y[klo + 1];
            dlo[i] = y2[klo];
            dhi[i] = y2[klo + 1];
        }
        for (int i = 0; i < len; ++i) {
            const double a = xhi[i] - at[i];
            const double b = at[i] - (xhi[i] - 1.0);
            out[base + i] = a * ylo[i] + b * yhi[i] + ((a * a * a - a) * dlo[i] + (b * b * b - b) * dhi[i]) / 6.0;
        }
    }
}

}  // namespace detail

}  // namespace sonmetra
