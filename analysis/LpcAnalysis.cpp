#include "analysis/LpcAnalysis.h"

#include <cstdio>

#include "analysis/CpuClones.h"

namespace sonmetra {
namespace {

constexpr int kLagBlock = 8;

// r[k] = Σ samples[i]·samples[i+k], i = 0 .. n−1−k, for k = 0 .. p, each sum
// taken in order of i from 0.0. Eight lags are summed side by side over the
// samples all of them reach, then each finishes alone: every sum sees the
// same products in the same order as a sum of its own.
SONMETRA_AVX2_CLONES void autocorrelation(const double* samples, int n, int p, double* r) {
    for (int k0 = 0; k0 <= p; k0 += kLagBlock) {
        const int lags = p + 1 - k0 < kLagBlock ? p + 1 - k0 : kLagBlock;
        double sum[kLagBlock] = {};
        int common = 0;
        if (lags == kLagBlock) {
            common = n - (k0 + kLagBlock - 1);
            const double* shifted = samples + k0;
            for (int i = 0; i < common; ++i)
                for (int t = 0; t < kLagBlock; ++t) sum[t] += samples[i] * shifted[i + t];
            if (common < 0) common = 0;
        }
        for (int t = 0; t < lags; ++t) {
            const int k = k0 + t;
            for (int i = common; i < n - k; ++i) sum[t] += samples[i] * samples[i + k];
            r[k] = sum[t];
        }
    }
}

}  // namespace

const LpcRecord& LpcAnalysis(const double* samples, int n, int p, AnalysisWorkspace& ws) {
    if (p > kMaxLpcOrder) {
        std::fputs("Requested LPC order too large\n", stderr);
        p = kMaxLpcOrder;
    }
    LpcRecord& rec = ws.m_lpc;
    if (p < 1) {
        // Order 0: the predictor is 1 and the energy that of the block.
        double r0 = 0.0;
        for (int i = 0; i < n; ++i) r0 += samples[i] * samples[i];
        rec.order = 0;
        rec.predictor[0] = 1.0;
        rec.energy = r0;
        return rec;
    }
    rec.order = p;

    double r[kMaxLpcOrder + 1];
    autocorrelation(samples, n, p, r);

    double* u = ws.m_scratchA.data();
    double* v = ws.m_scratchB.data();
    double* k = rec.reflection;
    for (int j = 0; j < p; ++j) {
        u[j] = r[j];
        v[j] = r[j + 1];
    }
    k[1] = -v[0] / u[0];
    u[0] = u[0] + k[1] * v[0];
    for (int m = 1; m <= p - 1; ++m) {
        v[p - 1] = v[p - 1] + k[m] * u[p - m];
        for (int j = 0; j <= p - 2 - m; ++j) {
            const double uOld = u[j + 1];
            const double vOld = v[m + j];
            u[j + 1] = uOld + k[m] * vOld;
            v[m + j] = vOld + k[m] * uOld;
        }
        k[m + 1] = -v[m] / u[0];
        u[0] = u[0] + k[m + 1] * v[m];
    }
    rec.energy = u[0];

    double* a = rec.predictor;
    double* old = ws.m_scratchA.data();  // U is no longer needed
    a[0] = 1.0;
    a[1] = k[1];
    for (int i = 1; i <= p - 1; ++i) {
        for (int j = 1; j <= i; ++j) old[j] = a[j];
        for (int j = 1; j <= i; ++j) a[j] = old[j] + k[i + 1] * old[i + 1 - j];
        a[i + 1] = k[i + 1];
    }
    return rec;
}

}  // namespace sonmetra
