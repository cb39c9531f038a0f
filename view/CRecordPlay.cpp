#include "CRecordPlay.h"

#include <QApplication>
#include <QCursor>
#include <QFileDialog>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>
#include <algorithm>
#include <cmath>

#include "AppServices.h"
#include "CKestruneView.h"
#include "LabelController.h"
#include "ViewCommands.h"
#include "ViewWaveDisplay.h"
#include "document/AppConfig.h"
#include "document/AudioRate.h"
#include "document/CKestruneDoc.h"
#include "document/ChannelRate.h"
#include "document/MessageService.h"
#include "io/CWaveIn.h"
#include "io/CWaveOut.h"
#include "recordplay/CFormRecordPlay.h"
#include "recordplay/RecordPlayConfig.h"
#include "recordplay/UnitRecordPlay.h"
#include "res/StringTable.h"

using namespace sonmetra;

namespace {

// Longest signal that is played in one buffer.
constexpr double kShortSignalMs = 1000.0;
// Timer 1: the recording starts once the menu has closed.
constexpr int kRecordTimerMs = 1;

bool defaultSaveAs(QWidget* parent, CKestruneDoc& doc) {
    QString selected;
    const QString path =
        QFileDialog::getSaveFileName(parent, "Save file As", "Untitled", "Sonmetra files (*.kvd)", &selected);
    if (path.isEmpty()) return false;
    QString file = path;
    if (!file.endsWith(".kvd", Qt::CaseInsensitive)) file += ".kvd";
    return doc.saveAs(file.toStdString(), 1);
}

CRecordPlay::SaveAsHandler& saveAsHandler() {
    static CRecordPlay::SaveAsHandler handler = defaultSaveAs;
    return handler;
}

constexpr char kExternalSource[] = "External Hardware";

// The channel that is played: the audio channel, else the first present one.
int playedChannel(const CKestruneDoc& doc) {
    const int audio = doc.audioChannelIndex();
    return audio >= 0 ? audio : doc.firstPresentIndex();
}

class BusyCursor {
public:
    BusyCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~BusyCursor() { QApplication::restoreOverrideCursor(); }
    BusyCursor(const BusyCursor&) = delete;
    BusyCursor& operator=(const BusyCursor&) = delete;
};

}  // namespace

void CRecordPlay::setSaveAsHandler(SaveAsHandler handler) {
    saveAsHandler() = handler ? std::move(handler) : SaveAsHandler(defaultSaveAs);
}

CRecordPlay::CRecordPlay(CKestruneView& view) : m_view(view), m_display(std::make_unique<ViewWaveDisplay>(view)) {}

CRecordPlay::~CRecordPlay() {
    // The engines end their threads before the display they draw through goes.
    m_waveIn.reset();
    m_waveOut.reset();
}

void CRecordPlay::viewClosing() {
    m_recordPending = false;
    m_waveIn.reset();
    m_waveOut.reset();
    m_recording = false;
}

bool CRecordPlay::playing() const { return m_waveOut && m_waveOut->isOpen(); }

bool CRecordPlay::saveBeforeRecording() {
    CKestruneDoc& doc = *m_view.document();
    if (!doc.recordable() || !doc.isModified()) return true;
    const MsgAnswer answer =
        showMessage(formatString(IDS_SAVE_BEFORE_RECORDING_Q, doc.title()), MsgButtons::YesNoCancel, MsgIcon::Question);
    if (answer == MsgAnswer::Cancel) return false;
    if (answer == MsgAnswer::No) return true;
    doc.setSelectionFlag(false);
    // A failed or cancelled save keeps the document and records nothing.
    if (doc.needsSaveAs()) return saveAsHandler()(AppServices::instance().mainWindow, doc);
    BusyCursor busy;
    return doc.save();
}

void CRecordPlay::record() {
    if (m_recording || m_recordPending) return;
    // What the options window shows is what is recorded; a refused value ends the command here.
    if (!CFormRecordPlay::takeOpenFormSettings()) return;
    if (!saveBeforeRecording()) return;
    if (auto* labels = m_view.extension<LabelController>()) {
        labels->clearForRecording();
    } else {
        CKestruneDoc& doc = *m_view.document();
        for (int ch = 0; ch < doc.channelCount(); ++ch) doc.channel(ch).m_labels.clear();
    }
    stopPlayback();
    m_recordPending = true;
    QTimer::singleShot(kRecordTimerMs, this, [this] {
        if (!m_recordPending) return;
        m_recordPending = false;
        startRecording();
    });
}

