// Drawing of the waveform column into an image: the time grid, one framed
// strip per present channel with its name, its trace against the reference
// level and its derived curve; then the selection highlight and the cursor.
//
// Images are in device pixels (logical size × device pixel ratio) so that a
// trace is one device pixel wide and stays crisp on high-DPI screens. Dense
// ranges are drawn as one vertical min–max line per device column, taken
// from the channel's min/max summary; sparse ranges as a polyline through
// the samples. The cost follows the width of the view, not the length of
// the signal.
#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QRect>
#include <functional>
#include <vector>

#include "document/CKestruneDoc.h"

class ChannelSummaries;
class QPainter;

struct TraceGeometry {
    static constexpr int kLeftMargin = 20;   // the time axis starts here
    static constexpr int kRightMargin = 12;  // ends the time axis and the auto-scroll zone
    static constexpr int kRulerHeight = 18;  // time grid labels above the strips
    static constexpr int kStripGap = 4;
    static constexpr int kMinStripHeight = 48;

    int clientWidth = 0;  // logical pixels
    int clientHeight = 0;
    double dpr = 1.0;
    int scrollOffset = 0;  // 0 or negative: the column drawn shifted up

    int traceLeft() const { return kLeftMargin; }
    int traceRight() const { return clientWidth - kRightMargin; }
    int traceWidth() const { return traceRight() - traceLeft(); }
};

// Strip rectangles (unscrolled column coordinates) of the present channels,
// indexed by channel; absent channels get an empty rectangle. The strips
// share the client height down to a minimum height, below which the column
// grows taller than the client area and scrolls.
std::vector<QRect> layoutStrips(const sonmetra::CKestruneDoc& doc, int clientWidth, int clientHeight);
// Bottom of the column (unscrolled) for those strips.
int columnHeight(const std::vector<QRect>& strips);
// Bottom edge of the lowest strip's frame (unscrolled): where the selection
// highlight and the cursor end.
int stripsBottom(const std::vector<QRect>& strips);

// Mapping between time and x through the first present channel's display range.
double msToX(const sonmetra::CKestruneDoc& doc, const TraceGeometry& g, double ms);
double xToMs(const sonmetra::CKestruneDoc& doc, const TraceGeometry& g, double x);

struct RenderOptions {
    bool color = true;       // false: black and white (grid dotted, curves black)
    bool grid = true;        // draw the time grid
    double gridStepMs = 0;   // 0: automatic
    double lineWidthMm = 0;  // grid and trace lines on a printer; 0: one device pixel
};

// Called after each channel's trace, with a painter in logical coordinates.
using ChannelPaintHook = std::function<void(QPainter&, int index, const QRect& strip)>;

inline const QColor kGridColor(200, 200, 200);
inline const QColor kDerivedCurveColor(0, 0, 255);
inline const QColor kHighlightColor(160, 200, 255);
inline const QColor kCursorColor(220, 0, 0);

// Renders grid, strips, traces and names into `layer` (already sized in
// device pixels), clearing it first.
void renderTraceLayer(QImage& layer, const sonmetra::CKestruneDoc& doc, ChannelSummaries& summaries,
                      const std::vector<QRect>& strips, const TraceGeometry& g, const RenderOptions& options,
                      const QFont& labelFont, const ChannelPaintHook& hook = {});
// The same over what `p` (in logical pixels, g.dpr device columns each)
// already holds. With `raster`, the image that p paints on, dense traces are
// written into its pixels; without one (a printer) every line is a vector
// path, g.dpr then setting how finely the trace's columns are drawn.
void paintTraces(QPainter& p, QImage* raster, const sonmetra::CKestruneDoc& doc, ChannelSummaries& summaries,
                 const std::vector<QRect>& strips, const TraceGeometry& g, const RenderOptions& options,
                 const QFont& labelFont, const ChannelPaintHook& hook = {});

// ANDs the highlight over [x0, x1] down to `bottom`, then draws the cursor at
// cursorX (when >= 0), with a painter in logical coordinates. Without
// `andTint` the highlight is a plain fill, for devices that cannot AND
// (printers), painted before the traces.
void paintSelectionAndCursor(QPainter& p, const TraceGeometry& g, bool selection, double x0, double x1, double cursorX,
                             int bottom, bool color, bool andTint = true);
