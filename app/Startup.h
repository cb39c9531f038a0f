// The steps of start-up that touch settings and folders, kept apart from the
// application object so that each can be tested alone.
#pragma once

#include <QString>
#include <optional>

class QSettings;

namespace Startup {

// The working folder: the profile string "Temp Directory" of section
// "General Strings Section" when it is set; otherwise the current folder,
// written under that key and read back. nullopt when the value read back
// differs (the profile cannot be written): start-up must end.
std::optional<QString> establishWorkingFolder(QSettings& settings, const QString& currentFolder);

// Writes a 10-byte file "xxx" in the folder and deletes it. An empty result
// means the folder is writable; otherwise the reason.
QString probeWritable(const QString& folder);

// The temporary folder: folder + "/tmp/", created when missing. Empty when
// it cannot be created.
QString createTempFolder(const QString& folder);

}  // namespace Startup
