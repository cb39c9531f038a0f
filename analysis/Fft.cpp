#include "analysis/Fft.h"

#include <atomic>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <utility>
#include <vector>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace sonmetra {
namespace {

// The transforms up to 2^12 points (every size the analyses use) take their
// input through a gather table; larger ones swap in place.
constexpr int kMaxGatherExponent = 12;

struct FftTables {
    // Twiddles of the stage with half-length h are kept at [h − 1, 2h − 1).
    std::vector<double> wr, wi;
    // Index pairs swapped by the bit reversal, per exponent.
    std::vector<std::vector<std::pair<std::uint32_t, std::uint32_t>>> swaps;
    // Where the bit reversal takes element i from, for the exponents up to
    // kMaxGatherExponent.
    std::vector<std::vector<std::uint32_t>> from;

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
        from.resize(kMaxGatherExponent + 1);
        for (int m = 0; m <= kMaxGatherExponent; ++m) {
            auto& f = from[static_cast<std::size_t>(m)];
            f.resize(std::size_t{1} << m);
            for (std::uint32_t i = 0; i < f.size(); ++i) f[i] = i;
            for (const auto& [a, b] : swaps[static_cast<std::size_t>(m)]) std::swap(f[a], f[b]);
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

// The values come from (sr, si) and go to (re, im), which may be the same arrays.
void stagePair(const double* sr, const double* si, double* re, double* im, std::size_t n, std::size_t h,
               const double* w1r, const double* w1i, const double* w2r, const double* w2i) {
    const std::size_t span = 4 * h;
    for (std::size_t g = 0; g < n; g += span) {
        const double* a = sr + g;
        const double* b = si + g;
        double* r = re + g;
        double* i = im + g;
        for (std::size_t j = 0; j < h; j += 2) {
            __m128d r0 = _mm_loadu_pd(a + j), i0 = _mm_loadu_pd(b + j);
            __m128d r1 = _mm_loadu_pd(a + j + h), i1 = _mm_loadu_pd(b + j + h);
            __m128d r2 = _mm_loadu_pd(a + j + 2 * h), i2 = _mm_loadu_pd(b + j + 2 * h);
            __m128d r3 = _mm_loadu_pd(a + j + 3 * h), i3 = _mm_loadu_pd(b + j + 3 * h);
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

// The same two stages four lanes at a time, on processors with AVX2. AVX2
// alone has no fused multiply-add either (that is a separate extension this
// function does not enable), so every lane still rounds exactly as the scalar
// stages do.
__attribute__((target("avx2"))) inline void butterfly4(__m256d& ar, __m256d& ai, __m256d& br, __m256d& bi, __m256d wr,
                                                       __m256d wi) {
    const __m256d tr = _mm256_sub_pd(_mm256_mul_pd(wr, br), _mm256_mul_pd(wi, bi));
    const __m256d ti = _mm256_add_pd(_mm256_mul_pd(wr, bi), _mm256_mul_pd(wi, br));
    br = _mm256_sub_pd(ar, tr);
    bi = _mm256_sub_pd(ai, ti);
    ar = _mm256_add_pd(ar, tr);
    ai = _mm256_add_pd(ai, ti);
}

__attribute__((target("avx2"))) void stagePairAvx2(const double* sr, const double* si, double* re, double* im,
                                                   std::size_t n, std::size_t h, const double* w1r, const double* w1i,
                                                   const double* w2r, const double* w2i) {
    const std::size_t span = 4 * h;
    for (std::size_t g = 0; g < n; g += span) {
        const double* a = sr + g;
        const double* b = si + g;
        double* r = re + g;
        double* i = im + g;
        for (std::size_t j = 0; j < h; j += 4) {
            __m256d r0 = _mm256_loadu_pd(a + j), i0 = _mm256_loadu_pd(b + j);
            __m256d r1 = _mm256_loadu_pd(a + j + h), i1 = _mm256_loadu_pd(b + j + h);
            __m256d r2 = _mm256_loadu_pd(a + j + 2 * h), i2 = _mm256_loadu_pd(b + j + 2 * h);
            __m256d r3 = _mm256_loadu_pd(a + j + 3 * h), i3 = _mm256_loadu_pd(b + j + 3 * h);
            const __m256d a_r = _mm256_loadu_pd(w1r + j), a_i = _mm256_loadu_pd(w1i + j);
            butterfly4(r0, i0, r1, i1, a_r, a_i);
            butterfly4(r2, i2, r3, i3, a_r, a_i);
            butterfly4(r0, i0, r2, i2, _mm256_loadu_pd(w2r + j), _mm256_loadu_pd(w2i + j));
            butterfly4(r1, i1, r3, i3, _mm256_loadu_pd(w2r + j + h), _mm256_loadu_pd(w2i + j + h));
            _mm256_storeu_pd(r + j, r0);
            _mm256_storeu_pd(i + j, i0);
            _mm256_storeu_pd(r + j + h, r1);
            _mm256_storeu_pd(i + j + h, i1);
            _mm256_storeu_pd(r + j + 2 * h, r2);
            _mm256_storeu_pd(i + j + 2 * h, i2);
            _mm256_storeu_pd(r + j + 3 * h, r3);
            _mm256_storeu_pd(i + j + 3 * h, i3);
        }
    }
}

std::atomic<bool>& avx2Allowed() {
    static std::atomic<bool> allowed{true};
    return allowed;
}

bool hasAvx2() {
    static const bool yes = __builtin_cpu_supports("avx2");
    return yes && avx2Allowed().load(std::memory_order_relaxed);
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

// Bit reversal and the stages of half-length 1 and 2 in one pass, out of
// place: the four elements of each group of four are gathered from their
// reversed places and go through firstStages' butterflies, in its order.
void gatherFirstStages(const double* __restrict re, const double* __restrict im, double* __restrict dr,
                       double* __restrict di, std::size_t n, const std::uint32_t* __restrict from, const FftTables& t) {
    const double w0r = t.wr[0], w0i = t.wi[0];
    const double a0r = t.wr[1], a0i = t.wi[1], a1r = t.wr[2], a1i = t.wi[2];
    for (std::size_t g = 0; g < n; g += 4) {
        double r0 = re[from[g]], i0 = im[from[g]], r1 = re[from[g + 1]], i1 = im[from[g + 1]];
        double r2 = re[from[g + 2]], i2 = im[from[g + 2]], r3 = re[from[g + 3]], i3 = im[from[g + 3]];
        double tr = w0r * r1 - w0i * i1, ti = w0r * i1 + w0i * r1;
        r1 = r0 - tr;
        i1 = i0 - ti;
        r0 = r0 + tr;
        i0 = i0 + ti;
        tr = w0r * r3 - w0i * i3;
        ti = w0r * i3 + w0i * r3;
        r3 = r2 - tr;
        i3 = i2 - ti;
        r2 = r2 + tr;
        i2 = i2 + ti;
        tr = a0r * r2 - a0i * i2;
        ti = a0r * i2 + a0i * r2;
        dr[g + 2] = r0 - tr;
        di[g + 2] = i0 - ti;
        dr[g] = r0 + tr;
        di[g] = i0 + ti;
        tr = a1r * r3 - a1i * i3;
        ti = a1r * i3 + a1i * r3;
        dr[g + 3] = r1 - tr;
        di[g + 3] = i1 - ti;
        dr[g + 1] = r1 + tr;
        di[g + 1] = i1 + ti;
    }
}

#if defined(__SSE2__)
// Lane l of o0 … o3 as four consecutive values at d + offsets[l].
__attribute__((target("avx2"))) inline void storeTransposed(double* d, const std::size_t* offsets, __m256d o0,
                                                            __m256d o1, __m256d o2, __m256d o3) {
    const __m256d t0 = _mm256_unpacklo_pd(o0, o1), t1 = _mm256_unpackhi_pd(o0, o1);
    const __m256d t2 = _mm256_unpacklo_pd(o2, o3), t3 = _mm256_unpackhi_pd(o2, o3);
    _mm256_storeu_pd(d + offsets[0], _mm256_permute2f128_pd(t0, t2, 0x20));
    _mm256_storeu_pd(d + offsets[1], _mm256_permute2f128_pd(t1, t3, 0x20));
    _mm256_storeu_pd(d + offsets[2], _mm256_permute2f128_pd(t0, t2, 0x31));
    _mm256_storeu_pd(d + offsets[3], _mm256_permute2f128_pd(t1, t3, 0x31));
}

// gatherFirstStages four groups at a time with AVX2. The groups q, q + n/8,
// q + n/16 and q + 3n/16 (q < n/16) gather their first elements from the four
// consecutive places b … b + 3 (b = from[4q]: the top two bits of a group's
// number are the two lowest of its reversed place), and likewise their
// second, third and fourth elements from b + n/2, b + n/4 and b + 3n/4. So
// each of the four loads fills one lane per group, the butterflies run on the
// lanes, and a 4 × 4 transpose gives every group its four results together.
__attribute__((target("avx2"))) void gatherFirstStagesAvx2(const double* __restrict re, const double* __restrict im,
                                                           double* __restrict dr, double* __restrict di, std::size_t n,
                                                           const std::uint32_t* __restrict from, const FftTables& t) {
    const __m256d w0r = _mm256_set1_pd(t.wr[0]), w0i = _mm256_set1_pd(t.wi[0]);
    const __m256d a0r = _mm256_set1_pd(t.wr[1]), a0i = _mm256_set1_pd(t.wi[1]);
    const __m256d a1r = _mm256_set1_pd(t.wr[2]), a1i = _mm256_set1_pd(t.wi[2]);
    const std::size_t offsets[4] = {0, n / 2, n / 4, 3 * n / 4};
    for (std::size_t q = 0; q < n / 16; ++q) {
        const std::size_t b = from[4 * q];
        __m256d r0 = _mm256_loadu_pd(re + b), i0 = _mm256_loadu_pd(im + b);
        __m256d r1 = _mm256_loadu_pd(re + b + n / 2), i1 = _mm256_loadu_pd(im + b + n / 2);
        __m256d r2 = _mm256_loadu_pd(re + b + n / 4), i2 = _mm256_loadu_pd(im + b + n / 4);
        __m256d r3 = _mm256_loadu_pd(re + b + 3 * n / 4), i3 = _mm256_loadu_pd(im + b + 3 * n / 4);
        butterfly4(r0, i0, r1, i1, w0r, w0i);
        butterfly4(r2, i2, r3, i3, w0r, w0i);
        butterfly4(r0, i0, r2, i2, a0r, a0i);
        butterfly4(r1, i1, r3, i3, a1r, a1i);
        // A group's results in order: r0 (element 0), r1 (1), r2 (2), r3 (3).
        storeTransposed(dr + 4 * q, offsets, r0, r1, r2, r3);
        storeTransposed(di + 4 * q, offsets, i0, i1, i2, i3);
    }
}
#endif

// Stages 1 … lastStage of the transform of 2^m points.
void runStages(double* re, double* im, int m, int lastStage) {
    const FftTables& t = tables();
    const std::size_t n = std::size_t{1} << m;
    int s = 1;
#if defined(__SSE2__)
    const bool avx2 = hasAvx2();
    const auto pair = [&](const double* sr, const double* si, int first) {
        const std::size_t h = std::size_t{1} << (first - 1);
        const double *w1r = t.wr.data() + h - 1, *w1i = t.wi.data() + h - 1;
        const double *w2r = t.wr.data() + 2 * h - 1, *w2i = t.wi.data() + 2 * h - 1;
        if (avx2)
            stagePairAvx2(sr, si, re, im, n, h, w1r, w1i, w2r, w2i);
        else
            stagePair(sr, si, re, im, n, h, w1r, w1i, w2r, w2i);
    };
    if (m <= kMaxGatherExponent && lastStage >= 4) {
        // Stages 1 and 2 into a scratch copy, stages 3 and 4 back: the bit
        // reversal costs no pass of its own.
        thread_local std::vector<double> scratchRe, scratchIm;
        if (scratchRe.size() < n) {
            scratchRe.resize(n);
            scratchIm.resize(n);
        }
        const std::uint32_t* from = t.from[static_cast<std::size_t>(m)].data();
        if (avx2)
            gatherFirstStagesAvx2(re, im, scratchRe.data(), scratchIm.data(), n, from, t);
        else
            gatherFirstStages(re, im, scratchRe.data(), scratchIm.data(), n, from, t);
        pair(scratchRe.data(), scratchIm.data(), 3);
        s = 5;
    }
#endif
    if (s == 1) {
        for (const auto& [a, b] : t.swaps[static_cast<std::size_t>(m)]) {
            std::swap(re[a], re[b]);
            std::swap(im[a], im[b]);
        }
        firstStages(re, im, n, t);
        s = 3;
    }
#if defined(__SSE2__)
    for (; s + 1 <= lastStage; s += 2) pair(re, im, s);
#endif
    for (; s <= lastStage; ++s) {
        const std::size_t half = std::size_t{1} << (s - 1);
        stage(re, im, n, half, t.wr.data() + half - 1, t.wi.data() + half - 1);
    }
}

}  // namespace

void Fft(double* re, double* im, int m) {
    if (m <= 0 || m > kMaxFftExponent) return;
    runStages(re, im, m, m);
}

void FftFirstHalf(double* re, double* im, int m, int from, int to) {
    if (m < 6 || m > kMaxFftExponent || from < 0 || to > (1 << (m - 1)) || from >= to) {
        Fft(re, im, m);
        return;
    }
    runStages(re, im, m, m - 2);
    // The last two stages as stagePair runs them (half-lengths h and 2h, one
    // group of 4h = n points), for the elements j and j + h of the outputs
    // wanted only: output j is the first result of the last stage's butterfly
    // (j, j + 2h), output j + h that of (j + h, j + 3h).
    const FftTables& t = tables();
    const int h = 1 << (m - 2);
    const double *w1r = t.wr.data() + h - 1, *w1i = t.wi.data() + h - 1;
    const double *w2r = t.wr.data() + 2 * h - 1, *w2i = t.wi.data() + 2 * h - 1;
    const auto butterfly = [](double& ar, double& ai, double& br, double& bi, double wr, double wi) {
        const double tr = wr * br - wi * bi;
        const double ti = wr * bi + wi * br;
        br = ar - tr;
        bi = ai - ti;
        ar = ar + tr;
        ai = ai + ti;
    };
    const auto sum = [](double ar, double ai, double br, double bi, double wr, double wi, double& outR, double& outI) {
        const double tr = wr * br - wi * bi;
        const double ti = wr * bi + wi * br;
        outR = ar + tr;
        outI = ai + ti;
    };
    for (int j = 0; j < h; ++j) {
        const bool low = j >= from && j < to;           // output j
        const bool high = j + h >= from && j + h < to;  // output j + h
        if (!low && !high) continue;
        double r0 = re[j], i0 = im[j], r1 = re[j + h], i1 = im[j + h];
        double r2 = re[j + 2 * h], i2 = im[j + 2 * h], r3 = re[j + 3 * h], i3 = im[j + 3 * h];
        butterfly(r0, i0, r1, i1, w1r[j], w1i[j]);
        butterfly(r2, i2, r3, i3, w1r[j], w1i[j]);
        if (low) sum(r0, i0, r2, i2, w2r[j], w2i[j], re[j], im[j]);
        if (high) sum(r1, i1, r3, i3, w2r[j + h], w2i[j + h], re[j + h], im[j + h]);
    }
}

namespace detail {
void FftUseAvx2(bool use) {
#if defined(__SSE2__)
    avx2Allowed().store(use, std::memory_order_relaxed);
#else
    (void)use;
#endif
}
}  // namespace detail

}  // namespace sonmetra
