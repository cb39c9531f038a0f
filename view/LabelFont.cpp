#include "LabelFont.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

QFont qFontFromLogFont(const sonmetra::LogFont& f) {
    QFont font;
    const QString face = QString::fromLatin1(f.face().c_str());
    font.setFamily(face.isEmpty() ? QStringLiteral("Arial") : face);
    font.setStyleHint(QFont::SansSerif);
    // Negative heights give the character height, positive ones the cell
    // height; both are taken as the pixel size.
    const int px = std::abs(f.height);
    font.setPixelSize(px > 0 ? std::min(px, 1000) : 14);
    const int weight = f.weight <= 0 ? 400 : std::clamp(f.weight, 1, 1000);
    font.setWeight(static_cast<QFont::Weight>(weight));
    font.setItalic(f.italic != 0);
    font.setUnderline(f.underline != 0);
    font.setStrikeOut(f.strikeOut != 0);
    return font;
}

void logFontFromQFont(const QFont& font, sonmetra::LogFont& record) {
    int px = font.pixelSize();
    if (px <= 0) px = static_cast<int>(std::lround(font.pointSizeF() * 96.0 / 72.0));
    record.height = record.height < 0 ? -px : px;
    record.weight = static_cast<std::int32_t>(font.weight());
    record.italic = font.italic() ? 1 : 0;
    record.underline = font.underline() ? 1 : 0;
    record.strikeOut = font.strikeOut() ? 1 : 0;
    // An unchanged face keeps the record's bytes after its NUL as read.
    const std::string face = font.family().toLatin1().toStdString();
    if (face != record.face()) record.setFace(face);
}

QColor labelColor(const sonmetra::CLabel& l) {
    return QColor(std::clamp(l.red, 0, 255), std::clamp(l.green, 0, 255), std::clamp(l.blue, 0, 255));
}

void setLabelColor(sonmetra::CLabel& l, const QColor& c) {
    l.red = c.red();
    l.green = c.green();
    l.blue = c.blue();
}
