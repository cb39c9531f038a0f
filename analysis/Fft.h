// In-place radix-2 complex FFT on separate real and imaginary arrays.
//
// Forward transform (negative exponent) of N = 2^m points, no scaling:
// bit reversal by the counter method, then m decimation-in-time stages. The
// twiddles of a stage come from the recurrence w ← w·(cos θ − i·sin θ),
// θ = π / half, with cos θ and sin θ computed once per stage; they are
// computed once per stage size by that very recurrence and kept, which gives
// the same numbers as running it inside every call. m = 0 changes nothing.
// m may go up to kMaxFftExponent (the library's own transforms use at most 12).
#pragma once

namespace sonmetra {

inline constexpr int kMaxFftExponent = 15;

void Fft(double* re, double* im, int m);

// The outputs [from, to) of Fft (0 ≤ from < to ≤ N/2), the very same numbers,
// for callers that read no other element: the last two stages compute only
// what those outputs need, and the other elements are left as intermediate
// values. Small transforms and other ranges run the whole Fft.
void FftFirstHalf(double* re, double* im, int m, int from, int to);

namespace detail {
// Where the processor has AVX2 the transform uses it; false makes it take
// the SSE2 path instead (for the tests that compare both).
void FftUseAvx2(bool use);
}  // namespace detail

}  // namespace sonmetra
