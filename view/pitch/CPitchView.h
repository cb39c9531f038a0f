// The pitch window's view: the picture of PitchDrawing.h over the client
// area, its own time range (zoom and scroll like the waveform view, without
// moving the waveform view), the document's cursor and selection, and the
// play commands with the play position moving over the panes.
//
// Cursor and selection belong to the document: the waveform view reports
// each mouse step (followCursor), and a press, drag or release in this view
// drives the waveform view by time (CKestruneView::mouseDownAtMs ...), which
// then reports back, so both windows always show the same cursor.
#pragma once

#include <QImage>
#include <QPointer>
#include <QWidget>
#include <memory>
#include <optional>
#include <utility>

#include "PitchDrawing.h"
#include "view/CKestruneView.h"
#include "view/TimeBase.h"

class QScrollBar;
class StretchPlayer;
struct PitchResults;

namespace sonmetra {
class CKestruneDoc;
}

class CPitchView : public QWidget {
    Q_OBJECT
public:
    explicit CPitchView(sonmetra::CKestruneDoc* doc, QWidget* parent = nullptr);
    ~CPitchView() override;

    sonmetra::CKestruneDoc* document() const { return m_doc; }
    // The document is going away: nothing of it is read any more.
    void detachDocument();
    void setWaveformView(CKestruneView* view);
    CKestruneView* waveformView() const { return m_waveform; }

    // The track to show (null: none); a new signal length shows it whole.
    void setResults(std::shared_ptr<const PitchResults> results);
    const PitchResults* results() const { return m_results.get(); }
    std::shared_ptr<const PitchResults> sharedResults() const { return m_results; }
    // Shown in the pitch pane while there is no track.
    void setMessage(const QString& text);
    QString message() const { return m_message; }

    // The labels changed: the picture is drawn anew.
    void labelsChanged();

    // The picture of the client area at `size`, and what it is drawn from.
    PitchPicture picture() const;
    void drawPicture(QPainter& painter, QSize size) const;
    // The client area without the scroll bar.
    QRect pictureRect() const;
    PitchLayout layout() const;

    // Time range shown, in ms.
    double startMs() const { return m_startMs; }
    double endMs() const { return m_endMs; }
    void showRange(double startMs, double endMs);
    // 0 UnZoom, 1 In, 2 Out, 3 Selection, 5 Home (the waveform view's numbers).
    void zoom(int mode);
    bool scrollable() const;
    void hScroll(timebase::ScrollRequest request, int trackPosition = 0);

    // Cursor and selection as the document has them.
    std::optional<double> cursorMs() const { return m_cursorMs; }
    std::optional<std::pair<double, double>> selectionMs() const;
    bool selectionPresent() const { return selectionMs().has_value(); }
    // A mouse step of a waveform view: 0 press, 1 move, 2 release, at `ms`.
    void followCursor(int step, double ms);
    // Takes cursor and selection from the waveform view (after an edit).
    void syncCursorFromWaveform();

    // Play: the tracked channel of the document, the play position moving
    // over the panes at the stretch's place on the time axis.
    void playAll();
    void playSelection();
    void playWindow();
    void stopPlaying();
    bool playing() const;

protected:
    void paintEvent(QPaintEvent*) override;
    void resizeEvent(QResizeEvent*) override;
    void mousePressEvent(QMouseEvent*) override;
    void mouseMoveEvent(QMouseEvent*) override;
    void mouseReleaseEvent(QMouseEvent*) override;
    void wheelEvent(QWheelEvent*) override;

private:
    double signalMs() const;
    int playedChannel() const;
    void playStretch(double fromMs, double toMs);
    QRect playArea() const;
    void updateScrollBar();
    void onScrollAction(int action);

    // The picture's background layer (drawPitchBackground) as last painted,
    // and what it was drawn from: a cursor step repaints only the overlay.
    struct BackgroundKey {
        QSize size;
        qreal pixelRatio = 0.0;
        const PitchResults* results = nullptr;
        sonmetra::PitchSettings settings;
        double startMs = 0.0, endMs = 0.0;
        QString title, message;
        const void* labels = nullptr;
        bool operator==(const BackgroundKey& o) const;
    };
    BackgroundKey backgroundKey(const PitchPicture& picture, QSize size, qreal pixelRatio) const;

    sonmetra::CKestruneDoc* m_doc;
    QImage m_background;
    BackgroundKey m_backgroundKey;
    bool m_backgroundValid = false;
    QPointer<CKestruneView> m_waveform;
    std::shared_ptr<const PitchResults> m_results;
    QString m_message;
    QScrollBar* m_hScroll;
    std::unique_ptr<StretchPlayer> m_player;
    // The stretch played last, in ms; the play position moves over its place on the axis.
    double m_playFromMs = 0.0, m_playToMs = 0.0;
    double m_startMs = 0.0, m_endMs = 0.0;
    double m_prevStartMs = 0.0, m_prevEndMs = 0.0;
    std::optional<double> m_cursorMs;
    bool m_selection = false;
    bool m_dragging = false;
    bool m_updatingBar = false;
};
