// Pictures of the views under test, for a person to look at: written only
// when SONMETRA_SHOTS names a folder, so that a test run leaves no files.
#pragma once

#include <QDir>
#include <QImage>
#include <QString>

namespace sonmetra::test {

inline void saveShot(const QImage& image, const QString& name) {
    const QString folder = qEnvironmentVariable("SONMETRA_SHOTS");
    if (!folder.isEmpty()) image.save(QDir(folder).filePath(name + ".png"));
}

}  // namespace sonmetra::test
