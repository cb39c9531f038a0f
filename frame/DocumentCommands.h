// The save commands of a document with their dialogs: Save, Save As, Save
// Copy As, Save Selection As. Each returns true when the document's data
// was written; failures have been reported to the user.
#pragma once

class QWidget;

namespace sonmetra {
class CKestruneDoc;
}

namespace DocumentCommands {

// Save: Save As while the document is untitled or came from a foreign file.
bool save(QWidget* parent, sonmetra::CKestruneDoc& doc);
bool saveAs(QWidget* parent, sonmetra::CKestruneDoc& doc);
bool saveCopyAs(QWidget* parent, sonmetra::CKestruneDoc& doc);
bool saveSelectionAs(QWidget* parent, sonmetra::CKestruneDoc& doc);

}  // namespace DocumentCommands
