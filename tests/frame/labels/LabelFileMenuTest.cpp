// File > Import Labels and Export Labels driven through the main frame's
// menu, offscreen, with the file dialogs and message boxes answered: the
// tier dialog's choices, the view and the label list after an import,
// Undo, a damaged file, and the exported file. With SONMETRA_SHOTS set to
// a folder, the view with imported labels and both dialogs are saved there.
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QLineEdit>
#include <QMdiArea>
#include <QMenuBar>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>
#include <functional>

#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "document/labels/LabelTransfer.h"
#include "document/labels/TextGridFormat.h"
#include "frame/CChildFrame.h"
#include "frame/CMainFrame.h"
#include "frame/LabelFileDialogs.h"
#include "log/CDatatbl5.h"
#include "tests/support/GuiTestSupport.h"
#include "tests/support/TestDocument.h"
#include "view/AppServices.h"
#include "view/CFormLabelView.h"
#include "view/CFrameLabelView.h"
#include "view/CKestruneView.h"
#include "view/EditCommands.h"
#include "view/FileDialogs.h"
#include "view/LabelController.h"

using namespace sonmetra;
using namespace sonmetra::test;

namespace {

const char kGrid[] =
    "File type = \"ooTextFile\"\nObject class = \"TextGrid\"\n\n0\n5.6\n<exists>\n2\n"
    "\"IntervalTier\"\n\"words\"\n0\n5.6\n5\n"
    "0\n0.3\n\"\"\n0.3\n1.2\n\"speech\"\n1.2\n2.3\n\"science\"\n2.3\n4.4\n\"\"\n4.4\n5.6\n\"mama\"\n"
    "\"TextTier\"\n\"events\"\n0\n5.6\n2\n1\n\"burst\"\n3.25\n\"click\"\n";

}  // namespace

