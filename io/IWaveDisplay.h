// What the sound engines draw, without knowing any widget: the capture
// engine's strip chart and the playback engine's one-pixel play cursor.
//
// The engines call the drawing operations from their worker threads. An
// implementation must therefore be thread-safe and must not paint from the
// calling thread: the GUI's implementation queues each call to the
// interface thread, which applies it to the view. clientRect() is called on
// the interface thread only.
#pragma once

namespace sonmetra {

struct WaveRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

class IWaveDisplay {
public:
    virtual ~IWaveDisplay() = default;
    // The client area of the drawing window, in its own pixels.
    virtual WaveRect clientRect() = 0;
    // One strip-chart column: a line at x from (x, startY) to (x, maxY), then
    // on to (x, minY). Columns are never erased; a later one overwrites.
    virtual void drawCaptureColumn(int x, int startY, int maxY, int minY) = 0;
    // Inverts the pixels of the rectangle (right and bottom exclusive), so
    // that inverting the same rectangle twice restores them.
    virtual void invertRect(const WaveRect& rect) = 0;
};

}  // namespace sonmetra
