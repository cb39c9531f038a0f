// The readers of the open sequence. Each reader is tried from the start of
// the file and either takes it, declines it silently ("not my type", so the
// next reader is tried), or abandons the open after showing its message.
#pragma once

#include <string>
#include <vector>

#include "BinaryFile.h"
#include "CKestruneDoc.h"

namespace sonmetra {

enum class ReadStatus { Accepted, NotMyType, Abandoned };

// The two questions a reader may ask the user. The GUI answers with its
// dialogs; sonmetra-cli and the tests answer from options.
class IImportDialogs {
public:
    virtual ~IImportDialogs() = default;
    // Which of channelCount channels to take (0-based); -1 for Cancel.
    virtual int chooseChannel(int channelCount) = 0;
    // The "Generic File Selection" dialog, pre-filled with settings; false for Cancel.
    virtual bool genericFileSelection(GenericFileSettings& settings) = 0;
};

// Answers that never ask: the first channel, and Cancel for the generic dialog.
class DefaultImportDialogs : public IImportDialogs {
public:
    int chooseChannel(int) override { return 0; }
    bool genericFileSelection(GenericFileSettings&) override { return false; }
};

struct ReadContext {
    IImportDialogs* dialogs = nullptr;  // never null inside a reader
    std::string fileName;               // the file's name without its folder
};

using ReaderFunction = ReadStatus (*)(BinaryFile& file, CKestruneDoc& doc, ReadContext& context);

struct FileReaderEntry {
    const char* name;  // "RVM_PC", "WAV", ... as sonmetra-cli info reports it
    ReaderFunction read;
};

// Readers tried in order before the generic dialog: the document readers,
// then the foreign sound-file readers.
const std::vector<FileReaderEntry>& sequenceReaders();
// Readers tried in order after "Yes" in the generic dialog.
const std::vector<FileReaderEntry>& genericReaders();

}  // namespace sonmetra
