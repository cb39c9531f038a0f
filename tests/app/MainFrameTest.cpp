// The main frame as a user meets it: Save As under each file type, the
// manual that ships with the program, the title bar's modified mark, the
// scroll bar of an empty document and the start-up font.
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QMdiArea>
#include <QMenuBar>
#include <QScrollBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QWindow>
#include <QtTest>

#include "app/Startup.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "frame/CChildFrame.h"
#include "frame/CMainFrame.h"
#include "frame/CommandMenus.h"
#include "frame/DocumentCommands.h"
#include "frame/HelpPages.h"
#include "tests/support/GuiTestSupport.h"
#include "view/AppServices.h"
#include "view/CKestruneView.h"
#include "view/EditCommands.h"
#include "view/FileDialogs.h"
#include "view/TimeBase.h"

using namespace sonmetra;
using namespace sonmetra::test;

namespace {

QByteArray head(const QString& path, int n) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.read(n) : QByteArray();
}

// The title the window system shows (the "[*]" placeholder resolved).
QString shownTitle(const QWidget& w) { return w.windowHandle() ? w.windowHandle()->title() : QString(); }

}  // namespace

class MainFrameTest : public AnsweringTest<ScriptedFileDialogs> {
    Q_OBJECT

private slots:
    void initTestCase() {
        keepSettingsIn(m_settingsDir.path());
        AppServices::instance().workingFolder = m_work.path().toStdString();
        AppServices::instance().tempFolder = m_work.path().toStdString() + "/";
        registerEditCommands();
    }
    void cleanupTestCase() { AppServices::instance() = AppServices{}; }
    void init() {
        m_messages.clear();
        m_dialogs.answers.clear();
    }

    void theChosenFileTypeSetsTheSuffix() {
        const QStringList filters = {"Sonmetra files (*.kvd)", "Wave files (*.wav)"};
        QCOMPARE(pathForFilter("/d/take1", filters, 2), QString("/d/take1.wav"));
        QCOMPARE(pathForFilter("/d/take1.kvd", filters, 2), QString("/d/take1.wav"));
        QCOMPARE(pathForFilter("/d/take1.WAV", filters, 2), QString("/d/take1.WAV"));
        QCOMPARE(pathForFilter("/d/take1.wav", filters, 1), QString("/d/take1.kvd"));
        QCOMPARE(pathForFilter("/d/take.1", filters, 2), QString("/d/take.1.wav"));
        QCOMPARE(pathForFilter("/d/.wav", filters, 1), QString("/d/.wav.kvd"));

        // "take1" typed under "Wave files": the dialog adds its default
        // suffix, but the file written is take1.wav, a WAV file.
        CMainFrame frame;
        CChildFrame* child = frame.openDocumentFile(SONMETRA_DEMO);
        QVERIFY(child);
        const QString typed = m_work.filePath("take1.kvd");
        m_dialogs.answers.push_back(FileDialogAnswer{typed, 2});
        QVERIFY(DocumentCommands::saveAs(&frame, *child->document()));
        QVERIFY(!QFile::exists(typed));
        QCOMPARE(head(m_work.filePath("take1.wav"), 4), QByteArray("RIFF"));
        QCOMPARE(QString::fromStdString(child->document()->title()), QString("take1.wav"));

        // A name that becomes one of an existing file asks first; No writes nothing.
        QFile other(m_work.filePath("take2.wav"));
        QVERIFY(other.open(QIODevice::WriteOnly));
        other.write("keep me");
        other.close();
        m_dialogs.answers.push_back(FileDialogAnswer{m_work.filePath("take2.kvd"), 2});
        m_messages.queueAnswer(MsgAnswer::No);
        QVERIFY(!DocumentCommands::saveAs(&frame, *child->document()));
        QCOMPARE(QString::fromStdString(m_messages.lastText()),
                 "'" + m_work.filePath("take2.wav") + "' already exists.\nDo you want to replace it?");
        QCOMPARE(head(m_work.filePath("take2.wav"), 7), QByteArray("keep me"));
        QCOMPARE(QString::fromStdString(child->document()->title()), QString("take1.wav"));

        // Back to the document format under a name typed with ".wav".
        m_dialogs.answers.push_back(FileDialogAnswer{m_work.filePath("take3.wav"), 1});
        QVERIFY(DocumentCommands::saveAs(&frame, *child->document()));
        QCOMPARE(head(m_work.filePath("take3.kvd"), 6), QByteArray("RVM_PC"));
        QVERIFY(!QFile::exists(m_work.filePath("take3.wav")));
    }

