// Real-root search of the factoring: scan and bisection, then deflation.
//
//   1. Scan P(x) from x = −1.2 in steps of 1/p while x < 1.2 (tested after
//      the step); an exact zero is the root, a sign change is refined by
//      bisection to a relative width of 1e-4 (or until the midpoint equals an
//      end, or hits an exact zero).
//   2. No sign change: scan the reversed polynomial r[i] = c[p−i] (roots are
//      the reciprocals) the same way.
//   3. Deflation: a root x of P by forward division, q[i] = q[i−1]·x + c[i]; a
//      root y of the reversed polynomial by backward division from the
//      constant end, q[i] = q[i+1]·y + c[i+1], made monic by dividing by q[0].
// The quotient of degree p − 1 goes to `quotient` (q[0 .. p−1]).
#pragma once

namespace sonmetra {

// True when a real root was found and taken out. `reversed` is scratch of p + 1 values.
bool ExtractRealRoot(const double* c, int p, double* quotient, double* reversed);

// One scan of c over [−1.2, 1.2) with its refinement; true with the root.
bool ScanForRealRoot(const double* c, int p, double& root);

}  // namespace sonmetra
