// The spectrogram window's content: the picture of a stretch of the audio
// channel (SpectrogramDrawing.h) above its readout bar.
//
// The view computes on the interface thread, with a modal progress dialog
// that can cancel, for the size of its image area; a resize recomputes once
// the size has stopped changing for a moment, and meanwhile the previous
// picture is stretched over the new area. Its cursor (a time and a
// frequency) and its selection are its own; the mouse in the view moves
// them and drives the waveform view of the command that opened the window,
// and the waveform view's mouse steps move them in turn.
//
// The source is split by responsibility: CSpectrogramView.cpp (computing,
// painting, pictures), CSpectrogramViewMouse.cpp (mouse, cursor, selection,
// readouts, play).
#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "view/ChannelSummaries.h"
#include "view/spectrogram/SpectrogramData.h"
#include "view/spectrogram/SpectrogramDrawing.h"
#include "view/spectrogram/SpectrogramLayout.h"

class CKestruneView;
class QPrinter;
class SpectrogramReadoutBar;
class StretchPlayer;

namespace sonmetra {
class CKestruneDoc;
}

class CSpectrogramView : public QWidget {
    Q_OBJECT
public:
    // The document must outlive the view.
    explicit CSpectrogramView(sonmetra::CKestruneDoc* doc, QWidget* parent = nullptr);
    ~CSpectrogramView() override;

    sonmetra::CKestruneDoc* document() const { return m_doc; }
    // The stretch of the audio channel to analyse, from the next computation on.
    void setRange(const SpectrogramRange& range) { m_range = range; }
    const SpectrogramRange& range() const { return m_range; }
    // The waveform view whose cursor this view's mouse moves (may be null).
    void setWaveformView(CKestruneView* view);
    // Shows the waveform view's selection, else its cursor, as this view's own.
    void takeWaveformMarks();
    // Renders compute without a progress dialog.
    void setShowsProgress(bool on) { m_showsProgress = on; }

    // The settings in force: the application's record, else the document's.
    sonmetra::SpectrogramSettings settingsInForce() const;
    // Computes for the image area of the picture's present size. False when
    // there is nothing to compute, or it was cancelled or failed (after the
    // message); the previous picture then stays.
    bool recompute();
    const SpectrogramData* data() const { return m_data.get(); }
    bool hasFormants() const { return m_data && m_data->formantsTracked; }

    // Where the picture is drawn: the client area above the readout bar.
    QRect pictureRect() const;
    // The picture at `size`: the window's own data when they were computed for
    // that size, else a computation for it that leaves the window's data alone.
    QImage pictureImage(QSize size, bool blackWhite = false);
    // "Print...": the picture at the print size of the settings, black and
    // white when they say so.
    void printPicture(QPrinter& printer);
    SpectrogramScene scene(bool blackWhite) const;

    // Cursor and selection, in ms and Hz.
    std::optional<double> cursorMs() const { return m_cursorMs; }
    std::optional<double> cursorHz() const { return m_cursorHz; }
    std::optional<std::pair<double, double>> selectionMs() const { return m_selectionMs; }
    void placeCursor(double ms, std::optional<double> hz);
    void select(double aMs, double bMs);

    // Hooks of the window attached to the document.
    void followWaveformCursor(int step, double ms);
    void samplesReplaced();

    void playAll();
    void playSelection();
    void playWindow();
    void stopPlaying();
    bool playing() const;

    SpectrogramReadoutBar* readoutBar() const { return m_readouts; }

    // For tests: called with the progress of every computation that shows the
    // dialog, and the delay before the dialog appears.
    static void setProgressObserver(std::function<void(int done, int total)> observer);
    static void setProgressDelayMs(int ms);

protected:
    void paintEvent(QPaintEvent*) override;
    void resizeEvent(QResizeEvent*) override;
    void mousePressEvent(QMouseEvent*) override;
    void mouseMoveEvent(QMouseEvent*) override;
    void mouseReleaseEvent(QMouseEvent*) override;
    void leaveEvent(QEvent*) override;

private:
    SpectrogramRequest requestFor(QSize pictureSize, double cellScale) const;
    sonmetra::AnalysisStatus computeInto(const SpectrogramRequest& request, SpectrogramData& out);
    void afterResize();
    int channel() const;
    QString emptyMessage() const;
    SpectrogramLayout layoutNow() const;

    // Mouse and readouts (CSpectrogramViewMouse.cpp).
    enum class Step { Down, Move, Up };
    void mouseStep(Step step, QPoint at);
    void forwardToWaveform(Step step, double ms);
    void refreshReadouts(std::optional<QPoint> hover = std::nullopt);
    void playSpan(double startMs, double endMs);

    sonmetra::CKestruneDoc* m_doc;
    SpectrogramRange m_range;
    std::unique_ptr<SpectrogramData> m_data;
    ChannelSummaries m_summaries;
    QPointer<CKestruneView> m_waveform;
    SpectrogramReadoutBar* m_readouts;
    std::unique_ptr<StretchPlayer> m_player;
    QRect m_playArea;  // where the play cursor moves, set before each playback
    QTimer m_resizeTimer;
    bool m_showsProgress = true;
    bool m_computing = false;
    bool m_recomputePending = false;

    std::optional<double> m_cursorMs, m_cursorHz;
    std::optional<std::pair<double, double>> m_selectionMs;
    bool m_dragging = false;
    int m_pressX = 0;
    double m_pressMs = 0.0;
    bool m_forwarding = false;  // this view drives the waveform view; its echo is ignored
};
