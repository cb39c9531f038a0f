#include "CSpectrogramView.h"

#include <QPainter>
#include <QPrinter>
#include <QProgressDialog>
#include <QResizeEvent>
#include <algorithm>
#include <cmath>

#include "analysis/FftSpectrum.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "res/StringTable.h"
#include "view/AppServices.h"
#include "view/PictureOutput.h"
#include "view/StretchPlayer.h"
#include "view/spectrogram/SpectrogramReadoutBar.h"

namespace {

// Long enough that dragging a window edge computes once, at the end.
constexpr int kResizeSettleMs = 250;
// Printouts compute up to three cells per layout pixel (288 per inch).
constexpr double kMaxPrintCellScale = 3.0;

std::function<void(int, int)>& progressObserver() {
    static std::function<void(int, int)> observer;
    return observer;
}
int g_progressDelayMs = 500;

}  // namespace

void CSpectrogramView::setProgressObserver(std::function<void(int, int)> observer) {
    progressObserver() = std::move(observer);
}
void CSpectrogramView::setProgressDelayMs(int ms) { g_progressDelayMs = ms; }

CSpectrogramView::CSpectrogramView(sonmetra::CKestruneDoc* doc, QWidget* parent)
    : QWidget(parent), m_doc(doc), m_readouts(new SpectrogramReadoutBar(this)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(240, 160);
    m_player = std::make_unique<StretchPlayer>(*this, [this] { return m_playArea; });
    m_resizeTimer.setSingleShot(true);
    m_resizeTimer.setInterval(kResizeSettleMs);
    connect(&m_resizeTimer, &QTimer::timeout, this, &CSpectrogramView::afterResize);
    const int channel = doc != nullptr ? doc->audioChannelIndex() : -1;
    if (channel >= 0) m_range = SpectrogramRange::whole(doc->channel(channel));
}

CSpectrogramView::~CSpectrogramView() = default;

int CSpectrogramView::channel() const { return m_doc != nullptr ? m_doc->audioChannelIndex() : -1; }

sonmetra::SpectrogramSettings CSpectrogramView::settingsInForce() const {
    if (const sonmetra::AppConfig* config = AppServices::instance().config) return config->m_analysis.spectrogram;
    return m_doc != nullptr ? m_doc->m_analysis.spectrogram : sonmetra::SpectrogramSettings{};
}

QRect CSpectrogramView::pictureRect() const {
    const int bar = m_readouts->sizeHint().height();
    return QRect(0, 0, width(), std::max(0, height() - bar));
}

SpectrogramLayout CSpectrogramView::layoutNow() const {
    return spectrogramLayout(pictureRect().size(), m_data ? m_data->settings : settingsInForce());
}

QString CSpectrogramView::emptyMessage() const {
    if (channel() < 0) return QString::fromLatin1(kNoAudioChannelText);
    if (m_range.empty()) return QString::fromLatin1(kEmptyRangeText);
    return {};
}

SpectrogramRequest CSpectrogramView::requestFor(QSize pictureSize, double cellScale) const {
    SpectrogramRequest request;
    request.doc = m_doc;
    request.channel = channel();
    request.range = m_range;
    request.settings = settingsInForce();
    const QRect image = spectrogramLayout(pictureSize, request.settings).image;
    const QSize imagePx(static_cast<int>(std::lround(image.width() * cellScale)),
                        static_cast<int>(std::lround(image.height() * cellScale)));
    request.cells = cellCountsFor(imagePx, m_range.endSample - m_range.startSample);
    return request;
}

sonmetra::AnalysisStatus CSpectrogramView::computeInto(const SpectrogramRequest& request, SpectrogramData& out) {
    using sonmetra::AnalysisStatus;
    if (request.channel < 0 || request.cells.columns < 1 || request.cells.points < 1) return AnalysisStatus::Failed;
    const int total = request.cells.columns;
    std::unique_ptr<QProgressDialog> dialog;
    if (m_showsProgress) {
        dialog = std::make_unique<QProgressDialog>(QStringLiteral("Computing the spectrogram..."),
                                                   QStringLiteral("Cancel"), 0, total, this);
        dialog->setWindowTitle(QStringLiteral("Spectrogram"));
        dialog->setWindowModality(Qt::ApplicationModal);
        dialog->setMinimumDuration(g_progressDelayMs);
        dialog->setAutoReset(false);
        dialog->setAutoClose(false);
        dialog->setValue(0);
    }
    // A hundred steps at most: each lets the dialog handle its events.
    const int every = std::max(1, total / 100);
    auto progress = [&](int done, int count) {
        if (!dialog) return true;
        if (done % every != 0 && done != count) return true;
        dialog->setValue(done);
        if (progressObserver()) progressObserver()(done, count);
        return !dialog->wasCanceled();
    };
    m_computing = true;
    const AnalysisStatus status = computeSpectrogramData(request, m_summaries, out, progress);
    m_computing = false;
    if (status == AnalysisStatus::Failed) {
        sonmetra::beep();
        sonmetra::showMessage(sonmetra::IDS_NO_MEMORY);
    }
    return status;
}

