#include "SpectrogramData.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "analysis/FrameIntensity.h"
#include "document/CKestruneDoc.h"
#include "view/ChannelSummaries.h"
#include "view/spectrogram/SpectrogramPalette.h"

namespace {

SpectrogramRange rangeOf(const sonmetra::CChannel& channel, double a, double b) {
    SpectrogramRange r;
    r.totalSamples = channel.m_sampleCount;
    r.rateHz = channel.m_rateHz;
    r.msPerSample = channel.msPerSample();
    r.startSample = std::clamp(std::min(a, b), 0.0, r.totalSamples);
    r.endSample = std::clamp(std::max(a, b), 0.0, r.totalSamples);
    return r;
}

// Extremes of the samples each column spans, including the first sample of
// the next column, so that the pane's trace has no gaps between columns.
void waveformColumns(const sonmetra::CChannel& channel, ChannelSummaries& summaries, int index,
                     const SpectrogramRange& range, int columns, SpectrogramData& out) {
    const sonmetra::MinMaxSummary& summary = summaries.forChannel(index, channel);
    const std::int16_t* samples = channel.m_samples.data();
    const double step = (range.endSample - range.startSample) / columns;
    out.waveMin.assign(static_cast<std::size_t>(columns), 0.0f);
    out.waveMax.assign(static_cast<std::size_t>(columns), 0.0f);
    for (int i = 0; i < columns; ++i) {
        const auto first = static_cast<std::size_t>(range.startSample + i * step);
        const auto next = static_cast<std::size_t>(range.startSample + (i + 1) * step);
        sonmetra::SampleRange extremes;
        if (summary.range(samples, first, std::max(next + 1, first + 1), extremes)) {
            out.waveMin[static_cast<std::size_t>(i)] = extremes.min;
            out.waveMax[static_cast<std::size_t>(i)] = extremes.max;
        }
    }
}

// The level of a frame of the channel's intensity window centred on each
// column, shifted inside the signal at its ends.
void intensityColumns(const sonmetra::CChannel& channel, const SpectrogramRange& range, int columns,
                      SpectrogramData& out) {
    const double total = range.totalSamples;
    const double frame = std::clamp(std::round(range.rateHz * channel.m_intensityWindowMs * 0.001), 1.0, total);
    const double step = (range.endSample - range.startSample) / columns;
    out.intensityDb.assign(static_cast<std::size_t>(columns), 0.0f);
    double low = 1e9, high = -1e9;
    for (int i = 0; i < columns; ++i) {
        const double centre = range.startSample + (i + 0.5) * step;
        const double begin = std::floor(std::clamp(centre - frame / 2.0, 0.0, total - frame));
        double value = 0.0, mn = 0.0, mx = 0.0;
        sonmetra::FrameIntensity(channel.m_samples.data(), &value, mn, mx, 0.0, begin, frame, 1.0, 1, 0, 0);
        out.intensityDb[static_cast<std::size_t>(i)] = static_cast<float>(value);
        // Silent frames read 0 dB and would stretch the scale down to nothing.
        if (value > 0.0) {
            low = std::min(low, value);
            high = std::max(high, value);
        }
    }
    if (high < low) {
        out.intensityLowDb = 0.0;
        out.intensityHighDb = 10.0;
        return;
    }
    out.intensityLowDb = std::floor(low / 10.0) * 10.0;
    out.intensityHighDb = std::max(std::ceil(high / 10.0) * 10.0, out.intensityLowDb + 10.0);
}

}  // namespace

SpectrogramRange SpectrogramRange::whole(const sonmetra::CChannel& channel) {
    return rangeOf(channel, 0.0, channel.m_sampleCount);
}

SpectrogramRange SpectrogramRange::selection(const sonmetra::CChannel& channel) {
    return rangeOf(channel, channel.m_selStartSample, channel.m_selEndSample);
}

SpectrogramRange SpectrogramRange::displayed(const sonmetra::CChannel& channel) {
    return rangeOf(channel, channel.m_viewStartSample, channel.m_viewEndSample);
}

SpectrogramRange SpectrogramRange::limitedTo(const sonmetra::CChannel& channel) const {
    return rangeOf(channel, startSample, endSample);
}

