// Printing, print preview and bitmap export of a waveform view, at the print
// size of the display options (inches or cm), in colour or black and white.
// The time grid is on the page or bitmap only while "Add Time grid" is checked.
#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include "view/WaveformRenderer.h"

class CKestruneView;
class QPrinter;

namespace sonmetra {
class AppConfig;
}

// Colour and grid of a printout or bitmap of the view.
RenderOptions printOptions(const CKestruneView& view, const sonmetra::AppConfig& config);

// The view at the print size, at the screen's resolution.
QImage viewBitmap(const CKestruneView& view, const sonmetra::AppConfig& config);
// Writes it as a .bmp file; false (after a message) when it cannot be written.
bool saveViewBitmap(const CKestruneView& view, const QString& path);
// Draws the view on the printer's first page at the print size (shrunk to fit a smaller page).
void printView(const CKestruneView& view, QPrinter& printer);

// The menu commands.
void saveViewAsBitmapCommand(CKestruneView& view);
// Captures the whole screen once the menu has closed (a one-shot timer),
// then asks where to write it, default name "ScreenDump".
void saveScreenAsBitmapCommand(CKestruneView& view);
void printViewCommand(CKestruneView& view);
void printPreviewCommand(CKestruneView& view);
