#include "HelpPages.h"

#include <QDir>

// Set by the build from the install rules (app/CMakeLists.txt installs the
// manual under <datadir>/sonmetra/Manual).
#ifndef SONMETRA_DATA_FROM_BIN
#define SONMETRA_DATA_FROM_BIN "../share/sonmetra"
#endif
#ifndef SONMETRA_DATA_DIR
#define SONMETRA_DATA_DIR "/usr/local/share/sonmetra"
#endif

QStringList manualFolders(const QString& workingFolder, const QString& programFolder) {
    QStringList folders;
    auto add = [&folders](const QString& folder) {
        const QString clean = QDir::cleanPath(folder);
        if (!folder.isEmpty() && !folders.contains(clean)) folders.push_back(clean);
    };
    if (!workingFolder.isEmpty()) add(workingFolder + "/Manual");
    if (!programFolder.isEmpty()) {
        add(programFolder + "/Manual");
        add(programFolder + "/" SONMETRA_DATA_FROM_BIN "/Manual");
    }
    add(QStringLiteral(SONMETRA_DATA_DIR "/Manual"));
    return folders;
}