void CRecordPlay::startRecording() {
    const AppConfig& config = recordPlayConfig();
    if (config.m_source == kExternalSource) {
        if (recordFromUnit(&m_view, *m_view.document(), config)) showRecordedChannels();
        m_view.update();
        return;
    }
    // "Computer" records the microphone at the audio rate in force, "Line" the line input at its own rate.
    const double rate = config.m_inputLine == "Line" ? config.m_lineRateHz : audioRateInForce();
    const auto rateHz = static_cast<unsigned>(std::max(0.0, rate));
    m_waveIn.reset();
    m_block.clear();
    (void)m_block.resize(5);  // the engine grows it by whole buffers
    m_waveIn = std::make_unique<CWaveIn>();
    m_display->startStripChart();
    m_waveIn->Init(&m_block, rateHz, 16, m_display.get());
    if (m_waveIn->OpenMic() != kWaveNoError) {
        m_waveIn.reset();
        m_display->clearStripChart();
        showMessage(IDS_MIC_OPEN_ERROR);
        m_view.update();
        return;
    }
    m_waveIn->Start();
    m_recording = true;
    m_view.requestRedraw();
    m_view.update();
}

void CRecordPlay::stopRecording() {
    if (!m_recording) return;
    m_waveIn->Stop();
    // Close ends the capture thread, so the block is complete and ours.
    m_waveIn->Close();
    const unsigned rateHz = m_waveIn->sampleRate();
    const std::size_t samples = m_waveIn->samplesRecorded();
    m_waveIn.reset();
    m_recording = false;
    m_display->clearStripChart();
    fillRecordedChannel(rateHz, samples);
}

void CRecordPlay::fillRecordedChannel(unsigned rateHz, std::size_t samples) {
    CKestruneDoc& doc = *m_view.document();
    for (int i = 1; i < CKestruneDoc::kSlots; ++i) doc.channel(i) = CChannel();
    CChannel& ch = doc.channel(0);
    // The block holds the whole buffers and the part of the last one that
    // was filled when the user stopped; anything beyond was never filled.
    (void)m_block.resize(samples);
    ch.m_samples = std::move(m_block);
    m_block = SampleBlock();
    ch.m_audio = 1;
    ch.m_bitsPerSample = 16;
    ch.m_referenceCode = 0;
    ch.m_inUse = 1;
    ch.m_rateHz = rateHz;
    ch.m_sampleCount = static_cast<double>(samples);
    ch.m_durationMs = rateHz > 0 ? static_cast<double>(samples) / (rateHz * 0.001) : 0.0;
    ch.m_name = "Recorded file";
    ch.m_units = "bits";
    ch.m_labels.clear();
    ch.m_intensity.clear();
    ch.m_intensityValid = 0;
    ch.m_intensityShown = 0;
    ch.m_viewStartSample = ch.m_prevViewStartSample = 0.0;
    ch.m_viewEndSample = ch.m_prevViewEndSample = ch.m_sampleCount;
    ch.m_viewStartMs = 0.0;
    ch.m_viewEndMs = ch.m_durationMs;
    ch.m_cursorSample = ch.m_cursorMs = 0.0;
    ch.m_selStartSample = ch.m_selEndSample = ch.m_selStartMs = ch.m_selEndMs = 0.0;
    doc.setChannelCount(1);
    doc.setHoldsData(samples > 0);
    doc.setModified(true);
    showRecordedChannels();
}

void CRecordPlay::showRecordedChannels() {
    const CKestruneDoc& doc = *m_view.document();
    m_view.setCursorPlaced(false);
    m_view.setSelectionPresent(false);
    m_view.channelsEdited();
    if (doc.holdsData()) m_view.scrollBarFromRange();
    m_view.refreshReadouts();
    m_view.update();
}

void CRecordPlay::stop() {
    if (m_recording) {
        stopRecording();
    } else if (m_recordPending) {
        m_recordPending = false;  // timer 1 finds it cleared and records nothing
        m_view.update();
    } else {
        stopPlayback();
    }
}

void CRecordPlay::stopPlayback() {
    if (m_waveOut) {
        m_waveOut->Pause();
        m_waveOut->Stop();
        m_waveOut.reset();
    }
    m_display->clearCursor();
}

