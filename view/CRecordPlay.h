// Recording and playback from the waveform view: Record, Play All, Play
// Selection, Play Window and Stop, through the sound card or, with the input
// source "External Hardware", the external unit (recordplay/UnitRecordPlay.h).
// Each reads the open record and play options window first.
//
// Record asks whether to save a modified document, clears the labels and
// starts timer 1; when it fires, a new CWaveIn records into a new sample
// block while the view shows "Recording...   press mouse to stop" and the
// engine's strip chart. A left press in the view stops it and the block
// becomes channel 0, "Recorded file", the document's only channel.
// The play commands hand a stretch of the audio channel to a new CWaveOut,
// in one buffer for signals of at most 1000 ms, and the engine moves a
// one-pixel play cursor over the trace area. A new Record or play stops
// the previous one.
#pragma once

#include <QObject>
#include <functional>
#include <memory>

#include "ViewExtension.h"
#include "document/SampleBlock.h"

class QWidget;
class ViewWaveDisplay;

namespace sonmetra {
class CKestruneDoc;
class CWaveIn;
class CWaveOut;
}  // namespace sonmetra

class CRecordPlay : public QObject, public IViewExtension {
    Q_OBJECT
public:
    explicit CRecordPlay(CKestruneView& view);
    ~CRecordPlay() override;

    void record();
    void playAll();
    void playSelection();
    void playWindow();
    // The press that ends a recording.
    void stopRecording();
    // "Stop": ends a recording (keeping what was recorded), a record that
    // has not started yet, or the playback.
    void stop();

    bool recording() const { return m_recording; }
    // Record has been chosen and timer 1 has not fired yet.
    bool recordPending() const { return m_recordPending; }
    bool playing() const;
    const ViewWaveDisplay& display() const { return *m_display; }

    // Save As for the question before recording, for a document that has no
    // file of its own yet; by default a QFileDialog with the main frame's
    // texts. The application may hand in its own (the main frame's).
    using SaveAsHandler = std::function<bool(QWidget* parent, sonmetra::CKestruneDoc& doc)>;
    static void setSaveAsHandler(SaveAsHandler handler);

    // IViewExtension.
    void paintOverlay(QPainter& painter) override;
    bool mousePress(QMouseEvent* event) override;
    void viewClosing() override;

private:
    void startRecording();  // timer 1
    bool saveBeforeRecording();
    void fillRecordedChannel(unsigned rateHz, std::size_t samples);
    // The view after a recording replaced the channels: whole range, no cursor, readouts.
    void showRecordedChannels();
    void play(int firstSample, int count);
    void stopPlayback();

    CKestruneView& m_view;
    std::unique_ptr<ViewWaveDisplay> m_display;  // outlives the engines, which draw through it
    sonmetra::SampleBlock m_block;               // grown by the capture thread while recording
    std::unique_ptr<sonmetra::CWaveIn> m_waveIn;
    std::unique_ptr<sonmetra::CWaveOut> m_waveOut;
    bool m_recording = false;
    bool m_recordPending = false;  // timer 1 is running
};

// Registers the five commands and the view extension (once).
void registerRecordPlayCommands();
