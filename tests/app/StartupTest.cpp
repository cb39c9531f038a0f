// Start-up's settings and folders, and the main frame's File and Help
// commands driven through their real actions with scripted answers.
#include <QAction>
#include <QApplication>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QMdiArea>
#include <QMenuBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include "app/Startup.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "frame/AboutDialog.h"
#include "frame/CChildFrame.h"
#include "frame/CMainFrame.h"
#include "tests/support/GuiTestSupport.h"
#include "view/AppServices.h"
#include "view/FileDialogs.h"

using namespace sonmetra;
using namespace sonmetra::test;

class StartupTest : public AnsweringTest<ScriptedFileDialogs> {
    Q_OBJECT

private slots:
    void initTestCase() {
        keepSettingsIn(m_settingsDir.path());
        QCoreApplication::setOrganizationName("Melvarco");
        QCoreApplication::setApplicationName("Sonmetra");
        AppServices::instance().workingFolder = m_work.path().toStdString();
    }
    void init() {
        m_messages.clear();
        m_dialogs.requests.clear();
        m_dialogs.answers.clear();
    }

    void workingFolderIsStoredOnceAndThenRead() {
        QSettings settings;
        settings.clear();
        QCOMPARE(Startup::establishWorkingFolder(settings, "/first").value(), QString("/first"));
        QCOMPARE(settings.value("General Strings Section/Temp Directory").toString(), QString("/first"));
        QCOMPARE(Startup::establishWorkingFolder(settings, "/second").value(), QString("/first"));
    }

    void writeProbeAndTempFolder() {
        QVERIFY(Startup::probeWritable(m_work.path()).isEmpty());
        QVERIFY(!QFile::exists(m_work.path() + "/xxx"));
        QVERIFY(!Startup::probeWritable(m_work.path() + "/missing").isEmpty());
        const QString temp = Startup::createTempFolder(m_work.path());
        QCOMPARE(temp, m_work.path() + "/tmp/");
        QVERIFY(QDir(temp).exists());
        QCOMPARE(Startup::createTempFolder(m_work.path()), temp);  // an existing folder is no error
    }

    void closingAModifiedDocumentAsksAndHonoursEachAnswer() {
        CMainFrame frame;
        CChildFrame* child = frame.openDocumentFile(SONMETRA_DEMO);
        QVERIFY(child);
        child->document()->setModified(true);

        m_messages.queueAnswer(MsgAnswer::Cancel);
        QVERIFY(!child->canClose());
        QCOMPARE(QString::fromStdString(m_messages.lastText()), QString("Save Changes to 'demo.kvd' before closing ?"));

        // Yes saves in place: the file is the demo itself, so save a copy first.
        const QString copy = m_work.path() + "/demo-copy.kvd";
        QVERIFY(QFile::copy(SONMETRA_DEMO, copy));
        CChildFrame* second = frame.openDocumentFile(copy);
        QVERIFY(second && second != child);
        second->document()->setModified(true);
        m_messages.queueAnswer(MsgAnswer::Yes);
        QVERIFY(second->canClose());
        QVERIFY(!second->document()->isModified());

        m_messages.queueAnswer(MsgAnswer::No);
        QVERIFY(child->canClose());
        QVERIFY(!child->document()->isModified());
    }

    void saveOfAnUntitledDocumentGoesThroughSaveAs() {
        CMainFrame frame;
        CChildFrame* child = frame.openDocumentFile(SONMETRA_DEMO);
        QVERIFY(child);
        child->document()->setUntitledMark(true);
        child->document()->setModified(true);
        const QString target = m_work.path() + "/saved.kvd";
        m_dialogs.answers.push_back(FileDialogAnswer{target, 1});
        QAction* save = findAction(frame.menuBar(), "&File", "&Save");
        QVERIFY(save && save->isEnabled());
        save->trigger();
        QCOMPARE(m_dialogs.requests.size(), 1);
        QCOMPARE(m_dialogs.requests[0].title, QString("Save file As"));
        QCOMPARE(m_dialogs.requests[0].defaultName, QString("Untitled"));
        QCOMPARE(m_dialogs.requests[0].filters.at(0), QString("Sonmetra files (*.kvd)"));
        QVERIFY(QFile::exists(target));
        QCOMPARE(QString::fromStdString(child->document()->title()), QString("saved.kvd"));
        QVERIFY(!child->document()->isModified());
        QCOMPARE(frame.recentFiles().first(), target);
    }

    void saveSelectionAsFollowsTheSelectionFlag() {
        CMainFrame frame;
        CChildFrame* child = frame.openDocumentFile(SONMETRA_DEMO);
        QAction* a = findAction(frame.menuBar(), "&File", "Save Se&lection As...");
        QVERIFY(a);
        QVERIFY(!a->isEnabled());
        child->document()->setSelectionFlag(true);
        frame.updateCommandStates();
        QVERIFY(a->isEnabled());
    }

    void recentFileListKeepsFiveNewestFirst() {
        CMainFrame frame;
        for (int i = 0; i < 7; ++i) {
            const QString path = m_work.path() + QString("/r%1.kvd").arg(i);
            QFile::remove(path);
            QVERIFY(QFile::copy(SONMETRA_DEMO, path));
            QVERIFY(frame.openDocumentFile(path));
        }
        const QStringList recent = frame.recentFiles();
        QCOMPARE(recent.size(), 5);
        QCOMPARE(recent.first(), m_work.path() + "/r6.kvd");
        QCOMPARE(recent.last(), m_work.path() + "/r2.kvd");
    }