bool CSpectrogramView::recompute() {
    if (m_computing) {
        m_recomputePending = true;
        return false;
    }
    m_recomputePending = false;
    const SpectrogramRequest request = requestFor(pictureRect().size(), devicePixelRatioF());
    if (request.channel < 0 || m_range.empty() || request.cells.columns < 1 || request.cells.points < 1) {
        m_data.reset();
        refreshReadouts();
        update();
        return false;
    }
    auto data = std::make_unique<SpectrogramData>();
    const sonmetra::AnalysisStatus status = computeInto(request, *data);
    if (status == sonmetra::AnalysisStatus::Ok) m_data = std::move(data);
    refreshReadouts();
    update();
    // A resize or a new setting that came in meanwhile.
    if (m_recomputePending) m_resizeTimer.start();
    return status == sonmetra::AnalysisStatus::Ok;
}

void CSpectrogramView::afterResize() {
    const SpectrogramRequest request = requestFor(pictureRect().size(), devicePixelRatioF());
    if (m_data && request.cells.columns == m_data->columns() && request.cells.points == m_data->points()) return;
    recompute();
}

SpectrogramScene CSpectrogramView::scene(bool blackWhite) const {
    SpectrogramScene s;
    s.doc = m_doc;
    s.data = m_data.get();
    s.settings = settingsInForce();
    s.blackWhite = blackWhite;
    s.cursorMs = m_cursorMs;
    s.cursorHz = m_cursorHz;
    s.selectionMs = m_selectionMs;
    s.message = emptyMessage();
    return s;
}

QImage CSpectrogramView::pictureImage(QSize size, bool blackWhite) {
    SpectrogramScene s = scene(blackWhite);
    const SpectrogramRequest request = requestFor(size, 1.0);
    SpectrogramData own;
    const bool fits = m_data && request.cells.columns == m_data->columns() && request.cells.points == m_data->points();
    if (!fits) {
        s.data = computeInto(request, own) == sonmetra::AnalysisStatus::Ok ? &own : nullptr;
        if (s.data == nullptr && s.message.isEmpty()) s.message = QStringLiteral("No spectrogram at this size.");
    }
    return ::pictureImage(size, [&s](QPainter& p, QSize sz) { drawSpectrogram(p, sz, s); });
}

void CSpectrogramView::printPicture(QPrinter& printer) {
    const sonmetra::PrintSize print = settingsInForce().print;
    SpectrogramScene s = scene(print.color == 0);
    const double scale = std::clamp(printer.resolution() / 96.0, 1.0, kMaxPrintCellScale);
    SpectrogramData own;
    if (computeInto(requestFor(printLayoutSize(print), scale), own) == sonmetra::AnalysisStatus::Ok) s.data = &own;
    ::printPicture(printer, print, [&s](QPainter& p, QSize sz) { drawSpectrogram(p, sz, s); });
}

void CSpectrogramView::paintEvent(QPaintEvent*) {
    QPainter p(this);
    const QRect picture = pictureRect();
    drawSpectrogram(p, picture.size(), scene(false));
    m_player->paint(p);
}

void CSpectrogramView::resizeEvent(QResizeEvent* event) {
    const int bar = m_readouts->sizeHint().height();
    m_readouts->setGeometry(0, std::max(0, height() - bar), width(), bar);
    QWidget::resizeEvent(event);
    m_resizeTimer.start();
}

void CSpectrogramView::samplesReplaced() {
    stopPlaying();
    m_data.reset();
    m_summaries.invalidateAll();
    if (channel() >= 0) m_range = m_range.limitedTo(m_doc->channel(channel()));
    m_cursorMs.reset();
    m_selectionMs.reset();
    recompute();
}
