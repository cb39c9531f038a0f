// The live scope on the simulated unit: the picture at its pixels, the
// traces of the unit's own waveforms in their bands, the refresh cycle and
// its failures, the options beside it, Record closing it, and the
// workstation going on while a snapshot is under way.
#include <QAbstractSpinBox>
#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QMdiArea>
#include <QMenu>
#include <QMenuBar>
#include <QScrollBar>
#include <QTimer>
#include <QToolBar>
#include <algorithm>
#include <functional>

#include "RecordPlayFixture.h"
#include "document/AppConfig.h"
#include "document/MessageService.h"
#include "frame/CChildFrame.h"
#include "frame/CMainFrame.h"
#include "frame/CommandMenus.h"
#include "frame/RecordPlayWindowCommand.h"
#include "log/CDatatbl5.h"
#include "view/AppServices.h"
#include "view/CRecordPlay.h"
#include "view/FileDialogs.h"
#include "view/WindowCommands.h"
#include "view/recordplay/CFormRecordPlay.h"
#include "view/recordplay/CFrameRecordPlay.h"
#include "view/scope/CScopeChildFrame.h"
#include "view/scope/CScopeView.h"
#include "view/scope/ScopeCommands.h"

using namespace sonmetra;
using namespace rptest;

namespace {

const char* kOpenError =
    "Error in opening the requested USB device.\nPlease unplug the device, wait a few seconds and replug the device.";
const char* kWrongSource =
    "Wrong input source.\nPlease refer to the Record/Play window to select a proper\ninput source.";

bool isRed(QRgb p) { return (p & 0xFFFFFF) == 0xFF0000; }
bool isGrey(QRgb p) { return (p & 0xFFFFFF) == 0xC8C8C8; }
bool isInk(QRgb p) { return !isRed(p) && qGray(p) < 128; }

// The box around the ink (text, traces) inside `region` and outside `skip`; empty when none.
QRect inkBox(const QImage& image, const QRect& region, const QRect& skip = {}) {
    QRect box;
    const QRect r = region.intersected(image.rect());
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            if (isInk(image.pixel(x, y)) && !skip.contains(x, y)) box |= QRect(x, y, 1, 1);
    return box;
}

// Where the band's label is written.
QRect labelBox(const ScopeBand& b, const QFontMetrics& metrics) {
    return QRect(b.left + 1, b.top + 4, metrics.horizontalAdvance(QStringLiteral("Audio")) + 4, metrics.height() + 2);
}

QImage shot(CScopeView* view) { return view->viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32); }

// The band inside its frame.
QRect inside(const ScopeBand& b) { return QRect(b.left + 1, b.top + 1, b.width() - 2, b.height() - 2); }

// The share of the band's columns in which the trace spans more than 2
// pixels: a tone's oscillation fills most columns, a slow wave hardly any.
double tallColumnShare(const QImage& image, const ScopeBand& b) {
    int tall = 0;
    for (int x = b.left + 1; x < b.right - 1; ++x) {
        int top = b.bottom, bottom = b.top;
        for (int y = b.top + 1; y < b.bottom - 1; ++y)
            if (isInk(image.pixel(x, y))) {
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
        tall += bottom - top > 2 ? 1 : 0;
    }
    return static_cast<double>(tall) / (b.width() - 2);
}

}  // namespace

class ScopeViewTest : public UnitWindowTest {
    Q_OBJECT

