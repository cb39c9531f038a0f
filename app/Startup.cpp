#include "Startup.h"

#include <QDir>
#include <QFile>
#include <QFontInfo>
#include <QSettings>

#include "document/MessageService.h"
#include "res/StringTable.h"

namespace Startup {

std::optional<QString> establishWorkingFolder(QSettings& settings, const QString& currentFolder) {
    const QString key = "General Strings Section/Temp Directory";
    const QString stored = settings.value(key).toString();
    if (!stored.isEmpty()) return stored;
    settings.setValue(key, currentFolder);
    settings.sync();
    if (settings.status() != QSettings::NoError || settings.value(key).toString() != currentFolder) return std::nullopt;
    return currentFolder;
}

QString probeWritable(const QString& folder) {
    QFile probe(folder + "/xxx");
    if (!probe.open(QIODevice::WriteOnly | QIODevice::Truncate)) return probe.errorString();
    const bool written = probe.write("0123456789", 10) == 10;
    probe.close();
    const QString reason = written ? QString() : probe.errorString();
    probe.remove();
    return reason;
}

QString createTempFolder(const QString& folder) {
    const QString temp = folder + "/tmp/";
    return QDir().mkpath(temp) ? temp : QString();
}

std::optional<QFont> createDefaultFont(const QStringList& installedFamilies) {
    QFont font(QStringLiteral("Arial"));
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(14);
    font.setWeight(QFont::Normal);
    if (installedFamilies.isEmpty() || QFontInfo(font).family().isEmpty()) {
        sonmetra::showMessage(sonmetra::IDS_FONT_ERROR, sonmetra::MsgButtons::Ok, sonmetra::MsgIcon::Error);
        return std::nullopt;
    }
    return font;
}

}  // namespace Startup
