// Where Help > Help Topics looks for the user manual. A user's own copy in
// the working folder comes first; then the manual that ships with the
// program: a "Manual" folder beside the program (a build keeps a copy there
// for runs from the build tree), the installed data folder found from the
// program's folder (an installation that was moved still finds it), and
// the data folder of the prefix the program was built for.
#pragma once

#include <QString>
#include <QStringList>

// The folders that may hold "HelpIndex.html" (or ".htm"), in the order they are tried.
QStringList manualFolders(const QString& workingFolder, const QString& programFolder);