    void select(std::initializer_list<int> rows) {
        for (auto& row : m_config->m_rows) row.word &= ~ChannelRow::kSelected;
        for (const int r : rows) m_config->m_rows[static_cast<std::size_t>(r)].word |= ChannelRow::kSelected;
    }
    CScopeView* openScope(QMdiArea* area) {
        CScopeChildFrame* frame = CScopeChildFrame::open(area);
        return frame ? frame->scopeView() : nullptr;
    }
    static bool snapshots(CScopeView* view, int n) {
        return waitFor([&] { return view->snapshotsTaken() >= n; });
    }
    // A unit that needs real time for its data, as a real one does.
    std::shared_ptr<usb::SimulatedUsbDriver> useRealTimeUnit(int channels) {
        usb::UsbUnitSettings settings;
        settings.simulatedChannels = channels;
        settings.simulatedRealTime = true;
        applyUsbUnitSettings(settings, true);
        return std::dynamic_pointer_cast<usb::SimulatedUsbDriver>(usb::usbDriver());
    }

private slots:
    void initTestCase() {
        registerRecordPlayCommands();
        registerScopeCommands();
    }

    void init() {
        startSession(QSize(1400, 900));
        m_config->m_multiplexType = 2;
    }

    void cleanup() {
        m_area.reset();  // takes the scope and the options with it
        QVERIFY(CScopeChildFrame::instance() == nullptr);
        endSession();
    }

