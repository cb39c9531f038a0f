// The waveform view of a document: every present channel as a framed strip,
// stacked in one vertically scrollable column on one time base, with zoom,
// horizontal scrolling, the cursor and the selection.
//
// The display state (ranges, cursor, selection, strips) lives in the
// document's channels, so every window of the document sees the same range;
// the view keeps only what belongs to this window: the scroll bars, the
// layers, the drag in progress and the flags below. Drawing goes through
// image layers in device pixels: the trace layer (grid, strips, traces,
// names) is rendered only when redraw is needed; selection, cursor and
// overlays are composed over it on every paint.
//
// The view's source is split by responsibility: CKestruneView.cpp (set-up,
// layers, painting), CKestruneViewMouse.cpp (mouse, cursor, selection),
// CKestruneViewZoom.cpp (zoom, scrolling, commands on the display state).
#pragma once

#include <QImage>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "ChannelSummaries.h"
#include "TimeBase.h"
#include "ViewExtension.h"
#include "WaveformRenderer.h"

class QScrollBar;

namespace sonmetra {
class CKestruneDoc;
}

class CKestruneView : public QWidget {
    Q_OBJECT
public:
    // The document must outlive the view.
    explicit CKestruneView(sonmetra::CKestruneDoc* doc, QWidget* parent = nullptr);
    ~CKestruneView() override;

    sonmetra::CKestruneDoc* document() const { return m_doc; }
    bool cursorPlaced() const { return m_cursorPlaced; }
    bool selectionPresent() const { return m_selectionPresent; }
    bool scrollable() const { return m_hBar.scrollable(); }
    // Turning the cursor on takes its time from the document's channels
    // (placed by the caller, e.g. through timebase::placeCursor).
    void setCursorPlaced(bool on);
    // Keeps the document's selection flag in step.
    void setSelectionPresent(bool on);
    int clickedChannel() const { return m_clickedChannel; }
    int channelAt(QPoint p) const;
    double cursorMs() const { return m_cursorMs; }
    double displayStartMs() const { return m_displayStartMs; }
    double displayEndMs() const { return m_displayEndMs; }
    // The client area without the scroll bars.
    QRect clientRect() const;
    // From the 20-px left margin to the right margin, over the client height.
    QRect traceArea() const;
    int msToX(double ms) const;
    double xToMs(int x) const;
    QFont labelFont() const { return m_labelFont; }
    int verticalOffset() const { return m_vOffset; }

    // 0 UnZoom, 1 In, 2 Out, 3 Selection, 4 From Cursor for Duration, 5 Home.
    void zoom(int mode);
    void rangeFromScrollBar();
    void scrollBarFromRange();
    // Sample data changed: summaries rebuilt, strips laid out again, redraw.
    void channelsEdited();
    void requestRedraw();
    void refreshReadouts();

    // The horizontal and vertical scroll requests, as the bars send them.
    void hScroll(timebase::ScrollRequest request, int trackPosition = 0);
    void vScroll(timebase::ScrollRequest request, int trackPosition = 0);
    const timebase::HScrollBar& hScrollState() const { return m_hBar; }
    QScrollBar* horizontalBar() const { return m_hScroll; }
    QScrollBar* verticalBar() const { return m_vScroll; }

    // Commands on the display state.
    void selectWindow();
    void selectAll();
    void setReferenceAll();
    void setReferenceForClicked();
    void setReferenceAllToZero();

    // The mouse steps driven by a time instead of a point (spectrogram and
    // pitch windows): the time becomes an x through the display range.
    void mouseDownAtMs(double ms);
    void mouseMoveAtMs(double ms);
    void mouseUpAtMs(double ms);

    template <class T>
    T* extension() const {
        for (const auto& e : m_extensions) {
            if (auto* t = dynamic_cast<T*>(e.get())) return t;
        }
        return nullptr;
    }

    // Trace layer, selection, cursor and overlays as the screen shows them
    // (device pixels, with their pixel ratio).
    QImage compositeImage() const;
    // The whole column rendered at `sizePx` (logical pixels) for a bitmap or
    // a printout: strips fit the height, selection and cursor included.
    QImage renderImage(QSize sizePx, const RenderOptions& options, double dpr = 1.0) const;
    // Renders now if needed and returns the composite (tests, benchmarks).
    const QImage& renderNow();

    // Derived curves depend on the reference: "Set Reference All to Zero"
    // calls this for every channel that carries one (set by the intensity feature).
    static void setDerivedCurveRecompute(std::function<void(sonmetra::CKestruneDoc&, int)> recompute);

    // After each step the windows attached to the document follow the
    // cursor (DocumentWindows.h: cursorStepped).
    enum class MouseStep { Down, Move, Up };

signals:
    // After each mouse step, with the view's cursor time.
    void cursorStep(int step, double ms);

protected:
    void paintEvent(QPaintEvent*) override;
    void resizeEvent(QResizeEvent*) override;
    void mousePressEvent(QMouseEvent*) override;
    void mouseMoveEvent(QMouseEvent*) override;
    void mouseReleaseEvent(QMouseEvent*) override;
    void wheelEvent(QWheelEvent*) override;
    void focusInEvent(QFocusEvent*) override;
    void showEvent(QShowEvent*) override;

private:
    TraceGeometry geometry() const;
    void ensureLayers();
    void layout();
    void layoutIfChanged();
    std::uint32_t layoutSignature() const;
    void render();
    void compose();
    void paintMarks(QPainter& p) const;
    void updateScrollBars();
    void copyDisplayRange();
    void recomputeRangeFromBar();  // without repainting
    void afterMouseStep(MouseStep step);
    // Shared by real events and the time-driven steps.
    void pressAt(QPoint p);
    void dragTo(QPoint p);
    void extendTo(QPoint p);
    void releaseAt(QPoint p);
    void onHBarAction(int action);
    void onVBarAction(int action);

    sonmetra::CKestruneDoc* m_doc;
    std::vector<std::unique_ptr<IViewExtension>> m_extensions;
    QScrollBar* m_hScroll;
    QScrollBar* m_vScroll;
    QFont m_labelFont;
    ChannelSummaries m_summaries;
    std::vector<QRect> m_strips;  // unscrolled column coordinates, by channel
    timebase::HScrollBar m_hBar;
    int m_vOffset = 0;  // 0 or negative
    double m_displayStartMs = 0.0, m_displayEndMs = 0.0;
    double m_cursorMs = 0.0;
    bool m_redrawNeeded = true;
    bool m_selectionPresent = false;
    bool m_cursorPlaced = false;
    int m_clickedChannel = -1;
    bool m_dragging = false;
    int m_pressX = 0;
    double m_pressMs = 0.0;
    bool m_updatingBars = false;
    bool m_vBarShown = false;
    bool m_notifying = false;
    std::uint32_t m_layoutSignature = 0;
    QImage m_traceLayer;  // grid, strips, traces, names
    QImage m_composite;   // trace layer + highlight + cursor + overlays
    // While a bitmap or printout is rendered, the mapping of time to x
    // follows its geometry, so that extensions drawing labels place them right.
    mutable std::optional<TraceGeometry> m_renderGeometry;
};
