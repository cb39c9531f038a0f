#include "analysis/AnalysisWorkspace.h"

#include "analysis/AnalysisWindow.h"

namespace sonmetra {

AnalysisWorkspace::AnalysisWorkspace()
    : m_re(kMaxFftPoints, 0.0),
      m_im(kMaxFftPoints, 0.0),
      m_splineX(kMaxFftPoints / 2 + 2, 0.0),
      m_splineY(kMaxFftPoints / 2 + 2, 0.0),
      m_splineY2(kMaxFftPoints / 2 + 2, 0.0),
      m_pitchFrame(kMaxFftPoints + 16, 0.0),
      m_cepstrum(kMaxFftPoints, 0.0) {}

void AnalysisWorkspace::seedFrom(const AnalysisWorkspace& other) {
    if (&other == this) return;
    m_re = other.m_re;
    m_im = other.m_im;
    m_splineX = other.m_splineX;
    m_splineY = other.m_splineY;
    m_splineY2 = other.m_splineY2;
    m_spectraTables = other.m_spectraTables;
    m_lpc = other.m_lpc;
    m_formants = other.m_formants;
    // The most recent formant record is this workspace's own record, if any.
    m_lastFormants = other.m_lastFormants ? &m_formants : nullptr;
    m_coefficients = other.m_coefficients;
    m_remainder = other.m_remainder;
    m_scratchA = other.m_scratchA;
    m_scratchB = other.m_scratchB;
    m_pitchFrame = other.m_pitchFrame;
    m_cepstrum = other.m_cepstrum;
    m_fine = other.m_fine;
    m_pitchX = other.m_pitchX;
    m_pitchY = other.m_pitchY;
    m_pitchY2 = other.m_pitchY2;
    m_fineGroups = other.m_fineGroups;
    m_fineGroupsPoints = other.m_fineGroupsPoints;
    m_fineGroupsStep = other.m_fineGroupsStep;
    m_fineBounds = other.m_fineBounds;
    m_acRe = other.m_acRe;
    m_acIm = other.m_acIm;
    m_acWindow = other.m_acWindow;
    m_acWindowCorrelation = other.m_acWindowCorrelation;
    m_acWindowLength = other.m_acWindowLength;
    m_acFftExponent = other.m_acFftExponent;
    m_windows = other.m_windows;
    m_nextWindow = other.m_nextWindow;
}

const double* AnalysisWorkspace::window(int n, int kind) {
    const int k = kind == 1 ? 1 : 0;
    for (const CachedWindow& w : m_windows)
        if (w.length == n && w.kind == k) return w.values.data();
    CachedWindow& slot = m_windows[static_cast<std::size_t>(m_nextWindow)];
    m_nextWindow = (m_nextWindow + 1) % static_cast<int>(m_windows.size());
    slot.values.assign(static_cast<std::size_t>(n > 0 ? n : 1), 0.0);
    BuildWindow(slot.values.data(), n, k);
    slot.length = n;
    slot.kind = k;
    return slot.values.data();
}

AnalysisWorkspace& defaultWorkspace() {
    thread_local AnalysisWorkspace workspace;
    return workspace;
}

}  // namespace sonmetra
