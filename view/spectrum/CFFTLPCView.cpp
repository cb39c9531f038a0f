#include "CFFTLPCView.h"

#include <QApplication>
#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPainter>
#include <QPrinter>
#include <QProgressDialog>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "SpectrumLogEntries.h"
#include "SpectrumPlotWidget.h"
#include "SpectrumReadoutBar.h"
#include "analysis/FftSpectrum.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "log/CFormLog.h"
#include "res/StringTable.h"
#include "view/AppServices.h"
#include "view/MeasurementEntries.h"
#include "view/PictureOutput.h"

namespace {

// Selections of more frames than this show a progress dialog that can cancel.
constexpr int kProgressFrames = 20000;
constexpr int kDefaultLogStepHz = 100;

int logFrameStepHz() {
    const sonmetra::AppConfig* config = AppServices::instance().config;
    return config != nullptr ? config->m_logFrameStepHz : kDefaultLogStepHz;
}

// Frames of the computation: the first always, then one per step until N + pos reaches the end.
int framesOf(double startSample, double endSample, const sonmetra::FftLpcSettings& settings, double rateHz) {
    const double step = settings.averageStepMs * rateHz * 0.001 + 0.5;
    const double rest = endSample - sonmetra::FftSizeOfIndex(settings.fftSizeIndex) - startSample;
    return rest > 0.0 ? static_cast<int>(std::min(1e9, std::ceil(rest / step))) + 1 : 1;
}

}  // namespace

CFFTLPCView::CFFTLPCView(sonmetra::CKestruneDoc* doc, bool average, QWidget* parent)
    : QWidget(parent),
      m_doc(doc),
      m_average(average),
      m_bar(new SpectrumReadoutBar(this)),
      m_plot(new SpectrumPlotWidget([this](QPainter& p, QSize s) { drawSpectrumPicture(p, s, picture(true)); }, this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_bar);
    layout->addWidget(m_plot, 1);
    m_plot->mouseMoved = [this](QPointF p) { mouseMovedTo(p); };
    m_plot->mouseLeft = [this] { m_bar->clearMouse(); };
    m_plot->clicked = [this](QPointF p) { clickedAt(p); };
    if (m_doc) m_settings = settingsInForce(*m_doc);
}

CFFTLPCView::~CFFTLPCView() = default;

QString CFFTLPCView::titleText() const {
    const QString title = m_doc ? QString::fromStdString(m_doc->title()) : QString();
    return title + (m_average ? QStringLiteral("::Average FFT/LPC") : QStringLiteral("::FFT/LPC"));
}

sonmetra::FftLpcSettings CFFTLPCView::settingsInForce(const sonmetra::CKestruneDoc& doc) {
    const sonmetra::AppConfig* config = AppServices::instance().config;
    return config != nullptr ? config->m_analysis.fftLpc : doc.m_analysis.fftLpc;
}

void CFFTLPCView::recomputeAll() {
    for (QWidget* w : QApplication::allWidgets())
        if (auto* view = qobject_cast<CFFTLPCView*>(w)) view->recompute();
}

bool CFFTLPCView::setup(double startSample, double endSample, const sonmetra::FftLpcSettings& settings) {
    if (!m_doc) return false;
    const int index = m_doc->audioChannelIndex();
    if (index < 0 || !m_doc->channel(index).present()) {
        sonmetra::beep();
        sonmetra::showMessage(sonmetra::IDS_FFT_NO_AUDIO_CHANNEL);
        return false;
    }
    const sonmetra::CChannel& audio = m_doc->channel(index);

    std::unique_ptr<QProgressDialog> progress;
    const int frames = framesOf(startSample, endSample, settings, audio.m_rateHz);
    if (m_interactive && frames > kProgressFrames) {
        progress = std::make_unique<QProgressDialog>(QStringLiteral("Computing the average spectrum..."),
                                                     QStringLiteral("Cancel"), 0, frames, this);
        progress->setWindowModality(Qt::WindowModal);
        progress->setMinimumDuration(400);
    }
    const sonmetra::AnalysisProgress report = [&progress](int done, int) {
        if (!progress) return true;
        if (done % 32 == 0) progress->setValue(done);
        return !progress->wasCanceled();
    };
    const sonmetra::AnalysisStatus status = m_analysis.run(audio, startSample, endSample, settings, report);
    progress.reset();
    if (status == sonmetra::AnalysisStatus::Failed) {
        sonmetra::beep();
        sonmetra::showMessage(sonmetra::IDS_NO_MEMORY);
        return false;
    }
    if (status == sonmetra::AnalysisStatus::Cancelled) return false;
    m_startSample = startSample;
    m_endSample = endSample;
    m_msPerSample = audio.msPerSample();
    m_settings = settings;
    showAnalysis();
    return true;
}

bool CFFTLPCView::recompute() {
    if (!m_doc) return false;
    return setup(m_startSample, m_endSample, settingsInForce(*m_doc));
}

void CFFTLPCView::showAnalysis() {
    const SpectrumResult& r = result();
    m_bar->setAnalysis(r.rateHz, m_settings.lpcOrder, r.fftPoints, m_settings.appliedWindowMs,
                       m_settings.averageStepMs);
    m_bar->setFormants(r.formantHz, r.bandwidthHz);
    m_plot->invalidate();
}

