// The steps of start-up that touch settings and folders, kept apart from the
// application object so that each can be tested alone.
#pragma once

#include <QFont>
#include <QString>
#include <QStringList>
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

// The shared default font: "Arial", 14 pixels, weight 400 (a sans-serif
// family stands in where Arial is missing), made from the font families
// the system has. With none at all no text could be drawn: the font cannot
// be made, "Error in creating fonts" is shown and nullopt returned.
std::optional<QFont> createDefaultFont(const QStringList& installedFamilies);

}  // namespace Startup
