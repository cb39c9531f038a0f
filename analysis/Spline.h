// Natural (or clamped) cubic spline: the table of second derivatives and its
// evaluation. Tables are 1-based: element 1 is the first point, so every array
// passed here has n + 1 elements and element 0 is never a point.
//
// Spline: the classic tridiagonal construction. An end slope above 9.9e29
// makes that end natural (second derivative 0); every caller of the system
// passes 1e30 for both ends. The work array u of n doubles comes from the heap
// for the call; when it cannot be had, the failure notice runs (a beep and an
// empty message box in the workstation) and y2 is left as it was: callers go
// on and evaluate whatever the table holds.
//
// SplineValue: bisection for the bracketing interval, then the cubic. Returns
// 0 with the value in `result`, or 1 with `result` untouched when the
// interval has zero width.
#pragma once

#include <functional>

namespace sonmetra {

inline constexpr double kNaturalSplineEnd = 1e30;

void Spline(const double* x, const double* y, int n, double yp1, double ypn, double* y2);
int SplineValue(const double* x, const double* y, const double* y2, int n, double at, double& result);

// Spline(x, y, n, 1e30, 1e30, y2) for the abscissas x[k] = k − 1 of the
// spectra and the cepstrum: the same numbers (the general form's divisions
// by the unit and double intervals are exact and left out), without reading x.
void NaturalSplineOnUnitGrid(const double* y, int n, double* y2);

// NaturalSplineOnUnitGrid of four tables of n points at once, the same numbers
// for each: the four solves advance side by side, so that the divisions of
// one do not wait for those of another.
void NaturalSplinesOnUnitGrid(const double* const y[4], int n, double* const y2[4]);

// Runs when the spline's work array cannot be allocated; the default writes a
// bell to the standard error stream. The workstation installs its beep and
// empty message box.
void SetSplineFailureNotice(std::function<void()> notice);

namespace detail {
// The spline through (k − 1, y[k]), k = 1 .. n, evaluated at `at` ≥ 0: gives
// exactly what SplineValue gives on that table, with the interval found
// directly instead of by bisection (the abscissas are the whole numbers
// 0 .. n − 1, so the bisection ends at klo = min(floor(at) + 1, n − 1)).
inline int SplineValueOnUnitGrid(const double* y, const double* y2, int n, double at, double& result) {
    int klo, khi;
    if (n - 1 < 2) {
        klo = 1;
        khi = n;
    } else {
        klo = static_cast<int>(at) + 1;
        if (klo > n - 1) klo = n - 1;
        if (klo < 1) klo = 1;
        khi = klo + 1;
    }
    const double h = static_cast<double>(khi - 1) - static_cast<double>(klo - 1);
    if (h == 0.0) return 1;
    if (h == 1.0) {
        // Dividing by 1 and multiplying by 1² change nothing: the same numbers, fewer divisions.
        const double a = static_cast<double>(khi - 1) - at;
        const double b = at - static_cast<double>(klo - 1);
        result = a * y[klo] + b * y[khi] + ((a * a * a - a) * y2[klo] + (b * b * b - b) * y2[khi]) / 6.0;
        return 0;
    }
    const double xhi = static_cast<double>(khi - 1), xlo = static_cast<double>(klo - 1);
    const double a = (xhi - at) / h;
    const double b = (at - xlo) / h;
    result = a * y[klo] + b * y[khi] + ((a * a * a - a) * y2[klo] + (b * b * b - b) * y2[khi]) * (h * h) / 6.0;
    return 0;
}

// The points j·step (step ≥ 0) of a unit-grid table of n ≥ 3 points, taken
// an interval at a time: the points [begin, end) all lie in interval klo
// (between abscissas klo − 1 and klo; the last interval also takes the points
// beyond it, which extrapolate). Values as SplineValueOnUnitGrid gives them.
struct UnitGridIntervals {
    const double* y;
    const double* y2;
    int n;
    double step;
    int count;

    int interval(int j) const {
        const int k = static_cast<int>(j * step) + 1;
        return k > n - 1 ? n - 1 : k;
    }
    // The first point after `begin` in a later interval than begin's (or count).
    // The intervals never decrease with j, so an estimate from the step is
    // corrected by looking at its neighbours only.
    int groupEnd(int begin, int klo) const {
        if (klo >= n - 1 || !(step > 0.0)) return count;
        const double guess = static_cast<double>(klo) / step;
        int end = guess >= static_cast<double>(count) ? count : static_cast<int>(guess);
        if (end <= begin) end = begin + 1;
        while (end < count && interval(end) <= klo) ++end;
        while (end > begin + 1 && interval(end - 1) > klo) --end;
        return end;
    }
    // The value at point j of interval klo.
    double value(int j, int klo) const {
        const double at = j * step;
        const double a = static_cast<double>(klo) - at;
        const double b = at - static_cast<double>(klo - 1);
        return a * y[klo] + b * y[klo + 1] + ((a * a * a - a) * y2[klo] + (b * b * b - b) * y2[klo + 1]) / 6.0;
    }
};

// out[j] = the value at j·step, j = 0 .. count − 1 (step ≥ 0), on the same unit
// grid table, exactly as SplineValueOnUnitGrid gives it. A zero-width interval
// (a table of one point) leaves the running value as it was, starting from
// `value`. The points are taken a block at a time: first each point's
// interval and the four table values it needs, then the cubic for the whole
// block in one loop without indexed loads or branches, which the compiler
// vectorises (four lanes wide where the processor has AVX2; the cubic has no
// multiply-add that could be fused, so every lane rounds as one point alone).
void SplineValuesOnUnitGrid(const double* y, const double* y2, int n, double step, int count, double* out,
                            double value = 0.0);
}  // namespace detail

}  // namespace sonmetra
