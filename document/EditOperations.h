// The edit steps of the waveform view, on every channel of a document at
// once, and the one-step undo that rests on a temp file.
//
//   Cut   = Copy, save for undo, delete the copied range, clear selection and cursor
//   Paste = save for undo, check counts and rates, replace the selection (or
//           insert at the cursor), or fill an empty document from the clipboard
//   Clear = save for undo, set the selected samples to the reference level
//   Undo  = read the temp file back in place of the document's channels
//
// Labels travel with the samples they sit on: a label at time t belongs to
// the sample at index trunc(t ÷ ms per sample), so a cut removes the labels
// in [start, end) and moves those at or after the end by the cut length, and
// a paste moves the labels at or after the insertion point by the pasted
// length. Every failure shows its message and throws UserException; a "No"
// to the undo question abandons the edit with the document untouched.
#pragma once

#include <string>
#include <vector>

#include "CChannel.h"
#include "LabelsAcrossUndo.h"

namespace sonmetra {

class CKestruneDoc;
class EditClipboard;

// The view's undo state: the temp file's path and whether it holds an undo
// step. The file carries samples, labels and header fields; the display
// state and the fields the file format does not keep (converter range, exact
// gain, reference code, strip, intensity settings) are remembered here.
class UndoTempFile {
public:
    UndoTempFile() = default;
    explicit UndoTempFile(std::string path) : m_path(std::move(path)) {}

    // folder + title + "@@tmp"; folder is expected to end with '/'.
    static std::string pathFor(const std::string& folder, const std::string& title);

    const std::string& path() const { return m_path; }
    void setPath(std::string path) { m_path = std::move(path); }
    bool available() const { return m_available; }
    void clearAvailable() { m_available = false; }

    // Save for undo. True when the edit may go on: the document was saved,
    // or it could not be and the user answered Yes to going on without undo.
    // False when the user answered No.
    bool saveForUndo(const CKestruneDoc& doc);
    // Undo: replaces the document's channels by the temp file's. False (after
    // its message) when the file cannot be read; the document is then as it was.
    // Labels entered, changed or deleted since the edit was noted
    // (noteEditDone) stay so, moved with their samples (LabelsAcrossUndo.h).
    bool restore(CKestruneDoc& doc);
    // After the edit that saved for undo: the labels it left and, per
    // channel, where it moved samples (none: no sample moved). Without this
    // note Undo restores the labels of the copy as they were.
    void noteEditDone(const CKestruneDoc& doc, std::vector<EditSpan> spans = {});

private:
    struct ChannelState {
        CChannel fields;  // display state and unstored fields; no samples or labels
        double sampleCount = 0.0;
    };
    bool write(const CKestruneDoc& doc);

    std::string m_path;
    bool m_available = false;
    bool m_selectionFlag = false;
    std::vector<ChannelState> m_state;  // one per stored (in-use) channel, in file order
    bool m_editNoted = false;
    std::vector<std::vector<CLabel>> m_labelsAfterEdit;  // by channel
    std::vector<EditSpan> m_spans;                       // by channel; empty: no sample moved
};

// What a paste did, so that the view can lay out new strips.
enum class PasteOutcome { Inserted, FilledEmptyDocument };

// The edit commands. Each throws UserException after its message when it is
// abandoned; each marks the document modified when it changed it.
void cutSelection(CKestruneDoc& doc, EditClipboard& clipboard, UndoTempFile& undo);
void copySelection(const CKestruneDoc& doc, EditClipboard& clipboard);
PasteOutcome pasteClipboard(CKestruneDoc& doc, const EditClipboard& clipboard, UndoTempFile& undo,
                            bool selectionPresent);
void clearToReference(CKestruneDoc& doc, UndoTempFile& undo);

// Delete-selection: removes the range the clipboard holds from every
// channel. Refused (nothing cut, beep and message, UserException) when it
// would leave any channel without samples. Returns what it cut, by channel.
std::vector<EditSpan> deleteCopiedRange(CKestruneDoc& doc, const EditClipboard& clipboard);

// Collapses every channel's selection and cursor to 0 and clears the
// document's selection flag.
void clearSelectionAndCursor(CKestruneDoc& doc);

// Replaces removeCount samples at first by the samples and labels of
// insert (null: nothing inserted), keeping labels with their samples and
// the duration equal to count × ms per sample. Throws after the memory
// message when the block cannot grow; the channel is then unchanged.
// Returns the span replaced, limited to the channel.
EditSpan replaceRange(CChannel& c, std::size_t first, std::size_t removeCount, const CChannel* insert);

}  // namespace sonmetra
