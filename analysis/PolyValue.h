// Horner evaluation of c[0]·x^p + c[1]·x^(p−1) + … + c[p] (highest power first).
#pragma once

namespace sonmetra {

inline double PolyValue(int p, const double* c, double x) {
    double v = c[0];
    for (int i = 1; i <= p; ++i) v = v * x + c[i];
    return v;
}

}  // namespace sonmetra