QString CFFTLPCView::whereText() const {
    const SpectrumResult& r = result();
    if (r.empty()) return {};
    QString points = QStringLiteral("%1 pts").arg(r.fftPoints);
    if (r.appliedPoints < r.fftPoints) points += QStringLiteral(" (%1 applied)").arg(r.appliedPoints);
    const QString lpc = QStringLiteral("LPC %1").arg(m_settings.lpcOrder);
    if (!m_average)
        return QStringLiteral("at %1 ms, %2, %3").arg(r.startSample * m_msPerSample, 0, 'f', 1).arg(points, lpc);
    return QStringLiteral("%1 to %2 ms, %3 frames, %4, %5")
        .arg(r.startSample * m_msPerSample, 0, 'f', 1)
        .arg(r.endSample * m_msPerSample, 0, 'f', 1)
        .arg(r.frames)
        .arg(points, lpc);
}

SpectrumPicture CFFTLPCView::picture(bool colour) const {
    SpectrumPicture p;
    p.result = &result();
    p.settings = m_settings;
    p.title = titleText();
    p.where = whereText();
    p.markerBin = markerBin();
    p.colour = colour;
    return p;
}

QImage CFFTLPCView::screenImage(QSize size) const {
    const SpectrumPicture p = picture(true);
    return pictureImage(size, [&p](QPainter& painter, QSize s) { drawSpectrumPicture(painter, s, p); });
}

QImage CFFTLPCView::bitmapImage() const {
    const SpectrumPicture p = picture(m_settings.print.color != 0);
    const double dpi = logicalDpiX() > 0 ? logicalDpiX() : 96.0;
    return pictureImage(printSizePx(m_settings.print, dpi),
                        [&p](QPainter& painter, QSize s) { drawSpectrumPicture(painter, s, p); });
}

void CFFTLPCView::printOn(QPrinter& printer) const {
    const SpectrumPicture p = picture(m_settings.print.color != 0);
    ::printPicture(printer, m_settings.print, [&p](QPainter& painter, QSize s) { drawSpectrumPicture(painter, s, p); });
}

std::optional<int> CFFTLPCView::markerBin() const {
    if (!m_markerHz || result().empty()) return std::nullopt;
    return result().nearestBin(*m_markerHz);
}

void CFFTLPCView::placeMarkerAtHz(double hz) {
    if (result().empty()) return;
    const double range = displayRangeHz(m_settings, result().rateHz);
    m_markerHz = result().nearestBin(std::clamp(hz, 0.0, range)) * result().binHz();
    m_plot->invalidate();
}

bool CFFTLPCView::envelopeShown() const { return m_settings.drawLpc != 0 && result().hasEnvelope; }

void CFFTLPCView::mouseMovedTo(QPointF pos) {
    const SpectrumAxes axes = axesAt(m_plot->size());
    if (!axes.usable() || !axes.plot().contains(pos)) {
        m_bar->clearMouse();
        m_plot->showNote(pos.toPoint(), QString());
        return;
    }
    const double hz = axes.hzAtX(pos.x());
    const double db = axes.labelDbAtY(pos.y());
    m_bar->setMouse(db, hz);
    m_plot->showNote(pos.toPoint(), QStringLiteral("%1 Hz\n%2 dB").arg(std::lround(hz)).arg(db, 0, 'f', 1));
}

void CFFTLPCView::clickedAt(QPointF pos) {
    const SpectrumAxes axes = axesAt(m_plot->size());
    if (axes.usable() && axes.plot().contains(pos)) placeMarkerAtHz(axes.hzAtX(pos.x()));
}

void CFFTLPCView::saveAsBitmap() {
    const QString base = m_doc ? QFileInfo(QString::fromStdString(m_doc->title())).completeBaseName() : QString();
    const QString name = base + (m_average ? QStringLiteral(" Average FFT-LPC") : QStringLiteral(" FFT-LPC"));
    if (const auto path = askBitmapPath(this, QStringLiteral("Save As bmp"), bitmapFileName(name)))
        writeBitmap(bitmapImage(), *path);
}

void CFFTLPCView::printSpectrum() {
    runPrintDialog(this, [this](QPrinter& printer) { printOn(printer); });
}

void CFFTLPCView::previewSpectrum() {
    runPrintPreview(this, [this](QPrinter& printer) { printOn(printer); });
}

void CFFTLPCView::copySpectrum() {
    if (!result().empty()) QGuiApplication::clipboard()->setText(spectrumTable(result(), envelopeShown()));
}

bool CFFTLPCView::canEnterAtMarker() const { return markerBin().has_value() && CFormLog::activeLog() != nullptr; }

bool CFFTLPCView::canEnterFrame() const { return !result().empty() && CFormLog::activeLog() != nullptr; }

void CFFTLPCView::enterAtMarker() {
    if (const auto bin = markerBin()) sendToLog(spectrumMarkerRow(result(), *bin, envelopeShown()));
}

void CFFTLPCView::enterFormants() {
    if (!result().empty()) sendToLog(spectrumFormantRow(result()));
}

void CFFTLPCView::enterAllFrame() {
    const double range = displayRangeHz(m_settings, result().rateHz);
    for (const MeasurementRow& row : spectrumFrameRows(result(), logFrameStepHz(), range, envelopeShown()))
        if (!sendToLog(row)) return;
}
