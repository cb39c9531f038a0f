// File > Open on a document: the reader sequence, the generic dialog, and
// what follows a successful open (marks, title, the audio rate in force).
#pragma once

#include <string>

#include "FileReader.h"
#include "PathNames.h"

namespace sonmetra {

class AppConfig;

// Fills doc from the file at path. On failure the reason has been shown
// through the message service and the document may hold what was read so
// far (the caller discards it). config, when given, is told the first
// channel's rate so that it can rewrite the configuration file; a rate no
// setting may be derived from is then reported instead (a warning: the
// document still opens).
bool openDocument(CKestruneDoc& doc, const std::string& path, IImportDialogs& dialogs, AppConfig* config = nullptr);

}  // namespace sonmetra
