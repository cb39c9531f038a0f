// Extraction of one quadratic factor z² − b·z − d from a polynomial of degree
// p ≥ 3 (highest power first), tolerance 1e-4, at most 100 rounds each.
//
// BairstowFactor: from b = 2, d = −1 (the start (z − 1)²). Each round divides
// by the quadratic (quotient q[0..p−2], remainder in q[p−1], q[p]); once a
// round has been completed and both relative changes of the last round are
// below the tolerance, the division just made belongs to the final b, d.
// The two measures differ on purpose: |Δb| / max(|b before|, 1) and
// |Δd| / max(|d before|, |d after|).
//
// ShiftedLinFactor: the fallback. For shifts s = 0, 0.5, 1, 1.5, 2 the
// polynomial is re-expanded about −s (Q(y) = P(y − s)) and Lin's iteration
// runs from b = 2, d = −1 with the symmetric measures
// |b' − b| / max(|b'|, |b|) and |d' − d| / max(|d'|, |d|); on convergence the
// shift is undone, b'' = b − 2s, d'' = b·s + d − s², and the original
// polynomial is divided by z² − b''·z − d'' as in Bairstow's first step.
//
// Neither guards a zero determinant or divisor: the values become non-finite
// and the iteration runs to its limit. Both write the quotient of degree
// p − 2 to `quotient`; `scratch` holds p + 1 values.
#pragma once

namespace sonmetra {

bool BairstowFactor(const double* c, int p, double& b, double& d, double* quotient, double* scratch);
bool ShiftedLinFactor(const double* c, int p, double& b, double& d, double* quotient, double* scratch);

// Division of c by z² − b·z − d (Bairstow's first step) into q[0..p].
void DivideByQuadratic(const double* c, int p, double b, double d, double* q);

}  // namespace sonmetra
