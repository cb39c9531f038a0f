// The Edit menu and the measurement entries on a real view: enabling
// rules, Cut/Undo with labels and the label list, Paste at the cursor and
// into an empty document, and rows sent to the log.
#include <QTemporaryDir>
#include <QtTest>

#include "GuiEditFixture.h"
#include "document/EditClipboard.h"
#include "document/MessageService.h"
#include "log/CDatatbl5.h"
#include "log/CFormLog.h"
#include "log/CFrameLog.h"
#include "view/AppServices.h"
#include "view/CFormLabelView.h"
#include "view/CFrameLabelView.h"
#include "view/DocumentWindows.h"

using namespace guitest;

namespace {
const QString kUndo = "&Undo\tCtrl+Z";
const QString kCut = "Cu&t\tCtrl+X";
const QString kCopy = "&Copy\tCtrl+C";
const QString kPaste = "&Paste\tCtrl+V";
const QString kClear = "Clear to Reference";
}  // namespace

class EditCommandsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        registerFeatures();
        AppServices::instance().tempFolder = m_dir.path().toStdString() + "/";
    }

    void init() {
        m_doc = makeDocument(3);
        m_doc->channel(0).m_labels.push_back({});
        m_doc->channel(0).m_labels.back().timeMs = 800.0;
        m_doc->channel(0).m_labels.back().text = "late";
        m_view = showView(m_doc.get());
        m_messages.clear();
    }
    void cleanup() {
        m_view.reset();
        m_doc.reset();
    }

    void cutAndUndoThroughTheMenuCommands() {
        QVERIFY(!enabled(kCut, *m_view));
        QVERIFY(!enabled(kCopy, *m_view));
        QVERIFY(!enabled(kClear, *m_view));
        QVERIFY(!enabled(kUndo, *m_view));

        run("View Labels", *m_view);
        CFrameLabelView* list = qobject_cast<CFrameLabelView*>(attachedWindow(m_doc.get(), windowrole::kLabelList));
        QVERIFY(list);

        drag(200.0, 400.0);
        QVERIFY(m_view->selectionPresent());
        QVERIFY(enabled(kCut, *m_view) && enabled(kCopy, *m_view) && enabled(kClear, *m_view));
        const double selectedMs = m_doc->channel(0).m_selEndMs - m_doc->channel(0).m_selStartMs;

        run(kCut, *m_view);
        // The cut takes whole samples: the selection's length to within one.
        const double cutMs = AppServices::instance().clipboard->channel(0).lengthMs;
        QVERIFY(std::abs(cutMs - selectedMs) <= 1.0);
        QCOMPARE(m_doc->channel(2).m_durationMs, 1000.0 - cutMs);
        QCOMPARE(m_doc->channel(0).m_labels[0].timeMs, 800.0 - cutMs);
        QVERIFY(!m_view->selectionPresent());
        QVERIFY(m_doc->isModified());
        QVERIFY(QFileInfo::exists(m_dir.filePath("speech.kvd@@tmp")));
        QCOMPARE(list->form()->grid()->number(0, 1), true);
        double shown = 0;
        list->form()->grid()->number(0, 1, &shown);
        QCOMPARE(shown, 800.0 - cutMs);
        QVERIFY(enabled(kUndo, *m_view));
        QVERIFY(enabled(kPaste, *m_view));
        shoot(m_view.get(), "after_cut");

        run(kUndo, *m_view);
        QCOMPARE(m_doc->channel(2).m_durationMs, 1000.0);
        QCOMPARE(m_doc->channel(0).m_labels[0].timeMs, 800.0);
        list->form()->grid()->number(0, 1, &shown);
        QCOMPARE(shown, 800.0);
        QVERIFY(!enabled(kUndo, *m_view));  // one step only
        QVERIFY(m_messages.texts().empty());
        list->close();
    }

    void pasteAtCursorAndIntoAnEmptyDocument() {
        drag(100.0, 200.0);
        run(kCopy, *m_view);
        const double copiedMs = AppServices::instance().clipboard->channel(0).lengthMs;
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, QPoint(m_view->msToX(0.0), stripY(*m_view, 0) + 20));
        QVERIFY(!m_view->selectionPresent());
        run(kPaste, *m_view);
        QCOMPARE(m_doc->channel(1).m_durationMs, 1000.0 + copiedMs);
        QCOMPARE(m_doc->channel(0).m_labels[0].timeMs, 800.0 + copiedMs);
        QVERIFY(enabled(kUndo, *m_view));

        auto empty = std::make_shared<sonmetra::CKestruneDoc>();
        auto other = showView(empty.get());
        QVERIFY(enabled(kPaste, *other));  // the clipboard is the program's
        run(kPaste, *other);
        QCOMPARE(empty->channelCount(), 3);
        QVERIFY(empty->holdsData());
        QCOMPARE(empty->channel(2).m_name, std::string("ch3"));
        QCOMPARE(empty->channel(2).m_durationMs, copiedMs);
        QVERIFY(!enabled(kUndo, *other));
        other->renderNow();
        shoot(other.get(), "pasted_into_empty");
    }

    void measurementEntriesNeedAnOpenLog() {
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, QPoint(m_view->msToX(250.0), stripY(*m_view, 0) + 20));
        QVERIFY(m_view->cursorPlaced());
        QVERIFY(!enabled("Enter at Marker\tCtrl+T", *m_view));
        CFormLog* log = newLog(nullptr);
        QVERIFY(enabled("Enter at Marker\tCtrl+T", *m_view));
        QVERIFY(!enabled("Enter Duration\tCtrl+D", *m_view));
        run("Enter at Marker\tCtrl+T", *m_view);
        QCOMPARE(log->grid()->rowCount(), 1);
        QCOMPARE(log->grid()->text(0, 0), QString("Marker Entry: time"));
        double v = 0;
        QVERIFY(log->grid()->number(0, 5, &v));  // a time and a value per present channel
        QCOMPARE(v, m_doc->channel(2).m_cursorMs);
        QVERIFY(log->grid()->number(0, 6));
        QVERIFY(!log->grid()->number(0, 7));

        drag(100.0, 300.0);
        QVERIFY(enabled("Enter Duration\tCtrl+D", *m_view));
        QVERIFY(enabled("Enter Data Selection", *m_view));
        run("Enter Duration\tCtrl+D", *m_view);
        run("Enter Data Selection", *m_view);
        // Each kind of entry stands under a heading row of its own values.
        QCOMPARE(log->grid()->rowTitle(1), QString("Columns"));
        QCOMPARE(log->grid()->text(2, 0), QString("Duration Entry: start, end, duration"));
        QVERIFY(log->grid()->number(2, 3, &v));
        QCOMPARE(v, m_doc->channel(0).m_selEndMs - m_doc->channel(0).m_selStartMs);
        QVERIFY(log->grid()->number(2, 9));
        QCOMPARE(log->grid()->rowTitle(3), QString("Columns"));
        QCOMPARE(log->grid()->rowTitle(4), QString("Entry 3"));
        log->parentWidget()->show();
        shoot(log->parentWidget(), "log_window");

        m_messages.queueAnswer(sonmetra::MsgAnswer::No);
        QVERIFY(log->parentWidget()->close());
        QVERIFY(!enabled("Enter at Marker\tCtrl+T", *m_view));
    }

private:
    std::unique_ptr<CKestruneView> showView(sonmetra::CKestruneDoc* doc) {
        auto view = shownView(doc, QSize(900, 520));
        if (!QTest::qWaitForWindowExposed(view.get())) qWarning("view not exposed");
        return view;
    }
    void drag(double fromMs, double toMs) {
        const int y = stripY(*m_view, 0) + 20;
        QTest::mousePress(m_view.get(), Qt::LeftButton, {}, QPoint(m_view->msToX(fromMs), y));
        QMouseEvent move(QEvent::MouseMove, QPointF(m_view->msToX(toMs), y),
                         m_view->mapToGlobal(QPointF(m_view->msToX(toMs), y)), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(m_view.get(), &move);
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, QPoint(m_view->msToX(toMs), y));
    }

    QTemporaryDir m_dir;
    sonmetra::RecordingMessageService m_messages;
    sonmetra::ScopedMessageService m_scope{&m_messages};
    std::shared_ptr<sonmetra::CKestruneDoc> m_doc;
    std::unique_ptr<CKestruneView> m_view;
};

QTEST_MAIN(EditCommandsTest)
#include "EditCommandsTest.moc"
