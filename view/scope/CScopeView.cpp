#include "CScopeView.h"

#include <QImage>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>

#include "ScopeTransfer.h"
#include "document/AppConfig.h"
#include "document/UserException.h"
#include "io/usb/UnitRecording.h"
#include "io/usb/UsbProtocol.h"
#include "log/CDatatbl5.h"
#include "view/PictureOutput.h"
#include "view/recordplay/CFormRecordPlay.h"
#include "view/recordplay/RecordPlayConfig.h"
#include "view/recordplay/UsbUnitSetup.h"

using namespace sonmetra;

CScopeView::CScopeView(int unitChannels, QWidget* parent)
    : QAbstractScrollArea(parent), m_transfer(std::make_unique<ScopeTransfer>()), m_unitChannels(unitChannels) {
    m_identifiedDriver = usb::usbDriver();
    m_identifiedDeviceSetting = usb::driverSetting();
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    viewport()->setAutoFillBackground(false);
    m_timer.setSingleShot(true);
    m_timer.setInterval(kRefreshPeriodMs);
    connect(&m_timer, &QTimer::timeout, this, [this] { refresh(); });
    connect(m_transfer.get(), &ScopeTransfer::finished, this, [this] { snapshotArrived(); });
}

CScopeView::~CScopeView() { stopRefresh(); }

void CScopeView::initialUpdate() {
    m_bands = scopeStartBands(viewport()->width());
    setScrollHeight(10);
    m_timer.start();
}

void CScopeView::restart(int unitChannels) {
    stopRefresh();
    if (unitChannels != m_unitChannels) m_channels = {};
    m_unitChannels = unitChannels;
    m_identifiedDriver = usb::usbDriver();
    m_identifiedDeviceSetting = usb::driverSetting();
    emit unitIdentified();
    m_timer.start();
}

void CScopeView::stopRefresh() {
    m_timer.stop();
    m_transfer->abandon();
}

bool CScopeView::refreshing() const { return m_timer.isActive() || m_transfer->running(); }

bool CScopeView::snapshotUnderWay() const { return m_transfer->running(); }

void CScopeView::refresh() {
    m_timer.stop();
    // The form shows what the user is setting; a value it refuses stops the
    // scope. A cell still being typed in is taken once its edit has ended,
    // not half-typed.
    if (CFormRecordPlay* form = CFormRecordPlay::openForm())
        if (!form->channelTable()->editingInProgress() && !CFormRecordPlay::takeOpenFormSettings()) return;
    takeSnapshot();
}

void CScopeView::identifyIfUnitChanged() {
    const auto driver = usb::usbDriver();
    if (driver == m_identifiedDriver.lock() && usb::driverSetting() == m_identifiedDeviceSetting) return;
    m_identifiedDriver = driver;
    m_identifiedDeviceSetting = usb::driverSetting();
    int size = -1;
    try {
        size = usb::IdentifyDevice();
    } catch (const UserException&) {
        size = -1;
    }
    if (size != m_unitChannels) m_channels = {};
    m_unitChannels = size;
    emit unitIdentified();
}

void CScopeView::takeSnapshot() {
    const AppConfig& config = recordPlayConfig();
    takeDriverSetting(&config);
    identifyIfUnitChanged();
    try {
        const usb::AcquisitionSettings settings = usb::AcquisitionFromConfig(config, m_unitChannels);
        m_block = usb::BuildParameterBlock(settings);
        m_multiplexType = settings.multiplexType;
    } catch (const UserException&) {
        return;  // reported; the cycle stops with the picture as it is
    }
    m_transfer->start(m_block);
}

void CScopeView::snapshotArrived() {
    if (m_transfer->failed()) {
        m_transfer->heldMessages().replay();
        return;
    }
    const std::vector<std::uint8_t> stream = m_transfer->takeStream();
    m_dataReady = 0;
    usb::SplitScopeStream(stream, m_block, m_unitChannels, m_multiplexType, m_channels);
    m_dataReady = 1;
    ++m_snapshots;
    viewport()->update();
    m_timer.start();
}

ScopePicture CScopeView::currentPicture() const {
    ScopePicture picture;
    picture.shownChannels = usb::ScopeShownChannels(recordPlayConfig(), m_unitChannels);
    picture.samples = &m_channels;
    picture.dataReady = m_dataReady != 0;
    return picture;
}

void CScopeView::drawPicture(QPainter& painter, QSize size) const {
    painter.setFont(font());
    drawScope(painter, size, currentPicture());
}

QSize CScopeView::pictureSize() const { return {viewport()->width(), std::max(viewport()->height(), m_scrollHeight)}; }

QImage CScopeView::picture() const {
    return pictureImage(pictureSize(), [this](QPainter& p, QSize s) { drawPicture(p, s); });
}

void CScopeView::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.fillRect(event->rect(), Qt::white);
    painter.setFont(font());
    painter.translate(0, -verticalScrollBar()->value());
    const ScopePicture picture = currentPicture();
    m_bands = drawScope(painter, viewport()->size(), picture);
    // The scroll range follows the bands once the paint is over.
    const int height = scopeScrollHeight(picture.shownChannels.size());
    if (height != m_scrollHeight)
        QMetaObject::invokeMethod(
            this, [this, height] { setScrollHeight(height); }, Qt::QueuedConnection);
}

void CScopeView::setScrollHeight(int height) {
    m_scrollHeight = height;
    QScrollBar* bar = verticalScrollBar();
    bar->setPageStep(viewport()->height());
    bar->setSingleStep(20);
    bar->setRange(0, std::max(0, height - viewport()->height()));
}

void CScopeView::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    setScrollHeight(m_scrollHeight);
}

void CScopeView::scrollContentsBy(int, int) { viewport()->update(); }
