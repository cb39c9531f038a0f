#include "CScopeChildFrame.h"

#include <QCloseEvent>
#include <QMdiArea>
#include <algorithm>
#include <optional>

#include "CScopeView.h"
#include "document/UserException.h"
#include "io/usb/UsbProtocol.h"
#include "view/WindowCommands.h"
#include "view/recordplay/CFormRecordPlay.h"
#include "view/recordplay/CFrameRecordPlay.h"
#include "view/recordplay/RecordPlayConfig.h"
#include "view/recordplay/UsbUnitSetup.h"

namespace {

CScopeChildFrame* g_frame = nullptr;

constexpr int kMinimumWidth = 480;
constexpr int kOptionsWidth = 760;  // room left for the Record/Play options at their first size

// The unit's size as the options in force name it; nullopt when asking failed
// with a message.
std::optional<int> identifyUnit() {
    CFormRecordPlay::takeOpenFormSettings();
    takeDriverSetting(&recordPlayConfig());
    try {
        return sonmetra::usb::IdentifyDevice();
    } catch (const sonmetra::UserException&) {
        return std::nullopt;
    }
}

}  // namespace

CScopeChildFrame::CScopeChildFrame(int unitChannels, QWidget* parent)
    : QMdiSubWindow(parent), m_view(new CScopeView(unitChannels)) {
    g_frame = this;
    setAttribute(Qt::WA_DeleteOnClose);
    setCommandContext(this, kCommandContext);
    setWidget(m_view);
    connect(m_view, &CScopeView::unitIdentified, this, [this] { showUnit(); });
    showUnit();
    resize(700, 600);
}

CScopeChildFrame::~CScopeChildFrame() {
    if (g_frame == this) g_frame = nullptr;
}

CScopeChildFrame* CScopeChildFrame::instance() { return g_frame; }

void CScopeChildFrame::showUnit() {
    setWindowTitle(QStringLiteral("Scope: %1").arg(unitStatusText(m_view->unitChannels())));
}

void CScopeChildFrame::placeInWorkspace(QMdiArea* area) {
    const QSize room = area->viewport()->size();
    int width = room.width() - kOptionsWidth;
    if (width < kMinimumWidth) width = std::max(kMinimumWidth, room.width() / 2);
    setGeometry(0, 0, std::min(width, room.width()), room.height());
}

CScopeChildFrame* CScopeChildFrame::open(QMdiArea* area) {
    CScopeChildFrame* frame = g_frame;
    // A running scope already watches the unit in use.
    const std::optional<int> size =
        frame && frame->m_view->refreshing() ? frame->m_view->unitChannels() : identifyUnit();
    if (!size) return nullptr;
    if (frame) {
        if (!frame->m_view->refreshing()) frame->m_view->restart(*size);
        frame->show();
        frame->raise();
        if (QMdiArea* owner = frame->mdiArea()) owner->setActiveSubWindow(frame);
        return frame;
    }
    frame = new CScopeChildFrame(*size);
    if (area) {
        area->addSubWindow(frame);
        frame->placeInWorkspace(area);
    }
    frame->show();
    if (area) area->setActiveSubWindow(frame);
    frame->m_view->initialUpdate();
    return frame;
}

void CScopeChildFrame::closeOpenScope() {
    CScopeChildFrame* frame = g_frame;
    if (frame == nullptr) return;
    frame->m_view->stopRefresh();
    g_frame = nullptr;
    frame->close();
}

void CScopeChildFrame::closeEvent(QCloseEvent* event) {
    m_view->stopRefresh();
    if (g_frame == this) g_frame = nullptr;
    QMdiSubWindow::closeEvent(event);
}
