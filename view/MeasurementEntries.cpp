#include "MeasurementEntries.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "TimeBase.h"
#include "document/CKestruneDoc.h"
#include "log/CFormLog.h"

using sonmetra::CChannel;

namespace {

// Past this many samples the values are counted per raw value first, so
// that the cubic calibration runs 65536 times instead of once a sample.
constexpr std::size_t kHistogramFrom = 1u << 16;

double calibratedSample(const CChannel& c, double raw) { return c.calibrated(raw - c.m_reference); }

}  // namespace

QString channelHeading(const CChannel& channel, int index, const QString& what, const QString& unit) {
    QString name = QString::fromStdString(channel.m_name).trimmed();
    if (name.isEmpty()) name = QString("Channel %1").arg(index + 1);
    if (!what.isEmpty()) name += " " + what;
    return unit.isEmpty() ? name : name + " (" + unit + ")";
}

SelectionStatistics selectionStatistics(const CChannel& c) {
    SelectionStatistics s;
    const std::size_t n = c.m_samples.size();
    if (n == 0) return s;
    const auto index = [n](double sample) {
        return static_cast<std::size_t>(std::clamp(sample, 0.0, static_cast<double>(n)));
    };
    const std::size_t first = std::min(index(std::floor(c.m_selStartSample)), n - 1);
    const std::size_t end = std::max(first + 1, index(std::ceil(c.m_selEndSample)));
    double sum = 0.0;
    s.minimum = std::numeric_limits<double>::infinity();
    s.maximum = -std::numeric_limits<double>::infinity();
    auto take = [&s, &sum, &c](std::int16_t raw, double count) {
        const double v = calibratedSample(c, raw);
        sum += v * count;
        s.minimum = std::min(s.minimum, v);
        s.maximum = std::max(s.maximum, v);
    };
    if (end - first < kHistogramFrom) {
        for (std::size_t i = first; i < end; ++i) take(c.m_samples[i], 1.0);
    } else {
        std::vector<std::uint64_t> counts(1u << 16, 0);
        const std::int16_t* p = c.m_samples.data();
        for (std::size_t i = first; i < end; ++i) ++counts[static_cast<std::uint16_t>(p[i] + 32768)];
        for (std::size_t v = 0; v < counts.size(); ++v)
            if (counts[v] != 0) take(static_cast<std::int16_t>(static_cast<int>(v) - 32768), double(counts[v]));
    }
    s.mean = sum / static_cast<double>(end - first);
    return s;
}

MeasurementRow markerEntry(const sonmetra::CKestruneDoc& doc) {
    MeasurementRow row{"Marker Entry: time", {}, {}};
    for (int i = 0; i < doc.channelCount(); ++i) {
        const CChannel& c = doc.channel(i);
        if (!c.present()) continue;
        const QString unit = QString::fromStdString(c.m_units);
        row.values.push_back(c.m_cursorMs);
        row.headings.push_back(channelHeading(c, i, "time", "ms"));
        row.values.push_back(calibratedSample(c, timebase::valueAtCursor(doc, i)));
        row.headings.push_back(channelHeading(c, i, QString(), unit));
    }
    return row;
}

MeasurementRow durationEntry(const sonmetra::CKestruneDoc& doc) {
    MeasurementRow row{"Duration Entry: start, end, duration", {}, {}};
    for (int i = 0; i < doc.channelCount(); ++i) {
        const CChannel& c = doc.channel(i);
        if (!c.present()) continue;
        row.values.insert(row.values.end(), {c.m_selStartMs, c.m_selEndMs, c.m_selEndMs - c.m_selStartMs});
        row.headings << channelHeading(c, i, "start", "ms") << channelHeading(c, i, "end", "ms")
                     << channelHeading(c, i, "duration", "ms");
    }
    return row;
}

MeasurementRow dataSelectionEntry(const sonmetra::CKestruneDoc& doc) {
    MeasurementRow row{"Data Selection Entry: time", {}, {}};
    for (int i = 0; i < doc.channelCount(); ++i) {
        const CChannel& c = doc.channel(i);
        if (!c.present()) continue;
        const QString unit = QString::fromStdString(c.m_units);
        const SelectionStatistics s = selectionStatistics(c);
        row.values.insert(row.values.end(), {c.m_selStartMs, s.mean, s.minimum, s.maximum});
        row.headings << channelHeading(c, i, "start", "ms") << channelHeading(c, i, "mean", unit)
                     << channelHeading(c, i, "min", unit) << channelHeading(c, i, "max", unit);
    }
    return row;
}

bool sendToLog(const MeasurementRow& row) {
    CFormLog* log = CFormLog::activeLog();
    if (!log) return false;
    log->addEntry(row.kind, row.values, row.headings);
    return true;
}