CellCounts cellCountsFor(QSize imagePx, double rangeSamples) {
    CellCounts cells;
    if (imagePx.width() < 1 || imagePx.height() < 1 || !(rangeSamples >= 1.0)) return cells;
    double columns = std::min<double>(imagePx.width(), std::floor(rangeSamples));
    double points = imagePx.height();
    // A huge picture (a poster-sized render or print) gets fewer, larger
    // cells rather than gigabytes of levels; the image is stretched to fit.
    if (columns * points > kMaxCells) {
        const double shrink = std::sqrt(kMaxCells / (columns * points));
        columns = std::max(1.0, std::floor(columns * shrink));
        points = std::max(1.0, std::floor(points * shrink));
    }
    cells.columns = static_cast<int>(columns);
    cells.points = static_cast<int>(points);
    return cells;
}

sonmetra::SpectrogramSettings effectiveSettings(const sonmetra::SpectrogramSettings& settings, double rateHz) {
    sonmetra::SpectrogramSettings s = settings;
    const int nyquistHz = static_cast<int>(rateHz / 2.0);
    if (nyquistHz >= 1) s.frequencyRangeHz = std::clamp(s.frequencyRangeHz, 1, nyquistHz);
    return s;
}

int SpectrogramData::columnAt(double ms) const {
    const double width = columnMs();
    if (!(width > 0.0) || ms < range.startMs() || ms > range.endMs()) return -1;
    return std::min(columns() - 1, static_cast<int>((ms - range.startMs()) / width));
}

std::array<int, 5> SpectrogramData::formantsAt(int i) const {
    std::array<int, 5> f{0, 0, 0, 0, 0};
    if (i < 0 || static_cast<std::size_t>(i) >= result.formants.size()) return f;
    for (std::size_t k = 0; k < 5; ++k) f[k] = result.formants[static_cast<std::size_t>(i)][k];
    return f;
}

const QImage& SpectrogramData::levelsImage(bool colour) const {
    const int table = colour ? 1 : 0;
    if (m_imageTable == table && !m_image.isNull()) return m_image;
    const int c = columns(), p = points();
    m_image = QImage(std::max(c, 1), std::max(p, 1), QImage::Format_RGB32);
    m_imageTable = -1;
    if (m_image.isNull()) return m_image;  // out of memory: the caller shows the message
    const PaletteTable& palette = colour ? colourPalette() : greyPalette();
    const double rangeDb = settings.dynamicRangeDb;
    m_image.fill(palette[0]);
    for (int i = 0; i < c; ++i) {
        const double* column = result.column(i);
        for (int k = 0; k < p; ++k) {
            auto* row = reinterpret_cast<QRgb*>(m_image.scanLine(p - 1 - k));
            row[i] = palette[static_cast<std::size_t>(paletteIndex(column[k], rangeDb))];
        }
    }
    m_imageTable = table;
    return m_image;
}

sonmetra::AnalysisStatus computeSpectrogramData(const SpectrogramRequest& request, ChannelSummaries& summaries,
                                                SpectrogramData& out, const sonmetra::AnalysisProgress& progress) {
    using sonmetra::AnalysisStatus;
    if (request.doc == nullptr || request.channel < 0 || request.cells.columns < 1 || request.cells.points < 1)
        return AnalysisStatus::Failed;
    const sonmetra::CChannel& channel = request.doc->channel(request.channel);
    SpectrogramData data;
    data.range = request.range;
    data.channel = request.channel;
    data.settings = effectiveSettings(request.settings, request.range.rateHz);
    data.formantsTracked = data.settings.displayFormants != 0;

    sonmetra::SpectrogramInput input;
    input.samples = channel.m_samples.data();
    input.sampleCount = request.range.totalSamples;
    input.startSample = request.range.startSample;
    input.endSample = request.range.endSample;
    input.rateHz = request.range.rateHz;
    const AnalysisStatus status = sonmetra::ComputeSpectrogram(
        input, data.settings, request.cells.columns, request.cells.points, data.formantsTracked, data.result, progress);
    if (status != AnalysisStatus::Ok) return status;
    try {
        if (data.settings.drawWaveform != 0)
            waveformColumns(channel, summaries, request.channel, request.range, data.columns(), data);
        if (data.settings.drawIntensity != 0) intensityColumns(channel, request.range, data.columns(), data);
    } catch (const std::bad_alloc&) {
        return AnalysisStatus::Failed;
    }
    out = std::move(data);
    return AnalysisStatus::Ok;
}
