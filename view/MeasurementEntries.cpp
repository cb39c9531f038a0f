#include "MeasurementEntries.h"

#include "document/CKestruneDoc.h"
#include "log/CFormLog.h"

MeasurementRow markerEntry(const sonmetra::CKestruneDoc& doc) {
    MeasurementRow row{"Marker Entry: time", {}};
    for (int i = 0; i < doc.channelCount(); ++i)
        if (doc.channel(i).present()) row.values.push_back(doc.channel(i).m_cursorMs);
    return row;
}

MeasurementRow durationEntry(const sonmetra::CKestruneDoc& doc) {
    MeasurementRow row{"Duration Entry: start, end, duration", {}};
    for (int i = 0; i < doc.channelCount(); ++i) {
        const auto& c = doc.channel(i);
        if (!c.present()) continue;
        row.values.push_back(c.m_selStartMs);
        row.values.push_back(c.m_selEndMs);
        row.values.push_back(c.m_selEndMs - c.m_selStartMs);
    }
    return row;
}

MeasurementRow dataSelectionEntry(const sonmetra::CKestruneDoc& doc) {
    MeasurementRow row{"Data Selection Entry: time", {}};
    for (int i = 0; i < doc.channelCount(); ++i)
        if (doc.channel(i).present()) row.values.push_back(doc.channel(i).m_selStartMs);
    return row;
}

bool sendToLog(const MeasurementRow& row) {
    CFormLog* log = CFormLog::activeLog();
    if (!log) return false;
    log->addEntry(row.kind, row.values);
    return true;
}
