// What the sound engines draw in a window (the waveform view, the pitch and
// spectrogram windows): the capture strip chart and the play cursor, kept as
// overlay state of the window.
//
// The engines call drawCaptureColumn and invertRect from their worker
// threads; each call is queued to the interface thread, which updates the
// overlay and repaints the view. No widget is touched from a worker. The
// cursor is kept as the set of strips inverted an odd number of times, so
// a repaint of the view in between shows it exactly as before.
#pragma once

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QRect>
#include <QWidget>
#include <functional>
#include <map>
#include <tuple>

#include "io/IWaveDisplay.h"

class QPainter;
class CKestruneView;

class ViewWaveDisplay : public QObject, public sonmetra::IWaveDisplay {
    Q_OBJECT
public:
    explicit ViewWaveDisplay(CKestruneView& view);
    // Any window; `clientArea` gives the area the engines may draw in.
    ViewWaveDisplay(QWidget& window, std::function<QRect()> clientArea);

    // IWaveDisplay. clientRect() is called on the interface thread only.
    sonmetra::WaveRect clientRect() override;
    void drawCaptureColumn(int x, int startY, int maxY, int minY) override;
    void invertRect(const sonmetra::WaveRect& rect) override;

    // A fresh, empty strip chart the size of the view's client area.
    void startStripChart();
    void clearStripChart();
    void clearCursor();
    bool cursorShown() const { return !m_inverted.empty(); }
    // The strip chart (while it exists) and the inverted strips, in client pixels.
    void paint(QPainter& painter) const;

private:
    void applyColumn(int x, int startY, int maxY, int minY);
    void applyInversion(const QRect& rect);

    struct RectLess {
        bool operator()(const QRect& a, const QRect& b) const {
            return std::make_tuple(a.left(), a.top(), a.width(), a.height()) <
                   std::make_tuple(b.left(), b.top(), b.width(), b.height());
        }
    };

    QPointer<QWidget> m_view;                   // interface thread only
    std::function<QRect()> m_clientArea;        // interface thread only
    QImage m_stripChart;                        // interface thread only
    std::map<QRect, int, RectLess> m_inverted;  // interface thread only: strip -> 1 while shown
};
