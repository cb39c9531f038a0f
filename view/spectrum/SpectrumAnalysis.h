// The numbers of the FFT/LPC spectrum window: the spectrum of the audio
// channel at the cursor or its halving running mean over a selection, the LPC
// envelope and the five formants, on the window's level scale.
//
// Levels are in dB re one sample unit. The library's power values are raw
// 10·log10|X|², which grow by 6 dB with every doubling of the FFT size; the
// window subtracts the gain of the Hamming window over the applied points,
// 20·log10(0.27·L) (half the window's sum, 0.54·L / 2), so that a sine of
// amplitude A peaks at 20·log10(A) whatever N and L are: a full-scale 16-bit
// sine at 90.3 dB. A fixed top level then means the same on every window.
//
// The LPC envelope is −10·log10|A(f)|², the power of the inverse filter turned
// over, evaluated exactly at any frequency from the predictor coefficients.
// It is shifted so that over the displayed band (bins 1 up to the frequency
// range; bin 0 holds a recording's offset, not a resonance) its mean power
// equals the spectrum's: the mean of 10^(level/10) over those bins is the same
// for both curves. Why: this is the property of linear prediction itself (the
// model spectrum carries the signal's power), it needs no level from the LPC
// block, which differs from the FFT frames in length, window and, over a
// selection, position; and a mean of powers is ruled by the strong parts of
// the spectrum, so the formant peaks of the envelope meet the strong harmonics
// rather than being held up or down by one stray bin in a weak region.
#pragma once

#include <array>
#include <vector>

#include "analysis/AnalysisSettings.h"
#include "analysis/AnalysisTypes.h"
#include "analysis/AnalysisWorkspace.h"
#include "analysis/SpectrumWindow.h"

namespace sonmetra {
class CChannel;
class CKestruneDoc;
}  // namespace sonmetra

// The frequency axis of the window: the chosen range, at most half the rate.
double displayRangeHz(const sonmetra::FftLpcSettings& settings, double rateHz);
// Points of each frame that the applied window length covers: all N when the
// length is the longest the dialog allows (the N points' duration cut to whole
// ms) or more, otherwise the points of that many ms.
int appliedPointsOf(const sonmetra::FftLpcSettings& settings, double rateHz);
// 20·log10(0.27·L): what a sine's peak gains in the raw power of a Hamming
// window of L points.
double windowGainDb(int appliedPoints);

struct SpectrumResult {
    double rateHz = 0.0;
    int fftPoints = 0;
    int appliedPoints = 0;
    double startSample = 0.0;
    double endSample = 0.0;
    int frames = 0;
    std::vector<double> levelDb;    // bins 0 .. N/2 − 1, dB re one sample unit
    std::vector<double> predictor;  // a[0..p] of the LPC block
    bool hasEnvelope = false;       // false when the coefficients are not finite
    double envelopeOffsetDb = 0.0;
    std::array<double, 5> formantHz{};  // as the library gives them (+0.5)
    std::array<double, 5> bandwidthHz{};

    bool empty() const { return levelDb.empty(); }
    double binHz() const { return rateHz / fftPoints; }
    int bins() const { return static_cast<int>(levelDb.size()); }
    // The nearest bin to a frequency, within the bins.
    int nearestBin(double hz) const;
    // The spectrum at a frequency: straight between bins, as it is drawn.
    double levelAt(double hz) const;
    // The placed envelope at a frequency.
    double envelopeAt(double hz) const { return inverseFilterDb(hz) + envelopeOffsetDb; }
    // −10·log10|A(f)|², not yet placed.
    double inverseFilterDb(double hz) const;
};

class SpectrumAnalysis {
public:
    // Computes the window at [startSample, endSample] of the channel (equal
    // for the cursor); the formants keep their values when the factoring
    // fails. Failed (memory) and Cancelled leave the result as it was.
    sonmetra::AnalysisStatus run(const sonmetra::CChannel& audio, double startSample, double endSample,
                                 const sonmetra::FftLpcSettings& settings,
                                 const sonmetra::AnalysisProgress& progress = {});
    const SpectrumResult& result() const { return m_result; }
    // The library's own state of the last run (tests compare against it).
    const sonmetra::SpectrumWindowState& libraryState() const { return m_state; }

private:
    sonmetra::AnalysisWorkspace m_workspace;
    sonmetra::SpectrumWindowState m_state;
    SpectrumResult m_result;
};

// The range the window analyses in the document's audio channel, in samples:
// the cursor twice, or the selection's start and end. False when the document
// has no audio channel with samples.
bool spectrumRangeOf(const sonmetra::CKestruneDoc& doc, bool average, double& startSample, double& endSample);
