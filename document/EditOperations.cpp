#include "EditOperations.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "BinaryFile.h"
#include "CKestruneDoc.h"
#include "EditClipboard.h"
#include "FileReader.h"
#include "KvdFormat.h"
#include "MessageService.h"
#include "UserException.h"
#include "res/StringTable.h"

namespace sonmetra {
namespace {

[[noreturn]] void abandonWith(int stringId) {
    beep();
    showMessage(stringId);
    throw UserException();
}

// Keeps the shared display fields inside the edited channel; the view then
// recomputes its range from the scroll bar.
void limitDisplayToChannel(CChannel& c) {
    const double n = c.m_sampleCount;
    const double ratio = msPerSampleOf(c);
    auto limit = [n](double& v) { v = std::clamp(v, 0.0, n); };
    limit(c.m_viewStartSample);
    limit(c.m_viewEndSample);
    if (c.m_viewEndSample <= c.m_viewStartSample) {
        c.m_viewStartSample = 0.0;
        c.m_viewEndSample = n;
    }
    limit(c.m_prevViewStartSample);
    limit(c.m_prevViewEndSample);
    c.m_viewStartMs = c.m_viewStartSample * ratio;
    c.m_viewEndMs = c.m_viewEndSample * ratio;
    limit(c.m_cursorSample);
    limit(c.m_selStartSample);
    limit(c.m_selEndSample);
    c.m_cursorMs = c.m_cursorSample * ratio;
    c.m_selStartMs = c.m_selStartSample * ratio;
    c.m_selEndMs = c.m_selEndSample * ratio;
}

// Refuses a cut that would leave a channel empty, before anything is cut.
void refuseWholeChannelCut(const CKestruneDoc& doc, const EditClipboard& clipboard) {
    for (int i = 0; i < doc.channelCount() && i < clipboard.channelCount(); ++i) {
        const CChannel& c = doc.channel(i);
        const auto length = static_cast<std::size_t>(clipboard.channel(i).lengthSamples);
        if (c.m_samples.size() > 0 && length >= c.m_samples.size()) abandonWith(IDS_CUT_WHOLE_SIGNAL);
    }
}

}  // namespace

// ---- Undo temp file ------------------------------------------------------

std::string UndoTempFile::pathFor(const std::string& folder, const std::string& title) {
    return folder + title + "@@tmp";
}

bool UndoTempFile::write(const CKestruneDoc& doc) {
    // The file is overwritten in place and cut to its new length at the end
    // rather than truncated first: rewriting pages the system already holds
    // is several times faster than giving them back and allocating anew,
    // and each edit rewrites a file of about the same size.
    const int fd = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    std::FILE* f = fd >= 0 ? ::fdopen(fd, "wb") : nullptr;
    if (!f) {
        if (fd >= 0) ::close(fd);
        showMessage(IDS_TEMP_SAVE_ERROR);
        return false;
    }
    // Headers and label records go through one large buffer; the sample
    // blocks are written straight from the channels.
    std::setvbuf(f, nullptr, _IOFBF, 1 << 20);
    bool ok = writeKvd(f, doc, false);
    ok = (std::fflush(f) == 0) && ok;
    const off_t length = ::ftello(f);
    ok = ok && length >= 0 && ::ftruncate(fd, length) == 0;
    ok = (std::fclose(f) == 0) && ok;
    if (!ok) showMessage(IDS_TEMP_SAVE_ERROR);
    return ok;
}

bool UndoTempFile::saveForUndo(const CKestruneDoc& doc) {
    m_available = false;
    m_editNoted = false;
    if (write(doc)) {
        m_state.clear();
        for (int i = 0; i < doc.channelCount(); ++i) {
            const CChannel& c = doc.channel(i);
            if (!c.m_inUse) continue;
            ChannelState s;
            copyChannelFields(c, s.fields);
            s.sampleCount = static_cast<double>(c.m_samples.size());
            m_state.push_back(std::move(s));
        }
        m_selectionFlag = doc.selectionFlag();
        m_available = true;
        return true;
    }
    beep();
    return showMessage(IDS_UNDO_UNAVAILABLE_CONTINUE, MsgButtons::YesNo, MsgIcon::Question) == MsgAnswer::Yes;
}

void UndoTempFile::noteEditDone(const CKestruneDoc& doc, std::vector<EditSpan> spans) {
    m_labelsAfterEdit.clear();
    for (int i = 0; i < doc.channelCount(); ++i) m_labelsAfterEdit.push_back(doc.channel(i).m_labels);
    m_spans = std::move(spans);
    m_editNoted = true;
}

bool UndoTempFile::restore(CKestruneDoc& doc) {
    BinaryFile file;
    if (!file.open(m_path)) {
        showMessage(IDS_TEMP_READ_ERROR);
        return false;
    }
    // Read into a scratch document, so that a refused or short file leaves
    // the user's document as it was.
    CKestruneDoc scratch;
    DefaultImportDialogs dialogs;
    ReadContext context{&dialogs, m_path};
    const ReadStatus status = readRvmPc(file, scratch, context);
    if (status == ReadStatus::NotMyType) {
        showMessage(IDS_WRONG_TEMP_FILE);
        return false;
    }
    if (status != ReadStatus::Accepted) return false;  // the reader has shown its message

    const int count = scratch.channelCount();
    // The label work done since the edit, carried onto the labels read back.
    if (m_editNoted && count == doc.channelCount() && m_labelsAfterEdit.size() == static_cast<std::size_t>(count)) {
        for (int i = 0; i < count; ++i) {
            CChannel& restored = scratch.channel(i);
            const EditSpan span =
                i < static_cast<int>(m_spans.size()) ? m_spans[static_cast<std::size_t>(i)] : EditSpan{};
            restored.m_labels = carryLabelWork(restored.m_labels, m_labelsAfterEdit[static_cast<std::size_t>(i)],
                                               doc.channel(i).m_labels, span, msPerSampleOf(restored));
        }
    }
    for (int i = 0; i < CKestruneDoc::kSlots; ++i) doc.channel(i) = std::move(scratch.channel(i));
    doc.setChannelCount(count);

    // The reader set every range to the whole channel; put back the state of
    // the moment of the save where it still fits the channel read.
    if (m_state.size() == static_cast<std::size_t>(count)) {
        for (int i = 0; i < count; ++i) {
            CChannel& c = doc.channel(i);
            const ChannelState& s = m_state[static_cast<std::size_t>(i)];
            if (s.sampleCount != static_cast<double>(c.m_samples.size())) continue;
            const CChannel& f = s.fields;
            c.m_gain = f.m_gain;
            c.m_bandwidthHz = f.m_bandwidthHz;
            c.m_converterRange = f.m_converterRange;
            c.m_converterFullScale = f.m_converterFullScale;
            c.m_cursorSample = f.m_cursorSample;
            c.m_cursorMs = f.m_cursorMs;
            c.m_viewStartSample = f.m_viewStartSample;
            c.m_viewEndSample = f.m_viewEndSample;
            c.m_viewStartMs = f.m_viewStartMs;
            c.m_viewEndMs = f.m_viewEndMs;
            c.m_prevViewStartSample = f.m_prevViewStartSample;
            c.m_prevViewEndSample = f.m_prevViewEndSample;
            c.m_selStartMs = f.m_selStartMs;
            c.m_selEndMs = f.m_selEndMs;
            c.m_selStartSample = f.m_selStartSample;
            c.m_selEndSample = f.m_selEndSample;
            c.m_currentReading = f.m_currentReading;
            c.m_referenceCode = f.m_referenceCode;
            c.m_strip = f.m_strip;
            c.m_intensityWindowMs = f.m_intensityWindowMs;
            c.m_intensityStepMs = f.m_intensityStepMs;
            c.m_normalise = f.m_normalise;
            c.m_smoothingOn = f.m_smoothingOn;
            c.m_smoothingLength = f.m_smoothingLength;
        }
        doc.setSelectionFlag(m_selectionFlag);
    } else {
        doc.setSelectionFlag(false);
    }
    doc.setHoldsData(count > 0);
    doc.setModified(true);
    m_available = false;
    return true;
}

// ---- Edit steps -----------------------------------------------------------

EditSpan replaceRange(CChannel& c, std::size_t first, std::size_t removeCount, const CChannel* insert) {
    SampleBlock& s = c.m_samples;
    const std::size_t old = s.size();
    first = std::min(first, old);
    removeCount = std::min(removeCount, old - first);
    const std::size_t added = insert ? insert->m_samples.size() : 0;
    const std::size_t newSize = old - removeCount + added;
    const std::size_t tail = old - first - removeCount;
    const double ratio = msPerSampleOf(c);

    if (added > removeCount) {
        // Reserving the exact size first keeps the block from doubling;
        // the new part is overwritten at once, so it is not zeroed first.
        if (!s.reserve(newSize) || !s.resizeForOverwrite(newSize)) abandonWith(IDS_NO_MEMORY);
        std::memmove(s.data() + first + added, s.data() + first + removeCount, tail * 2);
    } else if (added < removeCount) {
        std::memmove(s.data() + first + added, s.data() + first + removeCount, tail * 2);
        (void)s.resize(newSize);  // shrinking keeps the block
    }
    if (added > 0) std::memcpy(s.data() + first, insert->m_samples.data(), added * 2);

    const double startMs = static_cast<double>(first) * ratio;
    const double endMs = static_cast<double>(first + removeCount) * ratio;
    const double shiftMs = (static_cast<double>(added) - static_cast<double>(removeCount)) * ratio;
    std::vector<CLabel> labels;
    labels.reserve(c.m_labels.size() + (insert ? insert->m_labels.size() : 0));
    for (const CLabel& l : c.m_labels)
        if (l.timeMs < startMs) labels.push_back(l);
    if (insert) {
        for (const CLabel& l : insert->m_labels) {
            labels.push_back(l);
            labels.back().timeMs = l.timeMs + startMs;
        }
    }
    for (const CLabel& l : c.m_labels) {
        if (l.timeMs >= endMs) {
            labels.push_back(l);
            labels.back().timeMs = l.timeMs + shiftMs;
        }
    }
    std::stable_sort(labels.begin(), labels.end(),
                     [](const CLabel& a, const CLabel& b) { return a.timeMs < b.timeMs; });
    c.m_labels = std::move(labels);

    c.m_sampleCount = static_cast<double>(newSize);
    c.m_durationMs = c.m_sampleCount * ratio;
    // The intensity contour described the old samples.
    c.m_intensity.clear();
    c.m_intensityValid = 0;
    c.m_intensityShown = 0;
    limitDisplayToChannel(c);
    return EditSpan{first, removeCount, added};
}

void clearSelectionAndCursor(CKestruneDoc& doc) {
    for (int i = 0; i < doc.channelCount(); ++i) {
        CChannel& c = doc.channel(i);
        c.m_cursorSample = c.m_cursorMs = 0.0;
        c.m_selStartSample = c.m_selEndSample = 0.0;
        c.m_selStartMs = c.m_selEndMs = 0.0;
    }
    doc.setSelectionFlag(false);
}

void copySelection(const CKestruneDoc& doc, EditClipboard& clipboard) { clipboard.copyFrom(doc); }

std::vector<EditSpan> deleteCopiedRange(CKestruneDoc& doc, const EditClipboard& clipboard) {
    refuseWholeChannelCut(doc, clipboard);
    std::vector<EditSpan> spans(static_cast<std::size_t>(doc.channelCount()));
    for (int i = 0; i < doc.channelCount() && i < clipboard.channelCount(); ++i) {
        const ClipChannel& clip = clipboard.channel(i);
        spans[static_cast<std::size_t>(i)] =
            replaceRange(doc.channel(i), static_cast<std::size_t>(clip.record.m_selStartSample),
                         static_cast<std::size_t>(clip.lengthSamples), nullptr);
    }
    doc.setModified(true);
    return spans;
}

void cutSelection(CKestruneDoc& doc, EditClipboard& clipboard, UndoTempFile& undo) {
    clipboard.copyFrom(doc);
    refuseWholeChannelCut(doc, clipboard);
    if (!undo.saveForUndo(doc)) throw UserException();
    std::vector<EditSpan> spans = deleteCopiedRange(doc, clipboard);
    clearSelectionAndCursor(doc);
    undo.noteEditDone(doc, std::move(spans));
}

PasteOutcome pasteClipboard(CKestruneDoc& doc, const EditClipboard& clipboard, UndoTempFile& undo,
                            bool selectionPresent) {
    if (!clipboard.valid()) throw UserException();

    if (doc.channelCount() == 0) {
        // An empty document takes the clipboard's channels whole. There is
        // nothing to undo to, so no temp file is written.
        const int count = clipboard.channelCount();
        for (int i = 0; i < count; ++i) {
            CChannel& c = doc.channel(i);
            c = clipboard.channel(i).record;
            c.m_inUse = 1;
            c.resetDisplayToWhole();
        }
        doc.setChannelCount(count);
        doc.setHoldsData(count > 0);
        clearSelectionAndCursor(doc);
        undo.clearAvailable();
        doc.setModified(true);
        return PasteOutcome::FilledEmptyDocument;
    }

    if (!undo.saveForUndo(doc)) throw UserException();
    if (clipboard.channelCount() != doc.channelCount()) abandonWith(IDS_PASTE_CHANNEL_COUNT);
    for (int i = 0; i < doc.channelCount(); ++i)
        if (doc.channel(i).m_rateHz != clipboard.channel(i).record.m_rateHz) abandonWith(IDS_PASTE_SAMPLE_RATE);

    // Room for every channel first, so that a shortage changes nothing.
    for (int i = 0; i < doc.channelCount(); ++i) {
        CChannel& c = doc.channel(i);
        const std::size_t need = c.m_samples.size() + clipboard.channel(i).record.m_samples.size();
        if (!c.m_samples.reserve(need)) abandonWith(IDS_NO_MEMORY);
    }
    std::vector<EditSpan> spans(static_cast<std::size_t>(doc.channelCount()));
    for (int i = 0; i < doc.channelCount(); ++i) {
        CChannel& c = doc.channel(i);
        const std::size_t size = c.m_samples.size();
        std::size_t first = 0;
        std::size_t removeCount = 0;
        if (selectionPresent) {
            first = wholeSample(c.m_selStartSample, size);
            removeCount = wholeSample(c.m_selEndSample - c.m_selStartSample, size - first);
        } else {
            first = wholeSample(c.m_cursorSample, size);
        }
        spans[static_cast<std::size_t>(i)] = replaceRange(c, first, removeCount, &clipboard.channel(i).record);
    }
    clearSelectionAndCursor(doc);
    doc.setModified(true);
    undo.noteEditDone(doc, std::move(spans));
    return PasteOutcome::Inserted;
}

void clearToReference(CKestruneDoc& doc, UndoTempFile& undo) {
    if (!undo.saveForUndo(doc)) throw UserException();
    for (int i = 0; i < doc.channelCount(); ++i) {
        CChannel& c = doc.channel(i);
        const std::size_t size = c.m_samples.size();
        const std::size_t first = wholeSample(c.m_selStartSample, size);
        // Every index below the end: 3.4 … 10.7 clears samples 3 to 10.
        const std::size_t end = c.m_selEndSample > 0.0 ? wholeSample(std::ceil(c.m_selEndSample), size) : 0;
        const double level =
            std::isfinite(c.m_reference) ? std::clamp(std::trunc(c.m_reference), -32768.0, 32767.0) : 0.0;
        if (end > first)
            std::fill(c.m_samples.data() + first, c.m_samples.data() + end, static_cast<std::int16_t>(level));
    }
    doc.setModified(true);
    undo.noteEditDone(doc);
}

}  // namespace sonmetra