    void openingAnUnreadableFileSaysWhy() {
        CMainFrame frame;
        QVERIFY(!frame.openDocumentFile(m_work.path() + "/does-not-exist.kvd"));
        QVERIFY(QString::fromStdString(m_messages.lastText()).startsWith("Cannot open the file"));
        QCOMPARE(frame.mdiArea()->subWindowList().size(), 0);
    }

    // A damaged big-endian document: a cut channel header or label record is
    // reported as for a little-endian one; short sample data is silent, as
    // the format wants; and no open that fails leaves a window behind.
    void damagedMacDocumentsAreReportedAndLeaveNoWindow() {
        CMainFrame frame;
        QByteArray bytes;
        QDataStream out(&bytes, QIODevice::WriteOnly);
        out.setByteOrder(QDataStream::BigEndian);
        out.setFloatingPointPrecision(QDataStream::DoublePrecision);
        out.writeRawData("RVM_Mac\0", 8);
        out << qint32(1);
        bytes.append(QByteArray(500, '\0'));
        out.device()->seek(bytes.size());
        out << 6 * 1000.0 / 11025.0 << 11025.0 << 6.0 << 0.0 << 0.0 << 0.0 << 1.0 << 0.0;
        for (qint32 v : {1, 16, 0, 100, 1, 1, 5512, 1, 0, 1, 0, 0, 0}) out << v;
        out.writeRawData(QByteArray("Audio").leftJustified(64, '\0').constData(), 64);
        out.writeRawData(QByteArray("mv").leftJustified(64, '\0').constData(), 64);
        out << qint32(0);
        out << 1.0 << 0.0;  // one label at 1 ms
        for (int k = 0; k < 9; ++k) out << qint32(0);
        out << qint32(-20);
        out.writeRawData(QByteArray(56, '\0').constData(), 56);
        out.writeRawData(QByteArray("a").leftJustified(256, '\0').constData(), 256);
        for (qint16 v : {1, 2, 3, 4, 5, 6}) out << v;
        QCOMPARE(bytes.size(), 512 + 248 + 368 + 12);

        const QString path = m_work.path() + "/damaged-mac.kvd";
        const struct {
            int cut;
            bool message;
        } cases[] = {{512 + 100, true}, {512 + 248 + 200, true}, {512 + 248 + 368 + 5, false}};
        for (const auto& c : cases) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(bytes.left(c.cut));
            file.close();
            m_messages.clear();
            QVERIFY(!frame.openDocumentFile(path));
            const auto expected =
                c.message ? std::vector<std::string>{"Incorrect number of data was read"} : std::vector<std::string>{};
            QCOMPARE(m_messages.texts(), expected);
            QCOMPARE(frame.mdiArea()->subWindowList().size(), 0);
        }
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        file.close();
        QVERIFY(frame.openDocumentFile(path));
        QCOMPARE(frame.mdiArea()->subWindowList().size(), 1);
    }

    void helpFallsBackToHtmAndThenToTheMessage() {
        CMainFrame frame;
        QStringList opened;
        frame.setUrlOpener([&](const QUrl& url) {
            opened.push_back(url.toLocalFile());
            return true;
        });
        QDir(m_work.path()).mkpath("Manual");
        QFile::remove(m_work.path() + "/Manual/HelpIndex.html");
        QFile htm(m_work.path() + "/Manual/HelpIndex.htm");
        QVERIFY(htm.open(QIODevice::WriteOnly));
        htm.close();
        frame.showHelp();
        QCOMPARE(opened, QStringList{m_work.path() + "/Manual/HelpIndex.htm"});
        QVERIFY(m_messages.texts().empty());

        QFile::remove(m_work.path() + "/Manual/HelpIndex.htm");
        frame.showHelp();
        QCOMPARE(QString::fromStdString(m_messages.lastText()),
                 QString("No help file was found. Please contact the vendor."));
    }

    void configurationIsSavedAndOnlyItsOwnVersionLoaded() {
        CMainFrame frame;
        AppConfig config;
        AppServices::instance().config = &config;
        config.m_inputLine = "Line";
        const QString saved = m_work.path() + "/User_Configuration.cfg";
        m_dialogs.answers.push_back(FileDialogAnswer{saved, 1});
        QAction* save = findAction(frame.menuBar(), "&File", "Save Configuration...");
        QVERIFY(save);
        save->trigger();
        QCOMPARE(m_dialogs.requests.last().title, QString("Save Configuration As"));
        QCOMPARE(m_dialogs.requests.last().defaultName, QString("User_Configuration"));
        QCOMPARE(QFileInfo(saved).size(), 2224);

        AppConfig other;
        AppServices::instance().config = &other;
        m_dialogs.answers.push_back(FileDialogAnswer{saved, 1});
        findAction(frame.menuBar(), "&File", "Load Configuration...")->trigger();
        QCOMPARE(m_dialogs.requests.last().title, QString("Load a Configuration file"));
        QCOMPARE(QString::fromStdString(other.m_inputLine), QString("Line"));
        QVERIFY(m_messages.texts().empty());

        const QString foreign = m_work.path() + "/not-a-config.cfg";
        QFile f(foreign);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(QByteArray(2224, 'x'));
        f.close();
        m_dialogs.answers.push_back(FileDialogAnswer{foreign, 1});
        findAction(frame.menuBar(), "&File", "Load Configuration...")->trigger();
        QVERIFY(QString::fromStdString(m_messages.lastText()).contains("Its settings were not taken."));
        AppServices::instance().config = nullptr;
    }

    void aboutShowsTheVersion() {
        AboutDialog about;
        auto* version = about.findChild<QLabel*>("version");
        QVERIFY(version);
        QCOMPARE(version->text(), QString("Version 8.9.1"));
    }

private:
    QTemporaryDir m_settingsDir;
    QTemporaryDir m_work;
};

QTEST_MAIN(StartupTest)
#include "StartupTest.moc"
