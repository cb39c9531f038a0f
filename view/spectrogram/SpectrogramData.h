// What the spectrogram window computes for a stretch of the audio channel:
// the scaled levels and formant frames of the analysis library, and per
// column the extremes of the waveform and the intensity for the panes.
//
// Cells follow the image area: one column per device pixel of its width and
// one frequency point per device pixel of its height, but never more columns
// than the stretch has samples, and both shrunk in proportion when the cells
// would exceed kMaxCells. Every per-column quantity is therefore
// C values, so opening an hour costs what opening a second does (only the
// waveform pane's min/max summary, built once per sample block, reads every
// sample).
#pragma once

#include <QImage>
#include <QSize>
#include <array>
#include <vector>

#include "analysis/AnalysisSettings.h"
#include "analysis/AnalysisTypes.h"
#include "analysis/Spectrogram.h"

class ChannelSummaries;

namespace sonmetra {
class CChannel;
class CKestruneDoc;
}  // namespace sonmetra

// Why there is nothing to analyse.
inline constexpr char kNoAudioChannelText[] =
    "The spectrogram is computed from the audio channel, and this document has none.";
inline constexpr char kEmptyRangeText[] = "The stretch to analyse holds no samples.";

// The analysed stretch, in samples of the audio channel.
struct SpectrogramRange {
    double startSample = 0.0;
    double endSample = 0.0;
    double totalSamples = 0.0;
    double rateHz = 0.0;
    double msPerSample = 0.0;

    double startMs() const { return startSample * msPerSample; }
    double endMs() const { return endSample * msPerSample; }
    double lengthMs() const { return endMs() - startMs(); }
    bool empty() const { return !(endSample > startSample); }

    // Spectrogram All, Selection and Window: the whole channel, its selection,
    // its displayed range; each limited to the channel's samples.
    static SpectrogramRange whole(const sonmetra::CChannel& channel);
    static SpectrogramRange selection(const sonmetra::CChannel& channel);
    static SpectrogramRange displayed(const sonmetra::CChannel& channel);
    // The same stretch limited to a channel whose samples were replaced.
    SpectrogramRange limitedTo(const sonmetra::CChannel& channel) const;
};

// At most this many cells (128 MB of levels) whatever the picture's size.
inline constexpr double kMaxCells = 4096.0 * 4096.0;

struct CellCounts {
    int columns = 0;
    int points = 0;
};
// The cell counts of an image area of `imagePx` device pixels over `rangeSamples`.
CellCounts cellCountsFor(QSize imagePx, double rangeSamples);

// The settings a computation uses: those in force, with the frequency range
// kept at or below the channel's Nyquist frequency (above it the spectrum
// would only be extrapolated).
sonmetra::SpectrogramSettings effectiveSettings(const sonmetra::SpectrogramSettings& settings, double rateHz);

struct SpectrogramData {
    SpectrogramRange range;
    int channel = -1;
    sonmetra::SpectrogramSettings settings;  // as computed (effectiveSettings)
    bool formantsTracked = false;
    sonmetra::SpectrogramResult result;
    std::vector<float> waveMin, waveMax;  // per column, sample units; empty unless the waveform pane is on
    std::vector<float> intensityDb;       // per column; empty unless the intensity pane is on
    double intensityLowDb = 0.0, intensityHighDb = 1.0;

    int columns() const { return result.columns; }
    int points() const { return result.points; }
    double columnMs() const { return columns() > 0 ? range.lengthMs() / columns() : 0.0; }
    // Start time of column i.
    double columnTimeMs(int i) const { return range.startMs() + i * columnMs(); }
    // The column that holds time `ms`; -1 outside the stretch.
    int columnAt(double ms) const;
    // The five formants of column i (Hz, 0 = none); zeros without tracking.
    std::array<int, 5> formantsAt(int i) const;

    // The levels as an image of C × P pixels, 0 Hz in the bottom row, through
    // the grey or the colour table; made once per table and kept. A null
    // image when there was no memory for it.
    const QImage& levelsImage(bool colour) const;

private:
    mutable QImage m_image;
    mutable int m_imageTable = -1;
};

struct SpectrogramRequest {
    const sonmetra::CKestruneDoc* doc = nullptr;
    int channel = -1;
    SpectrogramRange range;
    sonmetra::SpectrogramSettings settings;  // in force; made effective here
    CellCounts cells;
};

// Computes the levels, the formants when "Display formants" is on, and the
// panes' columns. Cancelled or Failed leave `out` untouched.
sonmetra::AnalysisStatus computeSpectrogramData(const SpectrogramRequest& request, ChannelSummaries& summaries,
                                                SpectrogramData& out, const sonmetra::AnalysisProgress& progress = {});
