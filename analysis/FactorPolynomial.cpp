#include "analysis/FactorPolynomial.h"

#include <cstdio>

#include "analysis/QuadraticFactor.h"
#include "analysis/RealRootSearch.h"
#include "analysis/RootToFormant.h"

namespace sonmetra {

int ExtractFactor(const double* c, int p, double& b, double& d, AnalysisWorkspace& ws) {
    double* rem = ws.m_remainder.data();
    if (ExtractRealRoot(c, p, rem, ws.m_scratchB.data())) return 1;
    if (BairstowFactor(c, p, b, d, rem, ws.m_scratchA.data())) return 2;
    if (ShiftedLinFactor(c, p, b, d, rem, ws.m_scratchA.data())) return 2;
    return 0;
}

const FormantRecord* FactorPolynomial(int p, double bandwidthLimitHz, double* c, double sampleRateHz,
                                      AnalysisWorkspace& ws) {
    FormantRecord& rec = ws.m_formants;
    rec = FormantRecord{};
    if (p > kMaxLpcOrder) p = kMaxLpcOrder;
    int quadratics = 0;
    while (p > 1) {
        double p1 = 0.0, p2 = 0.0;
        int answer;
        if (p == 2) {
            p1 = c[1];
            p2 = c[2];
            answer = 2;
        } else {
            double b = 0.0, d = 0.0;
            answer = ExtractFactor(c, p, b, d, ws);
            p1 = -b;
            p2 = -d;
        }
        if (answer == 0) {
            rec.quadraticCount = quadratics;
            return nullptr;
        } else if (answer == 1) {
            p -= 1;
        } else if (answer == 2) {
            const FormantOfRoot f = RootToFormant(p1, p2, sampleRateHz);
            rec.p1[quadratics] = p1;
            rec.p2[quadratics] = p2;
            rec.rootReal[quadratics] = f.rootReal;
            rec.rootImag[quadratics] = f.rootImag;
            ++quadratics;
            p -= 2;
            if (f.bandwidthHz <= bandwidthLimitHz) {
                rec.frequency[rec.formantCount] = f.frequencyHz;
                rec.bandwidth[rec.formantCount] = f.bandwidthHz;
                ++rec.formantCount;
            }
        } else {
            std::fputs("  factor() is confused,", stderr);
            rec.quadraticCount = quadratics;
            return nullptr;
        }
        for (int i = 0; i <= p; ++i) c[i] = ws.m_remainder[static_cast<std::size_t>(i)];
    }
    for (int i = 1; i < rec.formantCount; ++i) {
        const double f = rec.frequency[i];
        const double bw = rec.bandwidth[i];
        int j = i - 1;
        while (j >= 0 && rec.frequency[j] > f) {
            rec.frequency[j + 1] = rec.frequency[j];
            rec.bandwidth[j + 1] = rec.bandwidth[j];
            --j;
        }
        rec.frequency[j + 1] = f;
        rec.bandwidth[j + 1] = bw;
    }
    rec.quadraticCount = quadratics;
    return &rec;
}

}  // namespace sonmetra