    void aSixteenChannelUnitShowsItsBandsWithoutTraces() {
        m_unit = useSimulatedUnit(16);
        select({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
        CScopeView* view = openScope(m_area.get());
        QVERIFY(view != nullptr);
        QCOMPARE(view->unitChannels(), 16);
        view->parentWidget()->resize(1100, 700);
        QVERIFY(snapshots(view, 2));
        QVERIFY(view->refreshing());
        // The unit delivered, but nothing was split out of it.
        for (const auto& samples : view->channels()) QVERIFY(samples.empty());
        QVERIFY(waitFor([&] { return view->scrollHeight() == 100 + 105 * 16; }));

        const QImage image = shot(view);
        const int width = view->viewport()->width();
        const QFontMetrics metrics(view->font());
        // The header, its text starting at (5, 0).
        const QRect header = inkBox(image, QRect(0, 0, width, 20));
        QVERIFY(!header.isEmpty());
        QVERIFY2(header.left() >= 5 && header.left() <= 7, qPrintable(QString::number(header.left())));
        QVERIFY(header.bottom() < metrics.height());
        QVERIFY(std::abs(header.width() - metrics.tightBoundingRect(kScopeHeader).width()) <= 3);

        const std::vector<ScopeBand>& bands = view->bands();
        QCOMPARE(bands.size(), 16u);
        for (std::size_t k = 0; k < bands.size(); ++k) {
            const ScopeBand& b = bands[k];
            QCOMPARE(b.channel, static_cast<int>(k));
            QCOMPARE(b.left, 20);
            QCOMPARE(b.top, 20 + 105 * static_cast<int>(k));
            QCOMPARE(b.bottom, b.top + 100);
            QCOMPARE(b.right, width - 5);
            if (b.bottom > image.height()) continue;
            // Pure red just inside the band, nothing red just outside.
            for (int x = b.left; x < b.right; x += 7) {
                QVERIFY(isRed(image.pixel(x, b.top)));
                QVERIFY(isRed(image.pixel(x, b.bottom - 1)));
                QVERIFY(!isRed(image.pixel(x, b.top - 1)) && !isRed(image.pixel(x, b.bottom)));
            }
            for (int y = b.top; y < b.bottom; y += 5) {
                if (y == b.middle()) continue;
                QVERIFY(isRed(image.pixel(b.left, y)) && isRed(image.pixel(b.right - 1, y)));
                QVERIFY(!isRed(image.pixel(b.left - 1, y)) && !isRed(image.pixel(b.right, y)));
            }
            // The dashed centre line: light grey with gaps, from left to right, on its row only.
            int grey = 0, gaps = 0;
            for (int x = b.left + 1; x < b.right - 1; ++x) {
                (isGrey(image.pixel(x, b.middle())) ? grey : gaps) += 1;
                QVERIFY(!isGrey(image.pixel(x, b.middle() - 1)) && !isGrey(image.pixel(x, b.middle() + 1)));
            }
            QVERIFY(grey > (b.width() - 2) / 2 && gaps > 20);
            // The label at (left + 2, top + 5): "Audio" first, then the channel number.
            const QString label = k == 0 ? QStringLiteral("Audio") : QString::number(k);
            const QRect ink = inkBox(image, QRect(b.left + 1, b.top + 1, 200, 40));
            QVERIFY(ink.left() >= b.left + 2 && ink.left() <= b.left + 4);
            QVERIFY(ink.top() >= b.top + 5 && ink.bottom() < b.top + 5 + metrics.height());
            QVERIFY(std::abs(ink.width() - metrics.tightBoundingRect(label).width()) <= 2);
            // No trace anywhere in the band.
            QVERIFY(inkBox(image, inside(b), labelBox(b, metrics)).isEmpty());
        }

        // The bands do not fit: scrolling shows the later ones, the picture moving with it.
        QScrollBar* bar = view->verticalScrollBar();
        QCOMPARE(bar->maximum(), 100 + 105 * 16 - view->viewport()->height());
        bar->setValue(1000);
        const QImage scrolled = shot(view);
        const ScopeBand& twelfth = bands[11];
        QVERIFY(isRed(scrolled.pixel(twelfth.left + 30, twelfth.top - 1000)));
        QVERIFY(isRed(scrolled.pixel(twelfth.left + 30, twelfth.bottom - 1 - 1000)));
        // What the window shows is a stretch of its whole picture, the one bitmaps are made of.
        const QImage whole = view->picture().convertToFormat(QImage::Format_RGB32);
        QCOMPARE(whole.size(), QSize(width, 100 + 105 * 16));
        QCOMPARE(scrolled, whole.copy(0, 1000, width, scrolled.height()));
        QVERIFY(m_messages->texts().empty());
    }

    void theTracesAreEachChannelsOwnWaveformInItsBand() {
        select({1, 2, 3, 4, 5, 6, 7, 8});
        CScopeView* view = openScope(m_area.get());
        QVERIFY(view != nullptr);
        view->parentWidget()->resize(900, 1200);
        QVERIFY(snapshots(view, 2));
        QVERIFY(view->dataReady());
        view->stopRefresh();  // one snapshot to look at
        view->viewport()->repaint();
        const QImage image = shot(view);
        const QFontMetrics metrics(view->font());
        usb::UnitFirmware& unit = m_unit->firmware();
        QCOMPARE(view->bands().size(), 9u);
        for (const ScopeBand& b : view->bands()) {
            const auto& samples = view->channels()[static_cast<std::size_t>(b.channel)];
            // The multiplex row 0 1 2 3 4 5 6 7 0 1 2 3 4 5 6 8: channels 7 and 8 once a row, the others twice.
            const std::size_t perRow = b.channel >= 7 ? 1 : 2;
            QCOMPARE(samples.size(), 2752 * perRow);
            int wrong = 0;
            for (std::size_t k = 0; k < samples.size(); ++k)
                wrong += samples[k] != usb::UnitFirmware::InputSample(b.channel, k, unit.inputRateHz(b.channel));
            QCOMPARE(wrong, 0);
            // The trace reaches exactly the rows of the channel's extremes, scaled to the band.
            const auto [low, high] = std::minmax_element(samples.begin(), samples.end());
            const int topRow = b.middle() - *high * b.height() / 65536;
            const int bottomRow = b.middle() - *low * b.height() / 65536;
            // The frame's columns included: the first samples lie on the left one.
            const QRect ink = inkBox(image, QRect(b.left, b.top + 1, b.width(), b.height() - 2), labelBox(b, metrics));
            QCOMPARE(ink.top(), topRow);
            QCOMPARE(ink.bottom(), bottomRow);
            // From the band's left edge to its right one (a line leaves out its last point).
            QVERIFY(ink.left() == b.left && ink.right() >= b.right - 2);
        }
        // The audio band is a fast tone; channel 4's a slow square wave.
        QVERIFY(tallColumnShare(image, view->bands()[0]) > 0.5);
        QVERIFY(tallColumnShare(image, view->bands()[4]) < 0.05);

        // Nine channels of type 1: channel 4 shows what the audio slots 4 and 12 carry.
        m_config->m_multiplexType = 1;
        const int taken = view->snapshotsTaken();
        CScopeChildFrame::open(m_area.get());
        QVERIFY(snapshots(view, taken + 1));
        view->stopRefresh();
        view->viewport()->repaint();
        const QImage typeOne = shot(view);
        const auto& audio = view->channels()[0];
        const auto& four = view->channels()[4];
        QCOMPARE(four.size(), 2752u * 2);
        int wrong = 0;
        for (std::size_t j = 0; j < four.size(); ++j) wrong += four[j] != audio[j / 2 * 4 + (j % 2 == 0 ? 1 : 3)];
        QCOMPARE(wrong, 0);
        QVERIFY(tallColumnShare(typeOne, view->bands()[4]) > 0.5);
        // The others take their own slots: channel 5 its one sample a row, its own waveform.
        const auto& five = view->channels()[5];
        QCOMPARE(five.size(), 2752u);
        for (std::size_t k = 0; k < five.size(); ++k)
            wrong += five[k] != usb::UnitFirmware::InputSample(5, k, unit.inputRateHz(5));
        QCOMPARE(wrong, 0);
        QVERIFY(m_messages->texts().empty());
    }

    void withoutAUnitOnlyTheHeaderIsDrawn() {
        m_unit->setPlugged(false);
        CScopeView* view = openScope(m_area.get());
        QVERIFY(view != nullptr);
        QCOMPARE(view->unitChannels(), -1);
        QCOMPARE(view->parentWidget()->windowTitle(), QString("Scope: Simulated unit (9 channels)"));
        QVERIFY(waitFor([&] { return !view->refreshing(); }));
        QCOMPARE(m_messages->texts(), std::vector<std::string>{kOpenError});
        QCOMPARE(m_messages->beeps(), 1);
        QVERIFY(waitFor([&] { return view->scrollHeight() == 100; }));
        const QImage image = shot(view);
        QVERIFY(!inkBox(image, QRect(0, 0, image.width(), 19)).isEmpty());
        QVERIFY(inkBox(image, QRect(0, 19, image.width(), image.height())).isEmpty());
        for (int y = 0; y < image.height(); y += 3)
            for (int x = 0; x < image.width(); x += 3) QVERIFY(!isRed(image.pixel(x, y)));
    }

    void failuresStopTheRefreshAndKeepThePicture() {
        select({2, 5});
        CScopeView* view = openScope(m_area.get());
        QVERIFY(snapshots(view, 1));
        struct Failure {
            const char* what;
            std::function<void()> cause;
            std::function<void()> cure;
            std::string message;
        };
        const std::vector<Failure> failures = {
            {"device", [&] { m_unit->setPlugged(false); }, [&] { m_unit->setPlugged(true); }, kOpenError},
            {"read", [&] { m_unit->firmware().endStreamAfter(500, usb::BulkEnd::ShortPacket); },
             [&] { m_unit->firmware().clearFaults(); }, "Error in reading the incoming data."},
            {"multiplex type", [&] { m_config->m_multiplexType = 3; }, [&] { m_config->m_multiplexType = 2; },
             "Unknown multiplex type."},
            {"input source", [&] { m_config->m_inputLine = "Aux"; }, [&] { m_config->m_inputLine = "Mic"; },
             kWrongSource},
        };
        for (const Failure& f : failures) {
            QVERIFY(waitFor([&] { return view->dataReady() && !view->snapshotUnderWay(); }));
            m_messages->clear();
            f.cause();
            const QImage before = shot(view);
            const ScopeBand& band = view->bands()[1];
            QVERIFY2(!inkBox(before, inside(band), labelBox(band, QFontMetrics(view->font()))).isEmpty(), f.what);
            const int taken = view->snapshotsTaken();
            QVERIFY2(waitFor([&] { return !view->refreshing(); }), f.what);
            QCOMPARE(m_messages->texts(), std::vector<std::string>{f.message});
            // Standing still: no further snapshot, and a repaint shows the same traces.
            QTest::qWait(60);
            QCOMPARE(view->snapshotsTaken(), taken);
            QVERIFY(!view->refreshing());
            view->viewport()->repaint();
            QVERIFY2(shot(view) == before, f.what);
            // Opening it again starts it again.
            f.cure();
            CScopeChildFrame::open(m_area.get());
            QVERIFY(view->refreshing());
            QVERIFY2(snapshots(view, taken + 1), f.what);
        }

        // A value the open options form refuses stops it as well, before any snapshot.
        toggleRecordPlayBesideScope(m_area.get());
        CFormRecordPlay* form = CFormRecordPlay::openForm();
        QVERIFY(form != nullptr);
        QVERIFY(snapshots(view, view->snapshotsTaken() + 1));
        m_messages->clear();
        form->channelTable()->setWholeNumber(5, CFormRecordPlay::kGain, 351);
        QVERIFY(waitFor([&] { return !view->refreshing(); }));
        QCOMPARE(m_messages->lastText(), std::string("The gain of ch5 must be a whole number from 0 to 350."));
    }

    void changesInTheOptionsShowOnTheNextRefresh() {
        select({});
        m_config->m_externalRateHz = 11000;
        CScopeView* view = openScope(m_area.get());
        QVERIFY(snapshots(view, 1));
        QCOMPARE(view->bands().size(), 1u);
        toggleRecordPlayBesideScope(m_area.get());
        CFormRecordPlay* form = CFormRecordPlay::openForm();
        QVERIFY(form != nullptr);
        form->sourceBox()->setCurrentText("External Hardware");
        form->channelTable()->setCheck(2, CFormRecordPlay::kSelected, true);
        form->channelTable()->setCheck(7, CFormRecordPlay::kSelected, true);
        form->multiplexBox()->setCurrentText("1");
        form->inputLineBox()->setCurrentText("Line");
        int taken = view->snapshotsTaken();
        QVERIFY(snapshots(view, taken + 2));
        view->viewport()->repaint();
        QCOMPARE(view->bands().size(), 3u);
        QCOMPARE(view->bands()[2].channel, 7);
        // The unit was sent the row of type 1 and the input line.
        const auto block = m_unit->firmware().parameterBlock();
        QVERIFY(block.has_value());
        QCOMPARE((*block)[5], std::uint8_t{4});
        QCOMPARE((*block)[usb::kBlockInputSelector + 1], std::uint8_t{1});

        // A cell being typed in stays open while the scope runs; its value counts once the edit ends.
        CDatatbl5* table = form->channelTable();
        table->setCurrentCell(3, CFormRecordPlay::kGain);
        table->editItem(table->item(3, CFormRecordPlay::kGain));
        QVERIFY(table->editingInProgress());
        taken = view->snapshotsTaken();
        QVERIFY(snapshots(view, taken + 2));
        QVERIFY(table->editingInProgress());
        QWidget* editor = QApplication::focusWidget();
        if (auto* spin = qobject_cast<QAbstractSpinBox*>(editor)) {
            spin->selectAll();
            QTest::keyClicks(spin, "20");
        } else {
            QVERIFY(qobject_cast<QLineEdit*>(editor) != nullptr);
            qobject_cast<QLineEdit*>(editor)->setText("20");
        }
        table->commitEditing();
        taken = view->snapshotsTaken();
        QVERIFY(snapshots(view, taken + 1));
        QCOMPARE(m_config->m_rows[3].gain, 20);

        // Another unit chosen in the options: asked for its size on the next refresh.
        form->unitBox()->setCurrentIndex(form->unitBox()->findData(5));
        taken = view->snapshotsTaken();
        QVERIFY(snapshots(view, taken + 1));
        QCOMPARE(view->unitChannels(), 5);
        QCOMPARE(view->parentWidget()->windowTitle(), QString("Scope: Simulated unit (5 channels)"));
        QCOMPARE(view->channels()[0].size(), 2752u * 8);  // type 1 on 5 channels: audio every other slot
        QVERIFY(view->channels()[7].empty());
        QVERIFY(m_messages->texts().empty());
    }

    void theMainFrameOpensTheScopeWithTheOptionsBesideIt() {
        m_area.reset();
        CMainFrame frame;
        frame.resize(1500, 900);
        frame.show();
        QVERIFY(QTest::qWaitForWindowExposed(&frame));
        QAction* scope = recordPlayAreaCommand(&frame, "Scope");
        QAction* options = recordPlayAreaCommand(&frame, "Record/Play");
        QVERIFY(scope != nullptr && options != nullptr);
        QVERIFY(scope->isEnabled());
        // "Scope" ends the Record/Play menu, "Record/Play" heads Options, and
        // both are on the toolbar whichever window is in front.
        QVERIFY(shownMenu(frame.menuBar(), "&Record/Play") != nullptr &&
                shownMenu(frame.menuBar(), "&Options") != nullptr);
        QCOMPARE(shownMenu(frame.menuBar(), "&Record/Play")->actions().last(), scope);
        QCOMPARE(shownMenu(frame.menuBar(), "&Options")->actions().first(), options);
        const auto* tools = frame.findChild<QToolBar*>("recordPlayToolBar");
        QVERIFY(tools != nullptr && tools->isVisible());
        QCOMPARE(tools->actions(), (QList<QAction*>{options, scope}));

        scope->trigger();
        CScopeChildFrame* window = CScopeChildFrame::instance();
        QVERIFY(window != nullptr);
        QCOMPARE(frame.mdiArea()->activeSubWindow(), window);
        QCOMPARE(window->scopeView()->unitChannels(), 9);
        // The scope's own menus are the ones shown now.
        QCOMPARE(frame.commandMenus()->activeContext(), QString("scope"));
        QVERIFY(frame.commandMenus()->action("scope", "Save As bmp...") != nullptr);
        QVERIFY(snapshots(window->scopeView(), 1));

        // "Record/Play" shows the options beside the scope, then hides them; the scope runs on.
        options->trigger();
        CFrameRecordPlay* recordPlay = CFrameRecordPlay::instance();
        QVERIFY(recordPlay != nullptr && recordPlay->isVisible());
        QVERIFY(!recordPlay->geometry().intersects(window->geometry()));
        const QRect placed = recordPlay->geometry();
        options->trigger();
        QVERIFY(recordPlay->isHidden());
        QVERIFY(window->scopeView()->refreshing());
        // From the scope's own Options menu as well, back where they were.
        frame.mdiArea()->setActiveSubWindow(window);
        QAction* fromScope = frame.commandMenus()->action("scope", "Record/Play");
        QVERIFY(fromScope != nullptr);
        fromScope->trigger();
        QVERIFY(recordPlay->isVisible());
        QCOMPARE(recordPlay->geometry(), placed);
        QCOMPARE(frame.mdiArea()->activeSubWindow(), recordPlay);

        // "Scope" again brings the one scope to the front.
        scope->trigger();
        QCOMPARE(CScopeChildFrame::instance(), window);
        QCOMPARE(frame.mdiArea()->activeSubWindow(), window);
        QVERIFY(snapshots(window->scopeView(), window->scopeView()->snapshotsTaken() + 1));
        // With the scope in front its own Record/Play menu has "Scope", which starts a stopped scope again.
        QAction* again = frame.commandMenus()->action("scope", "Scope");
        QVERIFY(again != nullptr && shownMenu(frame.menuBar(), "&Record/Play")->actions().contains(again));
        window->scopeView()->stopRefresh();
        QVERIFY(!window->scopeView()->refreshing());
        again->trigger();
        QVERIFY(window->scopeView()->refreshing());
        QVERIFY(snapshots(window->scopeView(), window->scopeView()->snapshotsTaken() + 1));
        shoot(&frame, "scope");
        QVERIFY(m_messages->texts().empty());
    }

    void recordClosesTheScopeFirst() {
        m_unit = useRealTimeUnit(9);
        select({1, 2, 3, 4, 5, 6, 7, 8});
        m_config->m_source = "External Hardware";
        m_config->m_recordTimeMs = 200;
        m_area.reset();
        CMainFrame frame;
        frame.resize(1400, 900);
        frame.show();
        CChildFrame* child = frame.newDocument();
        recordPlayAreaCommand(&frame, "Scope")->trigger();
        CScopeView* view = CScopeChildFrame::instance()->scopeView();
        QVERIFY(waitFor([&] { return view->snapshotUnderWay(); }));

        // Record in the document while the scope is reading from the unit.
        frame.mdiArea()->setActiveSubWindow(child);
        viewCommand("Record\tCtrl+R").run(*child->kestruneView());
        QVERIFY(CScopeChildFrame::instance() == nullptr);
        QVERIFY(waitFor([&] { return child->document()->holdsData(); }, 20000));
        QCOMPARE(child->document()->channelCount(), 9);
        QVERIFY2(m_messages->texts().empty(), m_messages->lastText().c_str());
        // The unit saw the scope's snapshot end before the recording began.
        const std::vector<std::uint8_t> requests = m_unit->firmware().requestLog();
        const auto stop = std::find(requests.begin(), requests.end(), usb::kRequestStop);
        QVERIFY(stop != requests.end());
        QCOMPARE(std::count(stop, requests.end(), usb::kRequestStart), 1);
    }

    void theWorkstationGoesOnWhileASnapshotIsUnderWay() {
        m_unit = useRealTimeUnit(5);  // two seconds of the unit's time per snapshot
        m_config->m_multiplexType = 1;
        select({3});
        CScopeView* view = openScope(m_area.get());
        QVERIFY(snapshots(view, 1));
        QVERIFY(waitFor([&] { return view->snapshotUnderWay(); }));
        const QImage before = shot(view);

        // Timers fire, other windows paint and the scope itself repaints, all
        // while the unit is still delivering.
        QWidget other;
        other.resize(200, 100);
        other.show();
        bool fired = false;
        QTimer::singleShot(0, [&] { fired = true; });
        QVERIFY(waitFor([&] { return fired; }));
        other.repaint();
        view->viewport()->repaint();
        QVERIFY(view->snapshotUnderWay());
        // Until the snapshot arrives the picture is the last one, whole.
        QVERIFY(view->dataReady());
        QCOMPARE(shot(view), before);
        const int taken = view->snapshotsTaken();
        QVERIFY(snapshots(view, taken + 1));
        QVERIFY(m_messages->texts().empty());
    }

    void saveAsBmpWritesThePicture() {
        select({1, 4});
        CScopeView* view = openScope(m_area.get());
        QVERIFY(snapshots(view, 1));
        view->stopRefresh();
        AnsweringFileDialogs dialogs;
        dialogs.path = m_dir.filePath("picture");
        IFileDialogs* previous = setFileDialogs(&dialogs);
        windowCommandOf("scope", "Save As bmp...").run(*view);
        setFileDialogs(previous);
        QCOMPARE(dialogs.asked().defaultName, QString("Scope.bmp"));
        QImage written(m_dir.filePath("picture.bmp"));
        QVERIFY(!written.isNull());
        QCOMPARE(written.convertToFormat(QImage::Format_RGB32), view->picture().convertToFormat(QImage::Format_RGB32));
        QVERIFY(m_messages->texts().empty());
    }
};

int main(int argc, char** argv) { return rptest::runWithOwnSettings<ScopeViewTest>(argc, argv); }

#include "ScopeViewTest.moc"
