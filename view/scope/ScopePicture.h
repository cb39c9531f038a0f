// The live scope's picture, drawn in this order:
//   1. the header text at (5, 0);
//   2. per shown channel its band: the first from (20, 20) to (width - 5,
//      120), each further one 5 pixels below the previous one and 100 high;
//      the band framed in pure red, a dashed light-grey (200, 200, 200)
//      centre line at top + height / 2 from left to right, and its label at
//      (left + 2, top + 5): "Audio" for the first band, the channel number
//      for the others;
//   3. when the last snapshot is complete, each shown channel's samples as
//      a black line from (left, middle) through (left + trunc(i x width /
//      count), middle - trunc(sample x height / 65536)).
// The scroll height that goes with it is 100 + 105 x the bands.
//
// One function draws it for the window, its bitmap and its printout.
#pragma once

#include <QString>
#include <vector>

#include "io/usb/ScopeSnapshot.h"

class QPainter;
class QSize;

// A band as the scope keeps it: right and bottom lie just outside it.
struct ScopeBand {
    int channel = 0;
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    int middle() const { return top + (bottom - top) / 2; }
};

inline const QString kScopeHeader = QStringLiteral(
    "***Use this window along with Options->Record/Play window, to adjust the settings of the hardware***");

// The bands of the shown channels in a client area `clientWidth` wide.
std::vector<ScopeBand> scopeBands(const std::vector<int>& shownChannels, int clientWidth);
// The five bands the view starts with, before it knows the channels.
std::vector<ScopeBand> scopeStartBands(int clientWidth);
int scopeScrollHeight(std::size_t bands);
// The label of the index-th band of channel `channel`.
QString scopeBandLabel(std::size_t index, int channel);

struct ScopePicture {
    std::vector<int> shownChannels;                         // in channel order
    const sonmetra::usb::ScopeChannels* samples = nullptr;  // by channel number; null: none yet
    bool dataReady = false;                                 // the samples are a complete snapshot
};

// Draws the picture for a client area of `size` (its width places the
// bands; what lies below the size is drawn too and clipped by the painter)
// with the painter's font. Returns the bands it placed.
std::vector<ScopeBand> drawScope(QPainter& painter, QSize size, const ScopePicture& picture);