void CRecordPlay::play(int firstSample, int count) {
    BusyCursor busy;
    CKestruneDoc& doc = *m_view.document();
    if (!doc.holdsData() || m_recording) return;
    const int index = playedChannel(doc);
    if (index < 0) return;
    const CChannel& ch = doc.channel(index);
    if (!CFormRecordPlay::takeOpenFormSettings()) return;
    stopPlayback();
    // The sound card is driven at the channel's rate: one outside the range
    // is refused with what is wrong with it.
    if (const std::string problem = channelRateProblem(ch, index); !problem.empty()) {
        showMessage(problem);
        return;
    }
    if (recordPlayConfig().m_source == kExternalSource) {
        playThroughUnit(&m_view, ch, firstSample, count, recordPlayConfig());
        return;
    }
    m_waveOut = std::make_unique<CWaveOut>();
    const QRect trace = m_view.traceArea();
    m_waveOut->SetProgress(m_display.get(), 1, trace.left(), trace.top(), trace.left() + trace.width(),
                           trace.top() + trace.height());
    const int shortSignal = doc.channel(0).m_durationMs <= kShortSignalMs ? 1 : 0;
    m_waveOut->Load(ch.m_samples, firstSample, count, static_cast<unsigned>(ch.m_rateHz), shortSignal, 0);
    if (m_waveOut->Play() != kWaveNoError) return;
    m_waveOut->Restart();
}

void CRecordPlay::playAll() {
    const CKestruneDoc& doc = *m_view.document();
    const int index = playedChannel(doc);
    if (index < 0) return;
    play(0, static_cast<int>(doc.channel(index).m_sampleCount));
}

void CRecordPlay::playSelection() {
    const CKestruneDoc& doc = *m_view.document();
    const int index = playedChannel(doc);
    if (index < 0) return;
    const CChannel& ch = doc.channel(index);
    const auto first = static_cast<int>(std::trunc(ch.m_selStartSample));
    play(first, static_cast<int>(std::trunc(ch.m_selEndSample)) - first);
}

void CRecordPlay::playWindow() {
    const CKestruneDoc& doc = *m_view.document();
    const int index = playedChannel(doc);
    if (index < 0) return;
    const CChannel& ch = doc.channel(index);
    const auto first = static_cast<int>(std::max(0.0, std::trunc(ch.m_viewStartSample)));
    play(first, static_cast<int>(std::trunc(ch.m_viewEndSample)) - first);
}

void CRecordPlay::paintOverlay(QPainter& painter) {
    if (m_recording) {
        painter.fillRect(m_view.clientRect(), Qt::white);
        m_display->paint(painter);
        painter.setPen(Qt::black);
        painter.setFont(m_view.labelFont());
        const QRect trace = m_view.traceArea();
        painter.drawText(QPoint(trace.left() + 10, trace.top() + 30), loadString(IDS_RECORDING_BANNER));
        return;
    }
    m_display->paint(painter);
}

bool CRecordPlay::mousePress(QMouseEvent* event) {
    if (!m_recording || event->button() != Qt::LeftButton) return false;
    stopRecording();
    return true;
}

void registerRecordPlayCommands() {
    static bool registered = false;
    if (registered) return;
    registered = true;
    registerViewExtension([](CKestruneView& view) { return std::make_unique<CRecordPlay>(view); });

    auto hasData = [](const CKestruneView& v) { return v.document() != nullptr && v.document()->holdsData(); };
    auto add = [](const QString& text, const QString& tip, int order, std::function<void(CRecordPlay&)> run,
                  std::function<bool(const CKestruneView&)> enabled) {
        ViewCommand c;
        c.menu = "&Record/Play";
        c.text = text;
        c.statusTip = tip;
        c.order = order;
        c.run = [run](CKestruneView& v) {
            if (auto* e = v.extension<CRecordPlay>()) run(*e);
        };
        c.enabled = std::move(enabled);
        ViewCommandRegistry::instance().add(std::move(c));
    };
    add(
        "Record\tCtrl+R", "Records from the sound card or the external unit into this document", 10,
        [](CRecordPlay& e) { e.record(); },
        [](const CKestruneView& v) { return v.document() != nullptr && v.document()->recordable(); });
    add(
        "Play All\tCtrl+Y", "Plays the whole signal", 20, [](CRecordPlay& e) { e.playAll(); }, hasData);
    add(
        "Play Selection\tCtrl+U", "Plays the selection", 30, [](CRecordPlay& e) { e.playSelection(); },
        [hasData](const CKestruneView& v) { return hasData(v) && v.selectionPresent(); });
    add(
        "Play Window", "Plays the displayed stretch", 40, [](CRecordPlay& e) { e.playWindow(); }, hasData);
    add(
        "Stop", "Stops playing or recording", 50, [](CRecordPlay& e) { e.stop(); },
        [](const CKestruneView& v) {
            const auto* e = v.extension<CRecordPlay>();
            return e != nullptr && (e->recording() || e->recordPending() || e->playing());
        });
}
