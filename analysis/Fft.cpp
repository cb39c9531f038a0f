#include "analysis/Fft.h"

#include <cmath>
#include <cstdint>
#include <numbers>
#include <utility>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace sonmetra {
namespace {

struct FftTables {
    // Twiddles of the stage with half-length h are kept at [h − 1, 2h − 1).
    std::vector<double> wr, wi;
    // Index pairs swapped by the bit reversal, per exponent.
    std::vector<std::vector<std::pair<std::uint32_t, std::uint32_t>>> swaps;

    FftTables() : wr(std::size_t{1} << kMaxFftExponent), wi(std::size_t{1} << kMaxFftExponent) {
        for (int s = 1; s <= kMaxFftExponent; ++s) {
            const std::size_t half = std::size_t{1} << (s - 1);
            const double theta = std::numbers::pi / static_cast<double>(half);
            const double c = std::cos(theta);
            const double sn = std::sin(theta);
            double r = 1.0, i = 0.0;
            for (std::size_t j = 0; j < half; ++j) {
                wr[half - 1 + j] = r;
                wi[half - 1 + j] = i;
                const double nr = r * c + i * sn;
                i = i * c - r * sn;
                r = nr;
            }
        }
        swaps.resize(kMaxFftExponent + 1);
        for (int m = 0; m <= kMaxFftExponent; ++m) {
            const std::uint32_t n = 1u << m;
            std::uint32_t j = 0;
            for (std::uint32_t i = 0; i + 1 < n; ++i) {
                if (i < j) swaps[static_cast<std::size_t>(m)].emplace_back(i, j);
                std::uint32_t k = n / 2;
                while (k >= 1 && k <= j) {
                    j -= k;
                    k /= 2;
                }
                j += k;
            }
        }
    }
};

const FftTables& tables() {
    static const FftTables t;
    return t;
}

// One stage with half-length `half`: every butterfly of the stage, grouped so
// that the inner loop runs over consecutive twiddles. Butterflies of one stage
// touch disjoint pairs, so their order does not change any result.
void stage(double* __restrict re, double* __restrict im, std::size_t n, std::size_t half, const double* __restrict wr,
           const double* __restrict wi) {
    const std::size_t le = 2 * half;
    for (std::size_t g = 0; g < n; g += le) {
        double* __restrict r0 = re + g;
        double* __restrict i0 = im + g;
        double* __restrict r1 = re + g + half;
        double* __restrict i1 = im + g + half;
        for (std::size_t j = 0; j < half; ++j) {
            const double tr = wr[j] * r1[j] - wi[j] * i1[j];
            const double ti = wr[j] * i1[j] + wi[j] * r1[j];
            r1[j] = r0[j] - tr;
            i1[j] = i0[j] - ti;
            r0[j] = r0[j] + tr;
            i0[j] = i0[j] + ti;
        }
    }
}

#if defined(__SSE2__)
// Two consecutive stages (half-lengths h and 2h, h even) in one pass, two
// lanes at a time: for each group of 4h points the values at j, j+h, j+2h,
// j+3h go through the first stage's two butterflies and then the second
// stage's two. Every lane performs exactly the scalar multiplications,
// additions and subtractions of the two stages in their order (SSE2 has no
// fused multiply-add), so the numbers are those of the stages run one after
// the other, with one load and one store per value instead of two.
inline void butterfly2(__m128d& ar, __m128d& ai, __m128d& br, __m128d& bi, __m128d wr, __m128d wi) {
    const __m128d tr = _mm_sub_pd(_mm_mul_pd(wr, br), _mm_mul_pd(wi, bi));
    const __m128d ti = _mm_add_pd(_mm_mul_pd(wr, bi), _mm_mul_pd(wi, br));
    br = _mm_sub_pd(ar, tr);
    bi = _mm_sub_pd(ai, ti);
    ar = _mm_add_pd(ar, tr);
    ai = _mm_add_pd(ai, ti);
}

void stagePair(double* re, double* im, std::size_t n, std::size_t h, const double* w1r, const double* w1i,
               const double* w2r, const double* w2i) {
    const std::size_t span = 4 * h;
    for (std::size_t g = 0; g < n; g += span) {
        double* r = re + g;
        double* i = im + g;
        for (std::size_t j = 0; j < h; j += 2) {
            __m128d r0 = _mm_loadu_pd(r + j), i0 = _mm_loadu_pd(i + j);
            __m128d r1 = _mm_loadu_pd(r + j + h), i1 = _mm_loadu_pd(i + j + h);
            __m128d r2 = _mm_loadu_pd(r + j + 2 * h), i2 = _mm_loadu_pd(i + j + 2 * h);
            __m128d r3 = _mm_loadu_pd(r + j + 3 * h), i3 = _mm_loadu_pd(i + j + 3 * h);
            const __m128d a_r = _mm_loadu_pd(w1r + j), a_i = _mm_loadu_pd(w1i + j);
            butterfly2(r0, i0, r1, i1, a_r, a_i);
            butterfly2(r2, i2, r3, i3, a_r, a_i);
            butterfly2(r0, i0, r2, i2, _mm_loadu_pd(w2r + j), _mm_loadu_pd(w2i + j));
            butterfly2(r1, i1, r3, i3, _mm_loadu_pd(w2r + j + h), _mm_loadu_pd(w2i + j + h));
            _mm_storeu_pd(r + j, r0);
            _mm_storeu_pd(i + j, i0);
            _mm_storeu_pd(r + j + h, r1);
            _mm_storeu_pd(i + j + h, i1);
            _mm_storeu_pd(r + j + 2 * h, r2);
            _mm_storeu_pd(i + j + 2 * h, i2);
            _mm_storeu_pd(r + j + 3 * h, r3);
            _mm_storeu_pd(i + j + 3 * h, i3);
        }
    }
}
#endif

// Stages of half-length 1 and 2, where the generic inner loop is too short.
void firstStages(double* __restrict re, double* __restrict im, std::size_t n, const FftTables& t) {
    const double w0r = t.wr[0], w0i = t.wi[0];
    for (std::size_t i = 0; i < n; i += 2) {
        const double tr = w0r * re[i + 1] - w0i * im[i + 1];
        const double ti = w0r * im[i + 1] + w0i * re[i + 1];
        re[i + 1] = re[i] - tr;
        im[i + 1] = im[i] - ti;
        re[i] = re[i] + tr;
        im[i] = im[i] + ti;
    }
    if (n < 4) return;
    const double a0r = t.wr[1], a0i = t.wi[1], a1r = t.wr[2], a1i = t.wi[2];
    for (std::size_t i = 0; i < n; i += 4) {
        double tr = a0r * re[i + 2] - a0i * im[i + 2];
        double ti = a0r * im[i + 2] + a0i * re[i + 2];
        re[i + 2] = re[i] - tr;
        im[i + 2] = im[i] - ti;
        re[i] = re[i] + tr;
        im[i] = im[i] + ti;
        tr = a1r * re[i + 3] - a1i * im[i + 3];
        ti = a1r * im[i + 3] + a1i * re[i + 3];
        re[i + 3] = re[i + 1] - tr;
        im[i + 3] = im[i + 1] - ti;
        re[i + 1] = re[i + 1] + tr;
        im[i + 1] = im[i + 1] + ti;
    }
}

}  // namespace

void Fft(double* re, double* im, int m) {
    if (m <= 0 || m > kMaxFftExponent) return;
    const FftTables& t = tables();
    for (const auto& [a, b] : t.swaps[static_cast<std::size_t>(m)]) {
        std::swap(re[a], re[b]);
        std::swap(im[a], im[b]);
    }
    const std::size_t n = std::size_t{1} << m;
    firstStages(re, im, n, t);
    int s = 3;
#if defined(__SSE2__)
    for (; s + 1 <= m; s += 2) {
        const std::size_t h = std::size_t{1} << (s - 1);
        stagePair(re, im, n, h, t.wr.data() + h - 1, t.wi.data() + h - 1, t.wr.data() + 2 * h - 1,
                  t.wi.data() + 2 * h - 1);
    }
#endif
    for (; s <= m; ++s) {
        const std::size_t half = std::size_t{1} << (s - 1);
        stage(re, im, n, half, t.wr.data() + half - 1, t.wi.data() + half - 1);
    }
}

}  // namespace sonmetra
