// The log window driven through its widgets: entries, Save through the
// button, reopening, editing a cell, the close question, the open log that
// entries go to, and a refused file.
#include <QDoubleSpinBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include "document/MessageService.h"
#include "log/CDatatbl5.h"
#include "log/CFormLog.h"
#include "log/CFrameLog.h"
#include "res/StringTable.h"

using namespace sonmetra;

class LogWindowTest : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_messages.clear();
        m_area = new QMdiArea;
        m_area->resize(900, 600);
        m_area->show();
        m_answerPath.clear();
        m_dialogTitles.clear();
        CFormLog::setFileDialogHook([this](QWidget*, const QString& title, const QString&, bool) {
            m_dialogTitles << title;
            return m_answerPath;
        });
    }
    void cleanup() {
        for (auto* w : m_area->subWindowList()) {
            if (auto* f = qobject_cast<CFrameLog*>(w)) f->form()->markClosed();
        }
        delete m_area;
        CFormLog::setFileDialogHook({});
    }

    void entriesSaveThroughButtonAndReadBack() {
        CFormLog* log = newLog(m_area);
        QCOMPARE(CFormLog::activeLog(), log);
        log->addEntry("Marker Entry: time", {1234.5678, 17.0});
        log->addEntry("Duration Entry: start, end, duration", {10.0, 30.004, 20.004, 5, 6, 7});
        QVERIFY(log->isModified());
        QCOMPARE(log->grid()->rowTitle(1), QString("Entry 2"));
        QCOMPARE(log->grid()->displayText(0, 1), QString("1234.57"));

        m_answerPath = m_dir.filePath("run.log");
        auto* save = log->findChild<QPushButton*>(QString(), Qt::FindChildrenRecursively);
        QList<QPushButton*> buttons = log->findChildren<QPushButton*>();
        QPushButton* saveButton = nullptr;
        for (auto* b : buttons)
            if (b->text() == "Save") saveButton = b;
        QVERIFY(save && saveButton);
        QTest::mouseClick(saveButton, Qt::LeftButton);
        QCOMPARE(m_dialogTitles, QStringList{"Save Log As"});  // no file yet: Save goes to Save As
        QVERIFY(!log->isModified());
        QCOMPARE(log->title(), QString("run.log"));
        QCOMPARE(log->parentWidget()->windowTitle(), QString("run.log[*]"));

        CFormLog* back = openLogFile(m_area, m_answerPath);
        QVERIFY(back);
        QCOMPARE(back->title(), QString("run.log"));
        QCOMPARE(back->grid()->rowCount(), 2);
        QCOMPARE(back->grid()->columnCount(), 7);
        QCOMPARE(back->grid()->rowTitle(0), QString("Entry 1"));
        QCOMPARE(back->grid()->text(1, 0), QString("Duration Entry: start, end, duration"));
        double v = 0;
        QVERIFY(back->grid()->number(0, 1, &v));
        QCOMPARE(v, 1234.57);
        QVERIFY(back->grid()->number(1, 2, &v));
        QCOMPARE(v, 30.0);
        QVERIFY(back->grid()->isEmptyCell(0, 3));
        QVERIFY(!back->isModified());
        back->addEntry("Marker Entry: time", {1.0});
        QCOMPARE(back->grid()->rowTitle(2), QString("Entry 3"));
        QVERIFY(m_messages.texts().empty());
    }

    void editingACellMarksTheLogModified() {
        CFormLog* log = newLog(m_area);
        log->addEntry("Marker Entry: time", {2.5});
        m_answerPath = m_dir.filePath("edit.log");
        QVERIFY(log->save());
        CDatatbl5* grid = log->grid();
        grid->setFocus();
        grid->setCurrentCell(0, 0);
        QTest::keyClick(grid, Qt::Key_F2);
        auto* line = grid->viewport()->findChild<QLineEdit*>();
        QVERIFY(line);
        line->selectAll();
        QTest::keyClicks(line, "Vowel onset");
        QTest::keyClick(line, Qt::Key_Return);
        QTRY_COMPARE(grid->text(0, 0), QString("Vowel onset"));  // the delegate commits on a queued call
        QVERIFY(log->isModified());

        grid->setCurrentCell(0, 1);
        QTest::keyClick(grid, Qt::Key_F2);
        QVERIFY(grid->editingInProgress());
        auto* box = grid->viewport()->findChild<QDoubleSpinBox*>();
        QVERIFY(box);
        box->selectAll();
        QTest::keyClicks(box, "8.25");
        // Saving while the editor is open keeps what was typed.
        QVERIFY(log->save());
        QVERIFY(!grid->editingInProgress());
        double v = 0;
        QVERIFY(grid->number(0, 1, &v));
        QCOMPARE(v, 8.25);
        QFile f(m_answerPath);
        QVERIFY(f.open(QIODevice::ReadOnly));
        QVERIFY(f.readAll().contains("8.25\t\r\n"));
    }

    void closingAModifiedLogAsksYesOrNo() {
        CFormLog* log = newLog(m_area);
        const QString title = log->title();
        log->addEntry("Marker Entry: time", {1.0});
        auto* frame = qobject_cast<CFrameLog*>(log->parentWidget());
        QVERIFY(frame);

        // Yes, then Cancel in the save dialog: the window stays.
        m_messages.queueAnswer(MsgAnswer::Yes);
        m_answerPath.clear();
        QVERIFY(!frame->close());
        QCOMPARE(QString::fromStdString(m_messages.lastText()), "Save log file--" + title + "--, before closing.");
        QCOMPARE(CFormLog::activeLog(), log);

        // No: closes without saving, and entries no longer go to it.
        m_messages.queueAnswer(MsgAnswer::No);
        QVERIFY(frame->close());
        QCOMPARE(m_messages.texts().size(), std::size_t(2));
        QCOMPARE(CFormLog::activeLog(), nullptr);
    }

    void entriesGoToTheLogActivatedLast() {
        CFormLog* first = newLog(m_area);
        CFormLog* second = newLog(m_area);
        QCOMPARE(CFormLog::activeLog(), second);
        m_area->setActiveSubWindow(qobject_cast<QMdiSubWindow*>(first->parentWidget()));
        QCOMPARE(CFormLog::activeLog(), first);
        QVERIFY(second->parentWidget()->close());  // unmodified: no question
        QVERIFY(m_messages.texts().empty());
        QCOMPARE(CFormLog::activeLog(), first);
    }

    // Named values head their columns; an entry of another layout gets a
    // heading row, and the file read back keeps both.
    void namedValuesHeadTheirColumns() {
        CFormLog* log = newLog(m_area);
        const QStringList marker = {"Audio time (ms)", "Audio (Pa)", "Airflow time (ms)", "Airflow (ml/s)"};
        log->addEntry("Marker Entry: time", {100.0, 0.5, 99.5, 120.25}, marker);
        log->addEntry("Marker Entry: time", {200.0, -0.25, 199.5, 80.0}, marker);
        CDatatbl5* grid = log->grid();
        QCOMPARE(grid->rowCount(), 2);
        for (int i = 0; i < marker.size(); ++i) {
            QCOMPARE(grid->columnTitle(1 + i), marker[i]);
            // Wide enough to read the whole name.
            QVERIFY(grid->columnWidth(1 + i) >= grid->horizontalHeader()->sectionSizeHint(1 + i));
        }

        const QStringList selection = {"Audio start (ms)", "Audio mean (Pa)"};
        log->addEntry("Data Selection Entry: time", {50.0, 0.126}, selection);
        log->addEntry("Data Selection Entry: time", {60.0, 0.25}, selection);
        log->addEntry("Marker Entry: time", {300.0, 1.0, 299.5, 90.0}, marker);
        log->addEntry("Legacy", {7.0});  // unnamed: "Value 1"
        QCOMPARE(grid->rowCount(), 9);
        const QStringList titles = {"Entry 1", "Entry 2", "Columns", "Entry 3", "Entry 4",
                                    "Columns", "Entry 5", "Columns", "Entry 6"};
        for (int r = 0; r < titles.size(); ++r) QCOMPARE(grid->rowTitle(r), titles[r]);
        QCOMPARE(grid->text(2, 1), QString("Audio start (ms)"));
        QCOMPARE(grid->text(2, 2), QString("Audio mean (Pa)"));
        QCOMPARE(grid->text(5, 4), QString("Airflow (ml/s)"));
        QCOMPARE(grid->text(7, 1), QString("Value 1"));
        QCOMPARE(log->entryCount(), 6);

        m_answerPath = m_dir.filePath("named.log");
        QVERIFY(log->saveAs());
        QFile file(m_answerPath);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = file.readAll().split('\n');
        QVERIFY(lines[0].startsWith("Entry\tMeasurement\tAudio time (ms)\tAudio (Pa)\tAirflow time (ms)"));
        QVERIFY(lines[3].startsWith("Columns\tMeasurement\tAudio start (ms)\tAudio mean (Pa)"));

        CFormLog* back = openLogFile(m_area, m_answerPath);
        QVERIFY(back);
        QCOMPARE(back->grid()->rowCount(), 9);
        QCOMPARE(back->entryCount(), 6);
        double v = 0;
        QVERIFY(back->grid()->number(3, 2, &v));
        QCOMPARE(v, 0.13);
        // Entries after reading go on under the names in force.
        back->addEntry("Legacy", {8.0});
        QCOMPARE(back->grid()->rowCount(), 10);
        QCOMPARE(back->grid()->rowTitle(9), QString("Entry 7"));
        back->addEntry("Data Selection Entry: time", {70.0, 0.5}, selection);
        QCOMPARE(back->grid()->rowTitle(10), QString("Columns"));
    }

    void refusedFileOpensNoWindow() {
        QFile f(m_dir.filePath("short.txt"));
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("a\tb\tc\n1\t2\t3\n");
        f.close();
        const int before = m_area->subWindowList().size();
        QCOMPARE(openLogFile(m_area, f.fileName()), nullptr);
        QCOMPARE(QString::fromStdString(m_messages.lastText()), QString(loadString(IDS_INVALID_LOG_FILE)));
        QCOMPARE(m_area->subWindowList().size(), before);

        m_answerPath = m_dir.filePath("nothing-here.log");
        QCOMPARE(openLog(m_area, nullptr), nullptr);
        QCOMPARE(QString::fromStdString(m_messages.lastText()), QString(loadString(IDS_FILE_OPEN_ERROR)));
    }

private:
    QTemporaryDir m_dir;
    RecordingMessageService m_messages;
    ScopedMessageService m_scope{&m_messages};
    QMdiArea* m_area = nullptr;
    QString m_answerPath;
    QStringList m_dialogTitles;
};

QTEST_MAIN(LogWindowTest)
#include "LogWindowTest.moc"
