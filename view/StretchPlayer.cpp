#include "StretchPlayer.h"

#include <QApplication>

#include "ViewWaveDisplay.h"
#include "document/CKestruneDoc.h"
#include "document/ChannelRate.h"
#include "document/MessageService.h"
#include "io/CWaveOut.h"

namespace {
// Longest signal that is played in one buffer.
constexpr double kShortSignalMs = 1000.0;
}  // namespace

StretchPlayer::StretchPlayer(QWidget& window, std::function<QRect()> plotArea)
    : m_plotArea(plotArea), m_display(std::make_unique<ViewWaveDisplay>(window, plotArea)) {}

StretchPlayer::~StretchPlayer() { stop(); }

int StretchPlayer::playedChannel(const sonmetra::CKestruneDoc& doc) {
    const int audio = doc.audioChannelIndex();
    return audio >= 0 ? audio : doc.firstPresentIndex();
}

void StretchPlayer::play(const sonmetra::CKestruneDoc& doc, int channel, int firstSample, int count) {
    stop();
    if (channel < 0 || channel >= doc.channelCount() || count <= 0 || firstSample < 0) return;
    const sonmetra::CChannel& ch = doc.channel(channel);
    // The sound card is driven at the channel's rate: one outside the range
    // is refused with what is wrong with it.
    if (const std::string problem = sonmetra::channelRateProblem(ch, channel); !problem.empty()) {
        sonmetra::showMessage(problem);
        return;
    }
    QApplication::setOverrideCursor(Qt::WaitCursor);
    m_waveOut = std::make_unique<sonmetra::CWaveOut>();
    const QRect plot = m_plotArea();
    m_waveOut->SetProgress(m_display.get(), 1, plot.left(), plot.top(), plot.left() + plot.width(),
                           plot.top() + plot.height());
    const int shortSignal = count * 1000.0 / ch.m_rateHz <= kShortSignalMs ? 1 : 0;
    m_waveOut->Load(ch.m_samples, firstSample, count, static_cast<unsigned>(ch.m_rateHz), shortSignal, 0);
    const bool started = m_waveOut->Play() == sonmetra::kWaveNoError;
    if (started) m_waveOut->Restart();
    QApplication::restoreOverrideCursor();
}

void StretchPlayer::stop() {
    if (m_waveOut) {
        m_waveOut->Pause();
        m_waveOut->Stop();
        m_waveOut.reset();
    }
    m_display->clearCursor();
}

bool StretchPlayer::playing() const { return m_waveOut && m_waveOut->isOpen(); }

void StretchPlayer::paint(QPainter& painter) const { m_display->paint(painter); }
