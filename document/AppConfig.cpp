#include "AppConfig.h"

#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "AudioRate.h"
#include "BinaryFile.h"
#include "ByteOrder.h"
#include "analysis/AnalysisTypes.h"
#include "analysis/SampleRateRange.h"

namespace sonmetra {
namespace {

using namespace cfg;

std::int32_t i32(const AppConfig::Record& r, std::size_t at) { return getI32(r.data() + at, false); }
double f64(const AppConfig::Record& r, std::size_t at) { return getF64(r.data() + at, false); }
void put(AppConfig::Record& r, std::size_t at, std::int32_t v) { putI32(r.data() + at, v); }
void put(AppConfig::Record& r, std::size_t at, double v) { putF64(r.data() + at, v); }

std::string text(const AppConfig::Record& r, std::size_t at, std::size_t width) {
    const auto* c = reinterpret_cast<const char*>(r.data() + at);
    return std::string(c, strnlen(c, width));
}
void putText(AppConfig::Record& r, std::size_t at, std::size_t width, const std::string& s) {
    std::memset(r.data() + at, 0, width);
    std::memcpy(r.data() + at, s.data(), std::min(s.size(), width - 1));
}

// Takes v into target only when it lies in [lo, hi].
template <class T>
void takeIf(T& target, T v, T lo, T hi) {
    if (v >= lo && v <= hi) target = v;
}
void takeFlag(std::int32_t& target, std::int32_t v) { takeIf(target, v, 0, 1); }
void takeDouble(double& target, double v, double lo, double hi) {
    if (std::isfinite(v)) takeIf(target, v, lo, hi);
}

void readPrint(PrintSize& p, const AppConfig::Record& r, std::size_t at) {
    takeDouble(p.width, f64(r, at), 0.1, 100.0);
    takeDouble(p.height, f64(r, at + 8), 0.1, 100.0);
    takeFlag(p.inches, i32(r, at + 16));
    takeFlag(p.color, i32(r, at + 20));
}
void writePrint(const PrintSize& p, AppConfig::Record& r, std::size_t at) {
    put(r, at, p.width);
    put(r, at + 8, p.height);
    put(r, at + 16, p.inches);
    put(r, at + 20, p.color);
}

}  // namespace

AppConfig::AppConfig() {
    m_channelSettings[0].smoothingOn = 0;
    setBuiltInChannelTable();
    m_analysis.applyRateDefaults(m_audioRateHz);
}

void AppConfig::setBuiltInChannelTable(int unitChannels) {
    const int rows = std::min(unitChannels, kRows);
    for (int r = 0; r < rows; ++r) m_rows[static_cast<std::size_t>(r)] = ChannelRow{};
    if (unitChannels == 9) {
        for (int r = 1; r <= 6; ++r) m_rows[static_cast<std::size_t>(r)] = {0, 11000, 4000, 1};
        for (int r = 7; r <= 8; ++r) m_rows[static_cast<std::size_t>(r)] = {0, 5500, 2000, 1};
    }
    m_audioRateHz = 11000.0;
}

std::int32_t AppConfig::analysisFrameMs(double rate) { return static_cast<std::int32_t>(256.0 * 1000.0 / rate); }
std::int32_t AppConfig::rateRoundedHz(double rate) { return static_cast<std::int32_t>(rate / 1000.0) * 1000; }
std::int32_t AppConfig::displayFrequencyRangeHz(double rate) {
    return static_cast<std::int32_t>(rate / 2.0 / 1000.0) * 1000;
}
std::int32_t AppConfig::analysisOrder(double rate) {
    const std::int32_t n = 4 + static_cast<std::int32_t>(rate / 1000.0);
    // No analysis takes an order above 400.
    return std::min(kMaxLpcOrder, n - (n % 2));
}

bool AppConfig::fromRecord(const Record& r) {
    if (text(r, kVersionText, 16) != kVersion) return false;
    m_raw = r;
    m_driverSetting = i32(r, kDriverSetting);
    const std::string line = text(r, kInputLine, 16);
    m_inputLine = (line == "Mic" || line == "Line") ? line : "Mic";
    const std::string source = text(r, kSource, 36);
    m_source = (source == "Computer" || source == "External Hardware") ? source : "Computer";
    for (std::size_t row = 0; row < kRows; ++row) {
        ChannelRow& c = m_rows[row];
        c.word = i32(r, kChannelWords + 4 * row);
        takeIf(c.rateHz, i32(r, kRowRates + 4 * row), 1000, 45000);
        takeIf(c.bandwidthHz, i32(r, kRowBandwidths + 4 * row), 1, 8000);
        takeIf(c.gain, i32(r, kRowGains + 4 * row), 1, 350);
    }

    // Further settings, each kept only within its sensible range.
    takeIf(m_recordTimeMs, i32(r, kRecordTimeMs), 1, 24 * 3600 * 1000);
    std::int32_t rate = static_cast<std::int32_t>(m_audioRateHz);
    takeIf(rate, i32(r, kAudioRateHz), static_cast<std::int32_t>(kMinRateHz), static_cast<std::int32_t>(kMaxRateHz));
    m_audioRateHz = rate;
    takeIf(m_lineRateHz, i32(r, kLineRateHz), 1000, 200000);
    takeIf(m_externalRateHz, i32(r, kExternalRateHz), 1000, 200000);
    takeDouble(m_zoomRangeMs, f64(r, kZoomRangeMs), 0.001, 1e9);
    takeFlag(m_timeGridOn, i32(r, kTimeGridOn));
    takeDouble(m_timeGridStepMs, f64(r, kTimeGridStepMs), 0.0, 1e9);
    takeFlag(m_trackMouse, i32(r, kTrackMouse));
    readPrint(m_print, r, kPrintWidth);
    takeIf(m_logFrameStepHz, i32(r, kLogFrameStepHz), 1, 5000);

    FftLpcSettings& f = m_analysis.fftLpc;
    takeIf(f.fftSizeIndex, i32(r, kFftSizeIndex), 0, 7);
    takeIf(f.averageStepMs, i32(r, kFftAverageStepMs), 1, 100000);
    takeFlag(f.drawLpc, i32(r, kFftDrawLpc));
    takeFlag(f.absoluteLevel, i32(r, kFftAbsolute));
    takeIf(f.absoluteLevelDb, i32(r, kFftAbsoluteDb), -1000, 1000);
    readPrint(f.print, r, kFftPrint);
    takeFlag(f.frequencyGrid, i32(r, kFftFrequencyGrid));
    takeIf(f.frequencyGridHz, i32(r, kFftFrequencyGridHz), 1, 100000);
    takeFlag(f.powerGrid, i32(r, kFftPowerGrid));
    takeIf(f.powerGridDb, i32(r, kFftPowerGridDb), 1, 1000);
    // The rate-derived values take whatever a rate of the range gives.
    takeIf(f.appliedWindowMs, i32(r, kAnalysisFrameMs), 0, analysisFrameMs(kMinRateHz));
    takeIf(f.frequencyRangeHz, i32(r, kDisplayFrequencyRangeHz), 0, displayFrequencyRangeHz(kMaxRateHz));
    takeIf(f.lpcOrder, i32(r, kAnalysisOrder), 4, 400);

    PitchSettings& p = m_analysis.pitch;
    std::int32_t method = static_cast<std::int32_t>(p.method);
    takeFlag(method, i32(r, kPitchMethod));
    p.method = static_cast<PitchMethod>(method);
    std::int32_t* pitchInts[] = {&p.windowMs, &p.stepMs,       &p.deviationHz,   &p.thresholdPct,  &p.lowHz,
                                 &p.highHz,   &p.displayLowHz, &p.displayHighHz, &p.frequencyGrid, &p.frequencyGridHz,
                                 &p.timeGrid, &p.timeGridMs,   &p.drawWaveform,  &p.drawIntensity, &p.drawLabels};
    for (std::size_t k = 0; k < std::size(pitchInts); ++k)
        takeIf(*pitchInts[k], i32(r, kPitchInts + 4 * k), 0, 1000000);
    readPrint(p.print, r, kPitchPrint);

    SpectrogramSettings& s = m_analysis.spectrogram;
    takeIf(s.fftSizeIndex, i32(r, kSpecFftSizeIndex), 0, 7);
    takeIf(s.frequencyRangeHz, i32(r, kSpecFrequencyRangeHz), 1, 1000000);
    takeIf(s.dynamicRangeDb, i32(r, kSpecDynamicRangeDb), 1, 1000);
    takeDouble(s.preEmphasis, f64(r, kSpecPreEmphasis), 0.0, 1.0);
    std::int32_t* specInts[] = {&s.displayFormants, &s.lpcOrder,      &s.drawWaveform,
                                &s.drawLabels,      &s.drawIntensity, &s.frequencyGrid,
                                &s.frequencyGridHz, &s.timeGrid,      &s.timeGridMs};
    for (std::size_t k = 0; k < std::size(specInts); ++k) takeIf(*specInts[k], i32(r, kSpecInts + 4 * k), 0, 1000000);
    readPrint(s.print, r, kSpecPrint);
    takeFlag(s.colourMap, i32(r, kSpecColourMap));

    takeIf(m_multiplexType, i32(r, kMultiplexType), 1, 3);

    for (std::size_t c = 0; c < m_channelSettings.size(); ++c) {
        ChannelAnalysisSettings& cs = m_channelSettings[c];
        const std::size_t at = kChannelSettings + kChannelSettingsStride * c;
        takeDouble(cs.intensityWindowMs, f64(r, at), 0.001, 1e6);
        takeDouble(cs.intensityStepMs, f64(r, at + 8), 0.001, 1e6);
        takeFlag(cs.normalise, i32(r, at + 16));
        takeFlag(cs.smoothingOn, i32(r, at + 20));
        takeDouble(cs.smoothingLength, f64(r, at + 24), 1.0, 1e7);
    }
    setAudioRateInForce(m_audioRateHz);
    return true;
}

AppConfig::Record AppConfig::toRecord() const {
    Record r = m_raw;
    putText(r, kVersionText, 16, kVersion);
    put(r, kDriverSetting, m_driverSetting);
    putText(r, kInputLine, 16, m_inputLine);
    putText(r, kSource, 36, m_source);
    for (std::size_t row = 0; row < kRows; ++row) {
        put(r, kChannelWords + 4 * row, m_rows[row].word);
        put(r, kRowRates + 4 * row, m_rows[row].rateHz);
        put(r, kRowBandwidths + 4 * row, m_rows[row].bandwidthHz);
        put(r, kRowGains + 4 * row, m_rows[row].gain);
    }
    put(r, kRecordTimeMs, m_recordTimeMs);
    put(r, kAudioRateHz, static_cast<std::int32_t>(m_audioRateHz));
    put(r, kLineRateHz, m_lineRateHz);
    put(r, kExternalRateHz, m_externalRateHz);
    put(r, kZoomRangeMs, m_zoomRangeMs);
    put(r, kTimeGridOn, m_timeGridOn);
    put(r, kTimeGridStepMs, m_timeGridStepMs);
    put(r, kTrackMouse, m_trackMouse);
    writePrint(m_print, r, kPrintWidth);
    put(r, kLogFrameStepHz, m_logFrameStepHz);

    const FftLpcSettings& f = m_analysis.fftLpc;
    put(r, kFftSizeIndex, f.fftSizeIndex);
    put(r, kFftAverageStepMs, f.averageStepMs);
    put(r, kFftDrawLpc, f.drawLpc);
    put(r, kFftAbsolute, f.absoluteLevel);
    put(r, kFftAbsoluteDb, f.absoluteLevelDb);
    writePrint(f.print, r, kFftPrint);
    put(r, kFftFrequencyGrid, f.frequencyGrid);
    put(r, kFftFrequencyGridHz, f.frequencyGridHz);
    put(r, kFftPowerGrid, f.powerGrid);
    put(r, kFftPowerGridDb, f.powerGridDb);
    put(r, kAnalysisFrameMs, f.appliedWindowMs);
    put(r, kRateRoundedHz, rateRoundedHz(m_audioRateHz));
    put(r, kDisplayFrequencyRangeHz, f.frequencyRangeHz);
    put(r, kAnalysisOrder, f.lpcOrder);

    const PitchSettings& p = m_analysis.pitch;
    put(r, kPitchMethod, static_cast<std::int32_t>(p.method));
    const std::int32_t pitchInts[] = {p.windowMs, p.stepMs,       p.deviationHz,   p.thresholdPct,  p.lowHz,
                                      p.highHz,   p.displayLowHz, p.displayHighHz, p.frequencyGrid, p.frequencyGridHz,
                                      p.timeGrid, p.timeGridMs,   p.drawWaveform,  p.drawIntensity, p.drawLabels};
    for (std::size_t k = 0; k < std::size(pitchInts); ++k) put(r, kPitchInts + 4 * k, pitchInts[k]);
    writePrint(p.print, r, kPitchPrint);

    const SpectrogramSettings& s = m_analysis.spectrogram;
    put(r, kSpecFftSizeIndex, s.fftSizeIndex);
    put(r, kSpecFrequencyRangeHz, s.frequencyRangeHz);
    put(r, kSpecDynamicRangeDb, s.dynamicRangeDb);
    put(r, kSpecPreEmphasis, s.preEmphasis);
    const std::int32_t specInts[] = {s.displayFormants, s.lpcOrder,      s.drawWaveform,
                                     s.drawLabels,      s.drawIntensity, s.frequencyGrid,
                                     s.frequencyGridHz, s.timeGrid,      s.timeGridMs};
    for (std::size_t k = 0; k < std::size(specInts); ++k) put(r, kSpecInts + 4 * k, specInts[k]);
    writePrint(s.print, r, kSpecPrint);
    put(r, kSpecColourMap, s.colourMap);

    for (std::size_t c = 0; c < m_channelSettings.size(); ++c) {
        const ChannelAnalysisSettings& cs = m_channelSettings[c];
        const std::size_t at = kChannelSettings + kChannelSettingsStride * c;
        put(r, at, cs.intensityWindowMs);
        put(r, at + 8, cs.intensityStepMs);
        put(r, at + 16, cs.normalise);
        put(r, at + 20, cs.smoothingOn);
        put(r, at + 24, cs.smoothingLength);
    }
    put(r, kMultiplexType, m_multiplexType);
    return r;
}

bool AppConfig::readFile(const std::string& path) {
    // A pipe or device in the working folder's place would block or never end.
    std::string error;
    const int fd = openRegularFileForReading(path, error);
    std::FILE* f = fd >= 0 ? fdopen(fd, "rb") : nullptr;
    if (!f) {
        if (fd >= 0) close(fd);
        return false;
    }
    flock(fileno(f), LOCK_EX | LOCK_NB);  // exclusive while read; a lock refused is no error
    Record r{};
    const bool whole = std::fread(r.data(), 1, r.size(), f) == r.size();
    std::fclose(f);
    return whole && fromRecord(r);
}

bool AppConfig::writeFile(const std::string& path) const {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return false;
    flock(fileno(f), LOCK_EX | LOCK_NB);
    const Record r = toRecord();
    bool ok = std::fwrite(r.data(), 1, r.size(), f) == r.size();
    ok = (std::fclose(f) == 0) && ok;
    return ok;
}

void AppConfig::takeAudioRate(double rateHz) {
    // Only a rate of the range the record holds (analysis/SampleRateRange.h)
    // comes into force; any other would write nonsense into the record.
    if (!rateInRange(rateHz)) return;
    m_audioRateHz = rateHz;
    setAudioRateInForce(rateHz);
    m_analysis.fftLpc.appliedWindowMs = analysisFrameMs(rateHz);
    m_analysis.fftLpc.frequencyRangeHz = displayFrequencyRangeHz(rateHz);
    m_analysis.fftLpc.lpcOrder = analysisOrder(rateHz);
    if (!m_filePath.empty()) writeFile(m_filePath);
}

}  // namespace sonmetra
