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
