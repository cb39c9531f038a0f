#include "SpectrogramEntries.h"

#include <QSaveFile>
#include <algorithm>
#include <charconv>

#include "document/MessageService.h"
#include "view/spectrogram/SpectrogramData.h"

namespace {

// The log headings of this window begin with "Spec.", short for Spectrogram,
// as users of the log know them.
const QString kFormantsMarker = QStringLiteral("Spec. Formants Marker Entry: time, F1, F2, F3, F4, F5");
const QString kFormantsDuration = QStringLiteral("Spec. Formants Duration Entry: time, F1, F2, F3, F4, F5");

MeasurementRow formantRow(const QString& kind, const SpectrogramData& data, int column) {
    MeasurementRow row{kind, {data.columnTimeMs(column)}, {}};
    for (int f : data.formantsAt(column)) row.values.push_back(f);
    return row;
}

// The shortest text that reads back as the same double.
QByteArray shortest(double v) {
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, v);
    return QByteArray(text, static_cast<int>(result.ptr - text));
}

}  // namespace

MeasurementRow spectrogramMarkerEntry(double timeMs, double frequencyHz) {
    return {QStringLiteral("Spec. Marker Entry: time, frequency"), {timeMs, frequencyHz}, {}};
}

MeasurementRow spectrogramDurationEntry(double startMs, double endMs) {
    const double a = std::min(startMs, endMs), b = std::max(startMs, endMs);
    return {QStringLiteral("Spec. Duration Entry: start, end, duration"), {a, b, b - a}, {}};
}

MeasurementRow spectrogramFormantsMarkerEntry(const SpectrogramData& data, double timeMs) {
    const int column = data.columnAt(timeMs);
    if (column < 0) return {kFormantsMarker, {timeMs, 0, 0, 0, 0, 0}, {}};
    return formantRow(kFormantsMarker, data, column);
}

std::vector<MeasurementRow> spectrogramFormantsSelectionEntries(const SpectrogramData& data, double startMs,
                                                                double endMs) {
    std::vector<MeasurementRow> rows;
    const double a = std::min(startMs, endMs), b = std::max(startMs, endMs);
    for (int i = 0; i < data.columns(); ++i) {
        const double t = data.columnTimeMs(i);
        if (t >= a && t <= b) rows.push_back(formantRow(kFormantsDuration, data, i));
    }
    return rows;
}

QString formantTableText(const SpectrogramData& data) {
    QByteArray text = "time_ms\tF1\tF2\tF3\tF4\tF5\n";
    for (int i = 0; i < data.columns(); ++i) {
        text += shortest(data.columnTimeMs(i));
        for (int f : data.formantsAt(i)) text += '\t' + QByteArray::number(f);
        text += '\n';
    }
    return QString::fromLatin1(text);
}

bool writeFormantTable(const SpectrogramData& data, const QString& path) {
    QSaveFile file(path);
    const QByteArray bytes = formantTableText(data).toLatin1();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        sonmetra::beep();
        sonmetra::showMessage(QStringLiteral("The formants could not be written to '%1':\n%2")
                                  .arg(path, file.errorString())
                                  .toStdString());
        return false;
    }
    return true;
}
