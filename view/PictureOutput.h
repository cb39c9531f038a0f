// Pictures of the windows as files and printouts: the bitmap files of "Save
// As bmp..." and "Save Screen As bmp...", the print size of a window's
// settings, and the page that a window's drawing is printed on.
//
// A window's drawing is one function of the painter and the size it fills
// (a PictureDrawer); the window's paint event, its bitmap, its printout and
// `sonmetra --render` all call it.
#pragma once

#include <QImage>
#include <QSize>
#include <QString>
#include <functional>
#include <optional>

#include "analysis/AnalysisSettings.h"

class QPainter;
class QPrinter;
class QWidget;

// Paints a picture of `size` logical pixels, starting at (0, 0).
using PictureDrawer = std::function<void(QPainter& painter, QSize size)>;

// The name a bitmap save proposes for a picture of `title`: its extension
// replaced by ".bmp" ("demo.kvd" gives "demo.bmp"), so that the proposal can
// never name the document itself.
QString bitmapFileName(const QString& title);
// The save dialog of a bitmap, starting at `proposedName`. The answer always
// ends in ".bmp": a name typed with another extension gets ".bmp" added.
std::optional<QString> askBitmapPath(QWidget* parent, const QString& dialogTitle, const QString& proposedName);
// Writes the image as a BMP file; false after the message when it cannot.
bool writeBitmap(const QImage& image, const QString& path);

// The print size in pixels at `dotsPerInch` (width and height in inches or cm).
QSize printSizePx(const sonmetra::PrintSize& size, double dotsPerInch);

// The drawing on a white image of `size` logical pixels.
QImage pictureImage(QSize size, const PictureDrawer& draw, double devicePixelRatio = 1.0);
// The drawing on the printer's first page at the print size, shrunk to fit a
// smaller page. It is laid out in pixels of 1/96 inch and scaled to the
// printer, so that lines and text stay vectors and a 1-pixel pen prints
// about 0.26 mm wide.
void printPicture(QPrinter& printer, const sonmetra::PrintSize& size, const PictureDrawer& draw);
// The layout size of a printout, in pixels of 1/96 inch.
QSize printLayoutSize(const sonmetra::PrintSize& size);

// "Print...": the print dialog, then `print` on the chosen printer.
void runPrintDialog(QWidget* parent, const std::function<void(QPrinter&)>& print);
// "Print Preview": the preview dialog, which calls `print` for its pages.
void runPrintPreview(QWidget* parent, const std::function<void(QPrinter&)>& print);