    void helpFindsTheManualShippedWithTheProgram() {
        CMainFrame frame;
        QStringList opened;
        frame.setUrlOpener([&](const QUrl& url) {
            opened.push_back(url.toLocalFile());
            return true;
        });
        QVERIFY(!QFileInfo::exists(m_work.filePath("Manual")));

        // Run from the build tree: the copy beside the program.
        frame.setProgramFolder(QFileInfo(SONMETRA_BIN).absolutePath());
        frame.showHelp();
        QCOMPARE(opened.size(), 1);
        QCOMPARE(opened[0], QFileInfo(SONMETRA_BIN).absolutePath() + "/Manual/HelpIndex.html");
        QVERIFY(head(opened[0], 15).startsWith("<!DOCTYPE html>"));

        // Installed: <prefix>/bin/sonmetra finds <prefix>/share/sonmetra/Manual.
        QTemporaryDir prefix;
        QVERIFY(QDir(prefix.path()).mkpath("bin"));
        QVERIFY(QDir(prefix.path()).mkpath("share/sonmetra/Manual"));
        QVERIFY(QFile::copy(SONMETRA_MANUAL, prefix.filePath("share/sonmetra/Manual/HelpIndex.html")));
        frame.setProgramFolder(prefix.filePath("bin"));
        frame.showHelp();
        QCOMPARE(opened.size(), 2);
        QCOMPARE(opened[1], prefix.filePath("share/sonmetra/Manual/HelpIndex.html"));

        // A user's own manual in the working folder still comes first.
        QVERIFY(QDir(m_work.path()).mkpath("Manual"));
        QFile own(m_work.filePath("Manual/HelpIndex.htm"));
        QVERIFY(own.open(QIODevice::WriteOnly));
        own.close();
        frame.showHelp();
        QCOMPARE(opened.last(), m_work.filePath("Manual/HelpIndex.htm"));
        QVERIFY(QDir(m_work.filePath("Manual")).removeRecursively());
        QVERIFY(m_messages.texts().empty());

        const QStringList folders = manualFolders("/w", "/opt/x/bin");
        QCOMPARE(folders.mid(0, 3), (QStringList{"/w/Manual", "/opt/x/bin/Manual", "/opt/x/share/sonmetra/Manual"}));
    }

    // The steps of the report: Save As cut.kvd, a label, Clear to
    // Reference, Undo; the title bar carries the mark whenever the
    // document is modified, and loses it when it is saved.
    void titleBarCarriesTheModifiedMark() {
        CMainFrame frame;
        frame.show();
        QVERIFY(QTest::qWaitForWindowExposed(&frame));
        const QString copy = m_work.filePath("demo-title.kvd");
        QVERIFY(QFile::copy(SONMETRA_DEMO, copy));
        CChildFrame* child = frame.openDocumentFile(copy);
        QVERIFY(child && child->isMaximized());
        CKestruneDoc& doc = *child->document();
        CKestruneView& view = *child->kestruneView();
        auto settle = [] { QTest::qWait(600); };  // the title follows within a quarter second

        m_dialogs.answers.push_back(FileDialogAnswer{m_work.filePath("cut.kvd"), 1});
        QVERIFY(DocumentCommands::saveAs(&frame, doc));
        child->updateTitle();
        settle();
        QCOMPARE(shownTitle(frame), QString("Sonmetra - [cut.kvd]"));

        CLabel label;
        label.timeMs = 1000.0;
        label.text = "added";
        doc.channel(0).m_labels.push_back(label);
        doc.setModified(true);
        settle();
        QCOMPARE(shownTitle(frame), QString("Sonmetra - [cut.kvd*]"));

        timebase::selectRange(doc, 500.0, 800.0);
        view.setSelectionPresent(true);
        view.extension<EditController>()->clearToReference();
        settle();
        QCOMPARE(shownTitle(frame), QString("Sonmetra - [cut.kvd*]"));

        view.extension<EditController>()->undoLastEdit();
        settle();
        QCOMPARE(shownTitle(frame), QString("Sonmetra - [cut.kvd*]"));

        QVERIFY(DocumentCommands::save(&frame, doc));
        settle();
        QCOMPARE(shownTitle(frame), QString("Sonmetra - [cut.kvd]"));

        // Qt hands the window's mark to the frame on some events only; one
        // that is lost (a window inactive behind a dialog as the document
        // changes) must not leave the title wrong.
        doc.setModified(true);
        settle();
        frame.setWindowModified(false);
        settle();
        QCOMPARE(shownTitle(frame), QString("Sonmetra - [cut.kvd*]"));
    }

    void anEmptyDocumentHasNothingToScroll() {
        CMainFrame frame;
        frame.show();
        CChildFrame* empty = frame.newDocument();
        QScrollBar* bar = empty->kestruneView()->horizontalBar();
        QCOMPARE(bar->maximum(), bar->minimum());
        QVERIFY(!bar->isEnabled());
        // As a whole signal in view shows it.
        CChildFrame* whole = frame.openDocumentFile(SONMETRA_DEMO);
        QScrollBar* wholeBar = whole->kestruneView()->horizontalBar();
        QCOMPARE(bar->maximum(), wholeBar->maximum());
        QCOMPARE(bar->isEnabled(), wholeBar->isEnabled());
    }

    void theStartUpFontNamesTheStrips() {
        const std::optional<QFont> font = Startup::createDefaultFont(QFontDatabase::families());
        QVERIFY(font.has_value());
        QCOMPARE(font->family(), QString("Arial"));
        QCOMPARE(font->pixelSize(), 14);
        QCOMPARE(font->weight(), QFont::Normal);
        QVERIFY(m_messages.texts().empty());

        // The views write the channel names in it.
        QFont shared = *font;
        shared.setItalic(true);  // to tell it from a font the view might make itself
        AppServices::instance().defaultFont = &shared;
        CKestruneDoc doc;
        CKestruneView withShared(&doc);
        QCOMPARE(withShared.labelFont(), shared);
        AppServices::instance().defaultFont = nullptr;
        CKestruneView alone(&doc);
        QCOMPARE(alone.labelFont().pixelSize(), 14);
        QCOMPARE(alone.labelFont().family(), QString("Arial"));

        // A system without a single font: the font cannot be made.
        QVERIFY(!Startup::createDefaultFont({}).has_value());
        QCOMPARE(QString::fromStdString(m_messages.lastText()), QString("Error in creating fonts"));
    }

private:
    QTemporaryDir m_settingsDir;
    QTemporaryDir m_work;
};

QTEST_MAIN(MainFrameTest)
#include "MainFrameTest.moc"
