#include "ViewReadouts.h"

#include "TimeBase.h"
#include "document/CKestruneDoc.h"

std::vector<ReadoutRow> computeReadouts(const sonmetra::CKestruneDoc& doc) {
    std::vector<ReadoutRow> rows;
    for (int i = 0; i < doc.channelCount(); ++i) {
        const sonmetra::CChannel& ch = doc.channel(i);
        if (!ch.present()) continue;
        ReadoutRow row;
        row.name = ch.m_name;
        row.units = ch.m_units;
        row.rateHz = ch.m_rateHz;
        row.gain = ch.m_gain;
        row.reference = ch.m_reference;
        row.cursorValue = timebase::valueAtCursor(doc, i) - ch.m_reference;
        row.cursorCalibrated = ch.calibrated(row.cursorValue);
        row.selStartMs = ch.m_selStartMs;
        row.selEndMs = ch.m_selEndMs;
        row.selLengthSamples = ch.selLengthSamples();
        rows.push_back(std::move(row));
    }
    return rows;
}

CursorTimes computeCursorTimes(const sonmetra::CKestruneDoc& doc, bool selectionPresent) {
    CursorTimes t;
    const int first = doc.firstPresentIndex();
    if (first < 0) return t;
    const sonmetra::CChannel& ch = doc.channel(first);
    t.cursorMs = ch.m_cursorMs;
    t.displayStartMs = ch.m_viewStartMs;
    t.displayEndMs = ch.m_viewEndMs;
    t.selectionPresent = selectionPresent;
    t.selStartMs = ch.m_selStartMs;
    t.selEndMs = ch.m_selEndMs;
    return t;
}

void publishReadouts(IViewReadouts* target, const sonmetra::CKestruneDoc& doc, bool selectionPresent) {
    if (target == nullptr) return;
    const std::vector<ReadoutRow> rows = computeReadouts(doc);
    target->setRows(rows);
    for (int r = 0; r < static_cast<int>(rows.size()); ++r) {
        const ReadoutRow& row = rows[static_cast<std::size_t>(r)];
        target->setCell(r, kColumnCursorValue, row.cursorValue, row.cursorCalibrated);
        target->setCell(r, kColumnSelectionLength, row.selEndMs - row.selStartMs, row.selLengthSamples);
        target->setCell(r, kColumnSelection, row.selStartMs, row.selEndMs);
    }
    target->setCursorTime(computeCursorTimes(doc, selectionPresent));
}
