// A label's font: the 60-byte logical-font record of the document file
// mapped both ways to QFont. Height (pixels), weight (400 normal, 700 bold),
// italic, underline, strike-out and the face name are mapped; width,
// escapement, orientation, character set, precisions, quality and pitch and
// family stay as read. "Arial" falls back to a sans-serif font when missing.
#pragma once

#include <QColor>
#include <QFont>

#include "document/CLabel.h"

QFont qFontFromLogFont(const sonmetra::LogFont& font);
// Writes the mapped fields of font into record, keeping the others.
void logFontFromQFont(const QFont& font, sonmetra::LogFont& record);

QColor labelColor(const sonmetra::CLabel& label);
void setLabelColor(sonmetra::CLabel& label, const QColor& color);
