#include "analysis/QuadraticFactor.h"

#include <algorithm>
#include <cmath>

namespace sonmetra {
namespace {

constexpr double kTolerance = 1e-4;
constexpr int kMaxRounds = 100;

}  // namespace

void DivideByQuadratic(const double* c, int p, double b, double d, double* q) {
    q[0] = c[0];
    q[1] = c[0] * b + c[1];
    for (int i = 2; i <= p - 1; ++i) q[i] = b * q[i - 1] + d * q[i - 2] + c[i];
    q[p] = d * q[p - 2] + c[p];
}

bool BairstowFactor(const double* c, int p, double& bOut, double& dOut, double* q, double* e) {
    double b = 2.0, d = -1.0;
    double relB = 1.0, relD = 1.0;
    for (int round = 0; round < kMaxRounds; ++round) {
        DivideByQuadratic(c, p, b, d, q);
        if (round > 0 && relB < kTolerance && relD < kTolerance) {
            bOut = b;
            dOut = d;
            return true;
        }
        e[0] = q[0];
        e[1] = e[0] * b + q[1];
        for (int i = 2; i <= p - 3; ++i) e[i] = b * e[i - 1] + d * e[i - 2] + q[i];
        // For p = 3 the statements below use e[0] and e[1] in place of e[p−4] and e[p−3].
        const int i4 = p == 3 ? 0 : p - 4;
        const int i3 = p == 3 ? 1 : p - 3;
        const double g = d * e[i4] + q[p - 2];
        const double h = b * e[i3] + g;
        const double det = h * g - d * e[i3] * e[i3];
        const double db = -(g * q[p - 1] - q[p] * e[i3]) / det;
        const double dd = -(h * q[p] - d * e[i3] * q[p - 1]) / det;
        const double bBefore = b, dBefore = d;
        b = b + db;
        d = d + dd;
        relB = std::fabs(db) / std::max(std::fabs(bBefore), 1.0);
        relD = std::fabs(dd) / std::max(std::fabs(dBefore), std::fabs(d));
    }
    return false;
}

bool ShiftedLinFactor(const double* c, int p, double& bOut, double& dOut, double* q, double* t) {
    static constexpr double kShifts[] = {0.0, 0.5, 1.0, 1.5, 2.0};
    for (const double s : kShifts) {
        for (int i = 0; i <= p; ++i) q[i] = c[i];
        for (int len = p + 1; len >= 2; --len)
            for (int k = 0; k <= len - 2; ++k) q[k + 1] = q[k + 1] - s * q[k];
        double b = 2.0, d = -1.0;
        for (int round = 0; round < kMaxRounds; ++round) {
            t[0] = q[0];
            t[1] = t[0] * b + q[1];
            for (int i = 2; i <= p - 2; ++i) t[i] = d * t[i - 2] + b * t[i - 1] + q[i];
            // t[p−4] for p = 3 is the element before t[0], which the recurrence takes as 0.
            const double tP4 = p >= 4 ? t[p - 4] : 0.0;
            const double u = q[p - 1] - q[p] * (t[p - 3] / t[p - 2]);
            const double w = (q[p - 2] - u * (t[p - 3] / t[p - 2])) - q[p] * (tP4 / t[p - 2]);
            const double dNew = -q[p] / w;
            const double bNew = -u / w;
            const double relB = std::fabs(bNew - b) / std::max(std::fabs(bNew), std::fabs(b));
            const double relD = std::fabs(dNew - d) / std::max(std::fabs(dNew), std::fabs(d));
            b = bNew;
            d = dNew;
            if (relB < kTolerance && relD < kTolerance) {
                const double b2 = b - 2.0 * s;
                const double d2 = b * s + d - s * s;
                DivideByQuadratic(c, p, b2, d2, q);
                bOut = b2;
                dOut = d2;
                return true;
            }
        }
    }
    return false;
}

}  // namespace sonmetra
