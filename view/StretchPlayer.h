// Plays a stretch of a document's channel through the sound card for a
// window other than the waveform view (the pitch and spectrogram windows),
// and moves the engine's play cursor over the window's plot area meanwhile.
// Signals of at most one second go to the device in one buffer, longer ones
// stream, as in the waveform view's play commands.
#pragma once

#include <QRect>
#include <functional>
#include <memory>

class QPainter;
class QWidget;
class ViewWaveDisplay;

namespace sonmetra {
class CKestruneDoc;
class CWaveOut;
}  // namespace sonmetra

class StretchPlayer {
public:
    // `plotArea` is where the cursor moves, in the window's pixels.
    StretchPlayer(QWidget& window, std::function<QRect()> plotArea);
    ~StretchPlayer();
    StretchPlayer(const StretchPlayer&) = delete;
    StretchPlayer& operator=(const StretchPlayer&) = delete;

    // Plays `count` samples of `channel` from `firstSample`; a playback in
    // progress stops first. Nothing happens for an empty stretch.
    void play(const sonmetra::CKestruneDoc& doc, int channel, int firstSample, int count);
    void stop();
    bool playing() const;
    // The play cursor: the window's paint event calls it after its drawing.
    void paint(QPainter& painter) const;

    // The channel the play commands use: the audio channel, else the first present one.
    static int playedChannel(const sonmetra::CKestruneDoc& doc);

private:
    std::function<QRect()> m_plotArea;
    std::unique_ptr<ViewWaveDisplay> m_display;  // outlives the engine, which draws through it
    std::unique_ptr<sonmetra::CWaveOut> m_waveOut;
};