class LabelFileMenuTest : public AnsweringTest<AnsweringFileDialogs> {
    Q_OBJECT

private slots:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        keepFilesIn(m_dir.path());
        registerEditCommands();
        registerLabelCommands();
    }
    void init() {
        m_messages.clear();
        m_dialogs.requests.clear();
        const QString doc = m_dir.path() + "/demo.kvd";
        QFile::remove(doc);
        QVERIFY(QFile::copy(SONMETRA_DEMO, doc));
        m_docPath = doc;
    }

    void importChoosesTiersForChannelsAndUndoRestores() {
        CMainFrame frame;
        frame.resize(1100, 700);
        frame.show();
        CChildFrame* child = frame.openDocumentFile(m_docPath);
        QVERIFY(child);
        CKestruneDoc* doc = child->document();
        const auto before = labelsOf(doc->channel(0));
        CFrameLabelView* list = CFrameLabelView::showFor(doc);
        QVERIFY(list);
        QCOMPARE(list->form()->grid()->rowCount(), 5);
        frame.mdiArea()->setActiveSubWindow(child);  // the list took the focus

        writeFile("words.TextGrid", kGrid);
        m_dialogs.path = m_dir.path() + "/words.TextGrid";
        QAction* import = findAction(frame.menuBar(), "&File", "Import Labels...");
        QVERIFY(import && import->isEnabled());
        bool dialogSeen = false;
        whenModal<CImportLabelsDialog>([&](CImportLabelsDialog* d) {
            dialogSeen = true;
            // By default the first tier goes to the audio channel, the second nowhere.
            QCOMPARE(d->channelBox(0)->currentText(), QString("1 Audio"));
            QCOMPARE(d->channelBox(1)->currentText(), QString("Not imported"));
            d->channelBox(1)->setCurrentIndex(2);  // events to channel 2
            d->adjustSize();
            shoot(d, "import-labels-dialog");
            press(d, QDialogButtonBox::Ok);
        });
        import->trigger();
        QVERIFY(dialogSeen);
        QCOMPARE(m_dialogs.requests.last().title, QString("Import Labels"));
        QVERIFY2(m_messages.texts().empty(), m_messages.lastText().c_str());

        using L = std::vector<std::pair<double, std::string>>;
        QVERIFY(labelsOf(doc->channel(0)) ==
                (L{{300, "speech"}, {1200, "science"}, {2300, ""}, {4400, "mama"}, {5600, ""}}));
        QVERIFY(labelsOf(doc->channel(1)) == (L{{1000, "burst"}, {3250, "click"}}));
        QVERIFY(doc->channel(0).m_labels[0].lineFlag());
        QVERIFY(doc->isModified());
        QCOMPARE(list->form()->grid()->rowCount(), 7);
        QCOMPARE(list->form()->grid()->text(1, 2), QString("science"));

        // The view draws them: each label with text gets the rectangle it was drawn in.
        CKestruneView* view = frame.activeView();
        view->renderNow();
        for (const CLabel& l : doc->channel(0).m_labels)
            if (!l.text.empty()) QVERIFY2(l.placement[2] > l.placement[0], l.text.c_str());
        shoot(child, "imported-labels");

        QAction* undo = findAction(frame.menuBar(), "&Edit", "&Undo");
        QVERIFY(undo && undo->isEnabled());
        undo->trigger();
        QVERIFY(labelsOf(doc->channel(0)) == before);
        QVERIFY(doc->channel(1).m_labels.empty());
        QCOMPARE(list->form()->grid()->rowCount(), 5);
    }

    void refusedChoicesAndDamagedFilesChangeNothing() {
        CMainFrame frame;
        CChildFrame* child = frame.openDocumentFile(m_docPath);
        QVERIFY(child);
        CKestruneDoc* doc = child->document();
        const auto before = labelsOf(doc->channel(0));
        QAction* import = findAction(frame.menuBar(), "&File", "Import Labels...");

        // Both tiers for one channel: said so, and the dialog stays for another choice.
        writeFile("words.TextGrid", kGrid);
        m_dialogs.path = m_dir.path() + "/words.TextGrid";
        whenModal<CImportLabelsDialog>([&](CImportLabelsDialog* d) {
            d->channelBox(1)->setCurrentIndex(1);
            press(d, QDialogButtonBox::Ok);
            QVERIFY(d->isVisible());
            press(d, QDialogButtonBox::Cancel);
        });
        import->trigger();
        QCOMPARE(m_messages.lastText(), std::string("Only one tier can go to channel 1 Audio."));

        // A tier past the end of the signal (5.69 s).
        m_messages.clear();
        std::string late = kGrid;
        late.replace(late.find("4.4\n5.6\n\"mama\""), 14, "4.4\n5.8\n\"mama\"");
        writeFile("late.TextGrid", late);
        m_dialogs.path = m_dir.path() + "/late.TextGrid";
        whenModal<CImportLabelsDialog>([](CImportLabelsDialog* d) { press(d, QDialogButtonBox::Ok); });
        import->trigger();
        QCOMPARE(m_messages.lastText(),
                 std::string("No labels were imported from 'late.TextGrid':\nfor channel 1 \"Audio\", the interval "
                             "\"mama\" of tier \"words\" reaches 5.8 s, past the end of the signal at "
                             "5.693333333333333 s."));

        // Cut short: refused before any dialog.
        m_messages.clear();
        writeFile("short.TextGrid", std::string(kGrid).substr(0, 120));
        m_dialogs.path = m_dir.path() + "/short.TextGrid";
        import->trigger();
        QCOMPARE(m_messages.texts().size(), std::size_t(1));
        QVERIFY(m_messages.lastText().rfind("'short.TextGrid' cannot be read as a TextGrid:\n", 0) == 0);

        QVERIFY(labelsOf(doc->channel(0)) == before);
        QVERIFY(!doc->isModified());
        QVERIFY(!findAction(frame.menuBar(), "&Edit", "&Undo")->isEnabled());
    }

    void exportWritesTheChosenTiers() {
        CMainFrame frame;
        CChildFrame* child = frame.openDocumentFile(m_docPath);
        QVERIFY(child);
        CKestruneDoc* doc = child->document();
        CLabel extra;
        extra.timeMs = 500;
        extra.text = "inhale";
        doc->channel(1).m_labels = {extra};

        const QString out = m_dir.path() + "/out.TextGrid";
        m_dialogs.path = out;
        QAction* exportAction = findAction(frame.menuBar(), "&File", "Export Labels...");
        QVERIFY(exportAction && exportAction->isEnabled());
        whenModal<CExportLabelsDialog>([&](CExportLabelsDialog* d) {
            QCOMPARE(d->rows().size(), std::size_t(2));
            QCOMPARE(d->rows()[0].name->text(), QString("Audio"));
            QCOMPARE(d->rows()[0].kind->currentText(), QString("Point tier"));
            d->rows()[0].name->setText("words");
            d->rows()[1].include->setChecked(false);
            d->adjustSize();
            shoot(d, "export-labels-dialog");
            press(d, QDialogButtonBox::Ok);
        });
        exportAction->trigger();
        QCOMPARE(m_dialogs.requests.last().defaultName, QString("demo"));
        QVERIFY2(m_messages.texts().empty(), m_messages.lastText().c_str());

        std::string error;
        const auto expected =
            tiersFromChannels(*doc, {TierExport{0, "words", TierKind::Point}}, LabelFileFormat::TextGrid, error);
        QVERIFY(expected);
        QFile written(out);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(written.readAll().toStdString(), formatTextGrid(*expected));

        // Without labels there is nothing to export.
        for (int i = 0; i < doc->channelCount(); ++i) doc->channel(i).m_labels.clear();
        QVERIFY(!findAction(frame.menuBar(), "&File", "Export Labels...")->isEnabled());
    }

private:
    void writeFile(const QString& name, const std::string& text) {
        QFile f(m_dir.path() + "/" + name);
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(text.data(), static_cast<qint64>(text.size()));
    }

    QTemporaryDir m_dir;
    QString m_docPath;
};

QTEST_MAIN(LabelFileMenuTest)
#include "LabelFileMenuTest.moc"
