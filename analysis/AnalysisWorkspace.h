// The work buffers and records of the analysis library.
//
// Every analysis works on one AnalysisWorkspace. What carries over from one
// call to the next lives here and nowhere else:
//   - the complex work arrays re/im (4096 points): values beyond the current
//     transform size stay from earlier calls;
//   - the LPC record and the formant record, overwritten by each analysis, and
//     the reference to the formant record of the most recent LpcSpectrum call
//     (null after a failed factoring);
//   - the working copy of the predictor and the remainder buffer of the factoring;
//   - the pitch estimator's frame array x[1..] and its fine cepstrum array,
//     whose elements that a call does not write keep their earlier values.
// Windows are cached by length; a cached window holds exactly the numbers a
// rebuilt one would.
//
// A workspace is not re-entrant. The plain functions use defaultWorkspace(),
// one per thread, so a background computation on another thread never shares
// buffers with the interface thread. The drivers that share a track among
// threads give each worker its own workspace, seeded with seedFrom() from the
// caller's, so that every buffer a frame reads without writing holds what it
// would hold on the caller's workspace.
#pragma once

#include <array>
#include <vector>

#include "analysis/AnalysisTypes.h"

namespace sonmetra {

class AnalysisWorkspace {
public:
    static constexpr int kMaxFftPoints = 4096;

    AnalysisWorkspace();
    AnalysisWorkspace(const AnalysisWorkspace&) = delete;
    AnalysisWorkspace& operator=(const AnalysisWorkspace&) = delete;

    // Takes over every buffer and record of `other` (the state that carries over).
    void seedFrom(const AnalysisWorkspace& other);

    // Window of n points of the given kind (1 Hamming, otherwise rectangular).
    const double* window(int n, int kind);

    // Grows v to at least n elements, keeping its contents; new elements are 0.
    static double* ensure(std::vector<double>& v, std::size_t n) {
        if (v.size() < n) v.resize(n, 0.0);
        return v.data();
    }

    std::vector<double> m_re;  // FFT work arrays, at least 4096 points
    std::vector<double> m_im;

    // Spline tables (1-based) of FftSpectrum and LpcSpectrum.
    std::vector<double> m_splineX, m_splineY, m_splineY2;
    // FftSpectra's tables of its first three blocks (y and y2 of each).
    std::vector<double> m_spectraTables;

    LpcRecord m_lpc;
    FormantRecord m_formants;
    const FormantRecord* m_lastFormants = nullptr;
    std::array<double, kMaxLpcOrder + 1> m_coefficients{};  // predictor copy the factoring consumes
    std::array<double, kMaxLpcOrder + 1> m_remainder{};
    std::array<double, kMaxLpcOrder + 1> m_scratchA{};  // Schur U, step-up copy, Bairstow e, Lin t
    std::array<double, kMaxLpcOrder + 1> m_scratchB{};  // Schur V, reversed polynomial

    // Cepstral pitch estimator.
    std::vector<double> m_pitchFrame;  // x[1..], samples of the frame
    std::vector<double> m_cepstrum;    // power cepstrum c[0..]
    std::vector<double> m_fine;        // cepstrum at tenths of a bin
    std::vector<double> m_pitchX, m_pitchY, m_pitchY2;
    // Where the fine points of each spline interval begin, for the point count
    // and step they were found for (a cache: the same for every frame of a
    // track), and each interval's bound, rewritten by every frame.
    std::vector<int> m_fineGroups;
    int m_fineGroupsPoints = -1;
    double m_fineGroupsStep = 0.0;
    std::vector<double> m_fineBounds;

    // Autocorrelation pitch estimator.
    std::vector<double> m_acRe, m_acIm, m_acWindow, m_acWindowCorrelation;
    int m_acWindowLength = 0;
    int m_acFftExponent = 0;

private:
    struct CachedWindow {
        int length = -1;
        int kind = 0;
        std::vector<double> values;
    };
    std::array<CachedWindow, 4> m_windows;
    int m_nextWindow = 0;
};

// The calling thread's workspace.
AnalysisWorkspace& defaultWorkspace();

}  // namespace sonmetra
