// The waveform view's time base without widgets: zoom, the horizontal scroll
// bar that stands for the display range, the vertical scroll steps, the
// click/selection threshold, selections and channel references.
//
// Every channel keeps its own display range in its own samples; all of them
// move together, so the strips share one time base in ms whatever their
// sample rates. The horizontal bar always spans 0..30000 for the whole signal
// of the first present channel; position and page are that channel's range
// scaled by 30000 / total samples. They are kept in fractional units (the
// widget shows them rounded): one unit of an hour at 44100 Hz is 5292
// samples, and a whole-unit bar could neither hold nor scroll a range of a
// few thousand samples.
#pragma once

#include <QString>
#include <functional>

namespace sonmetra {
class CKestruneDoc;
}

namespace timebase {

enum class ZoomMode { UnZoom = 0, In = 1, Out = 2, Selection = 3, FromCursor = 4, Home = 5 };

// Applies one zoom command to every channel of the document.
void zoom(sonmetra::CKestruneDoc& doc, ZoomMode mode);

// The horizontal scroll bar, in the units of a bar that spans 0..kMax.
struct HScrollBar {
    static constexpr int kMax = 30000;
    double position = 0.0;
    double page = kMax + 1;
    // The display range is shorter than the signal: the bar is live.
    bool scrollable() const { return page <= kMax; }
    // The largest position that keeps the page inside the bar.
    double maxPosition() const { return page >= kMax ? 0.0 : kMax - page; }
};

// Bar from the first present channel's display range (a page that rounds to
// the whole bar is made one larger, so that the bar goes idle).
HScrollBar scrollBarFromRange(const sonmetra::CKestruneDoc& doc);
// Every channel's display range from the bar: start = position × T/30000,
// end = start + page × T/30000 with T the channel's own total samples.
void rangeFromScrollBar(sonmetra::CKestruneDoc& doc, const HScrollBar& bar);

enum class ScrollRequest {
    LineBack,
    LineForward,
    PageBack,
    PageForward,
    ThumbTrack,
    ThumbPosition,
    Top,
    Bottom,
    EndScroll
};

// New position of the horizontal bar for a request (clamped to the bar):
// line steps move by a tenth of the page, page steps by one page, a thumb
// track takes the track position, the other requests keep the position.
double hScrollTarget(const HScrollBar& bar, ScrollRequest request, double trackPosition);
// Line, page and thumb-track requests repaint at once; the others only update the range.
bool hScrollRepaints(ScrollRequest request);

// The vertical column: `position` is the scroll position in pixels (the
// view's offset is its negative), `range` the column height, `page` the
// client height. Line steps move by page/10 and page steps by one page, each
// only when the result stays inside 0..range-page; thumb requests take the
// track position; Top/Bottom go to the ends.
int vScrollTarget(int position, int range, int page, ScrollRequest request, int trackPosition);

// A drag of fewer than 6 pixels from the press point is a click.
constexpr int kSelectionThresholdPx = 6;
inline bool isSelectionDrag(int pressX, int x) {
    const int d = x > pressX ? x - pressX : pressX - x;
    return d >= kSelectionThresholdPx;
}

// Cursor at time t for every present channel (limited to each channel).
void placeCursor(sonmetra::CKestruneDoc& doc, double tMs);
// Selection between two times (either order) for every present channel.
void selectRange(sonmetra::CKestruneDoc& doc, double aMs, double bMs);
// Select Window: the selection becomes the display range of each channel.
void selectWindow(sonmetra::CKestruneDoc& doc);
// Select All: the whole signal of each channel.
void selectAll(sonmetra::CKestruneDoc& doc);

// Raw sample of a channel at its cursor (0 without samples).
double valueAtCursor(const sonmetra::CKestruneDoc& doc, int channel);
// "Set Reference All": every channel except the audio channel takes its value at the cursor.
void setReferenceAll(sonmetra::CKestruneDoc& doc);
// "Set Reference for Clicked Channel".
void setReferenceFor(sonmetra::CKestruneDoc& doc, int channel);
// "Set Reference All to Zero"; `recomputeDerived` is called for every channel
// that carries a derived curve (the intensity contour), which depends on the reference.
void setReferenceAllToZero(sonmetra::CKestruneDoc& doc, const std::function<void(int)>& recomputeDerived);

// Step of the time grid: the document's fixed step, or with 0 the smallest
// step that leaves at least `minSpacingPx` between lines across `widthPx`:
// 1-2-5 steps of ms and seconds, and from 10 s on steps that fall on whole
// minutes (10 s, 15 s, 30 s, 1, 2, 5, 10, 15, 30 min, 1, 2, 5 h ...).
double gridStepMs(double fixedStepMs, double displayMs, double widthPx, double minSpacingPx = 80.0);

// The text of a grid line at `ms` on a time axis showing `displayMs` with
// lines `stepMs` apart: ms below 10 s shown ("2500"); seconds below 10 min
// ("12.5 s"); minutes and seconds beyond ("9:10", "1:02:05" past an hour),
// each with as many decimals as the step needs.
QString gridLabel(double ms, double stepMs, double displayMs);

}  // namespace timebase
