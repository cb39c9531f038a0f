// Linear prediction of a block: autocorrelation method, Schur recursion,
// step-up to the predictor polynomial.
//
//   1. p above 400: "Requested LPC order too large\n" on the standard error
//      stream, order 400 used (the record keeps the order used);
//   2. r[k] = Σ x[i]·x[i+k], i = 0 .. n−1−k, k = 0 .. p: no lag window, no
//      noise correction, no normalisation;
//   3. Schur recursion on U = r[0..p−1], V = r[1..p] giving the reflection
//      coefficients k[1..p] and the residual energy E = U[0];
//   4. step-up: a[0] = 1, a[1] = k[1], a[j] += k[i+1]·a[i+1−j], a[i+1] = k[i+1].
// The inverse filter is A(z) = a[0] + a[1]·z⁻¹ + … + a[p]·z⁻ᵖ. A silent block
// (r[0] = 0) is not tested for: the coefficients become non-finite.
// The result is the workspace's LPC record, overwritten by the next call.
#pragma once

#include "analysis/AnalysisWorkspace.h"

namespace sonmetra {

const LpcRecord& LpcAnalysis(const double* samples, int n, int p, AnalysisWorkspace& ws = defaultWorkspace());

}  // namespace sonmetra
