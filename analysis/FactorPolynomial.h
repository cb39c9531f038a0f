// Factoring of a predictor polynomial into real linear and quadratic factors,
// and the formants of the quadratic ones.
//
// c[0..p] holds P(z) = c[0]·z^p + … + c[p]; the predictor a[0..p] is used as
// it stands (P(z) = z^p·A(z)). c is consumed: it holds the successive quotients.
//   1. the formant record is cleared;
//   2. while p > 1: p = 2 takes the polynomial itself (P1 = c[1], P2 = c[2]);
//      otherwise one extraction step: a real root (scan and bisection), else a
//      quadratic by Bairstow, else by the shifted Lin iteration, else failure.
//      A real root yields no formant. A quadratic goes through RootToFormant
//      and into the quadratic arrays; its formant is kept when the bandwidth
//      is at most bandwidthLimitHz;
//   3. a last linear factor is ignored;
//   4. the formants are sorted by ascending frequency (insertion sort that
//      moves an entry only past strictly greater frequencies).
// Returns the workspace's formant record, or null when a factor could not be
// found (the record then holds what was found so far).
#pragma once

#include "analysis/AnalysisWorkspace.h"

namespace sonmetra {

const FormantRecord* FactorPolynomial(int p, double bandwidthLimitHz, double* c, double sampleRateHz,
                                      AnalysisWorkspace& ws = defaultWorkspace());

// The extraction step: 0 failure, 1 a real root taken out (quotient of
// degree p − 1 in the remainder buffer), 2 a quadratic z² − b·z − d taken out
// (quotient of degree p − 2 in the remainder buffer).
int ExtractFactor(const double* c, int p, double& b, double& d, AnalysisWorkspace& ws);

}  // namespace sonmetra
