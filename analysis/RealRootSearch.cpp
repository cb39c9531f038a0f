#include "analysis/RealRootSearch.h"

#include <algorithm>
#include <cmath>

#include "analysis/PolyValue.h"

namespace sonmetra {
namespace {

constexpr double kTolerance = 1e-4;

double refine(const double* c, int p, double lo, double hi, double fLo, double fHi) {
    double estimate = hi;
    for (;;) {
        if (std::fabs(hi - lo) / std::max(std::fabs(hi), std::fabs(lo)) < kTolerance) break;
        const double mid = (hi + lo) / 2.0;
        estimate = mid;
        if (mid == hi || mid == lo) break;
        const double f = PolyValue(p, c, mid);
        if (f == 0.0) break;
        if (f * fLo > 0.0 && f * fHi < 0.0) {
            lo = mid;
            fLo = f;
        } else {
            hi = mid;
            fHi = f;
        }
    }
    return estimate;
}

}  // namespace

bool ScanForRealRoot(const double* c, int p, double& root) {
    double x = -1.2;
    double f0 = PolyValue(p, c, x);
    if (f0 == 0.0) {
        root = x;
        return true;
    }
    const double step = 1.0 / p;
    // The points come four at a time: their abscissas by the same repeated
    // steps, their values by Horner's rule side by side (four independent
    // chains instead of one), then taken in order as one at a time would.
    constexpr int kBatch = 4;
    for (bool last = false; !last;) {
        double xs[kBatch], fs[kBatch];
        int count = 0;
        for (double next = x; count < kBatch && !last;) {
            next = next + step;
            xs[count++] = next;
            last = !(next < 1.2);
        }
        for (int b = 0; b < kBatch; ++b) fs[b] = c[0];
        for (int i = 1; i <= p; ++i)
            for (int b = 0; b < kBatch; ++b) fs[b] = fs[b] * xs[b < count ? b : 0] + c[i];
        for (int b = 0; b < count; ++b) {
            const double xPrev = x;
            x = xs[b];
            const double f = fs[b];
            if (f == 0.0) {
                root = x;
                return true;
            }
            if (f * f0 < 0.0) {
                root = refine(c, p, xPrev, x, f0, f);
                return true;
            }
            f0 = f;
        }
    }
    return false;
}

bool ExtractRealRoot(const double* c, int p, double* q, double* reversed) {
    double x = 0.0;
    if (ScanForRealRoot(c, p, x)) {
        q[0] = c[0];
        for (int i = 1; i <= p; ++i) q[i] = q[i - 1] * x + c[i];
        return true;
    }
    for (int i = 0; i <= p; ++i) reversed[i] = c[p - i];
    double y = 0.0;
    if (!ScanForRealRoot(reversed, p, y)) return false;
    q[p - 1] = c[p];
    for (int i = p - 2; i >= 0; --i) q[i] = q[i + 1] * y + c[i + 1];
    for (int i = 1; i <= p - 1; ++i) q[i] = q[i] / q[0];
    q[0] = 1.0;
    return true;
}

}  // namespace sonmetra
