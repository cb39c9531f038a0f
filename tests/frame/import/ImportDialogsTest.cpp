// The import dialogs and Export Channel As, driven offscreen as a user would:
// rows picked, values typed, buttons clicked. With SONMETRA_SHOTS set to a
// folder, each dialog is also saved there as a PNG for a look.
#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QGroupBox>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTimer>
#include <QtTest>
#include <functional>

#include "document/MessageService.h"
#include "frame/ExportChannel.h"
#include "frame/ImportDialogs.h"
#include "tests/support/GuiTestSupport.h"
#include "view/FileDialogs.h"

using namespace sonmetra::test;

namespace {

QAbstractButton* buttonWithText(QDialog* dialog, const QString& text) {
    for (QAbstractButton* b : dialog->findChildren<QAbstractButton*>())
        if (b->text().remove('&') == text) return b;
    return nullptr;
}

QStringList rows(const QListWidget* list) {
    QStringList texts;
    for (int i = 0; i < list->count(); ++i) texts << list->item(i)->text();
    return texts;
}

// Saves the dialog when asked to, and checks that it drew more than a blank.
void lookAt(QWidget* w, const QString& name) {
    w->adjustSize();
    const QImage image = w->grab().toImage();
    QVERIFY(!image.isNull());
    bool varied = false;
    for (int y = 0; y < image.height() && !varied; y += 3)
        for (int x = 0; x < image.width() && !varied; x += 3) varied = image.pixel(x, y) != image.pixel(0, 0);
    QVERIFY2(varied, qPrintable(name + " drew nothing"));
    shoot(image, name);
}

}  // namespace

class ImportDialogsTest : public QObject {
    Q_OBJECT
private slots:
    void channelSelectionOffersTheRealCount();
    void channelSelectionAnswers();
    void genericDialogDefaultsAndLabels();
    void genericDialogAnswers();
    void exportWritesTheChosenChannelWhole();
};

void ImportDialogsTest::channelSelectionOffersTheRealCount() {
    CChannelSelectDialog two(2);
    QCOMPARE(rows(two.channelList()), (QStringList{"Channel #1", "Channel #2"}));
    QCOMPARE(two.chosenChannel(), 0);
    CChannelSelectDialog ten(10);
    QCOMPARE(ten.channelList()->count(), 10);
    QCOMPARE(ten.channelList()->item(9)->text(), QString("Channel #10"));
    lookAt(&ten, "channel-selection");
}

void ImportDialogsTest::channelSelectionAnswers() {
    CImportDialogs dialogs;
    whenModal<QDialog>([](QDialog* d) {
        d->findChild<QListWidget*>()->setCurrentRow(2);
        buttonWithText(d, "OK")->click();
    });
    QCOMPARE(dialogs.chooseChannel(4), 2);

    whenModal<QDialog>([](QDialog* d) { buttonWithText(d, "Cancel")->click(); });
    QCOMPARE(dialogs.chooseChannel(4), -1);
}

void ImportDialogsTest::genericDialogDefaultsAndLabels() {
    CGenericFileDialog dialog{sonmetra::GenericFileSettings{}};
    QCOMPARE(dialog.windowTitle(), QString("Generic File Selection"));
    QCOMPARE(dialog.headerBox()->value(), 0);
    QCOMPARE(dialog.rateBox()->value(), 10000);
    QVERIFY(dialog.button16Bit()->isChecked());
    QVERIFY(dialog.buttonLowFirst()->isChecked());
    QCOMPARE(dialog.button8Bit()->text(), QString("8 bit"));
    QCOMPARE(dialog.button16Bit()->text(), QString("16 bit"));
    QCOMPARE(dialog.buttonLowFirst()->text(), QString("Low byte first"));
    QCOMPARE(dialog.buttonHighFirst()->text(), QString("High byte first"));
    const auto* buttons = dialog.findChild<QDialogButtonBox*>();
    QStringList texts;
    for (QAbstractButton* b : buttons->buttons()) texts << b->text();
    texts.sort();
    QCOMPARE(texts, (QStringList{"Cancel", "Yes"}));
    // One-byte samples have no byte order.
    dialog.button8Bit()->setChecked(true);
    QVERIFY(!dialog.buttonLowFirst()->isEnabled());
    dialog.button16Bit()->setChecked(true);
    QVERIFY(dialog.buttonLowFirst()->isEnabled());
    lookAt(&dialog, "generic-file-selection");
}

void ImportDialogsTest::genericDialogAnswers() {
    CImportDialogs dialogs;
    sonmetra::GenericFileSettings settings;
    whenModal<QDialog>([](QDialog* d) {
        auto* dialog = qobject_cast<CGenericFileDialog*>(d);
        dialog->headerBox()->setValue(128);
        dialog->rateBox()->setValue(22050);
        dialog->button8Bit()->setChecked(true);
        dialog->buttonHighFirst()->setChecked(true);
        buttonWithText(d, "Yes")->click();
    });
    QVERIFY(dialogs.genericFileSelection(settings));
    QCOMPARE(settings.headerBytes, 128);
    QCOMPARE(settings.rateHz, 22050.0);
    QCOMPARE(settings.bits, 8);
    QVERIFY(!settings.lowByteFirst);

    // Cancel leaves the settings as they were, and the dialog starts from them.
    whenModal<QDialog>([](QDialog* d) {
        auto* dialog = qobject_cast<CGenericFileDialog*>(d);
        QCOMPARE(dialog->headerBox()->value(), 128);
        dialog->headerBox()->setValue(4);
        buttonWithText(d, "Cancel")->click();
    });
    QVERIFY(!dialogs.genericFileSelection(settings));
    QCOMPARE(settings.headerBytes, 128);
}

void ImportDialogsTest::exportWritesTheChosenChannelWhole() {
    sonmetra::RecordingMessageService messages;
    sonmetra::ScopedMessageService install(&messages);
    sonmetra::CKestruneDoc doc;
    doc.setPathAndTitle("/somewhere/session.kvd");
    doc.setChannelCount(2);
    for (int c = 0; c < 2; ++c) {
        sonmetra::CChannel& ch = doc.channel(c);
        ch.m_inUse = 1;
        ch.m_name = c == 0 ? "Audio" : "EMG";
        ch.m_rateHz = c == 0 ? 11025.0 : 2000.0;
        QVERIFY(ch.m_samples.resize(300));
        for (int i = 0; i < 300; ++i)
            ch.m_samples[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(i * (c + 1));
        ch.setSampleCountFromBlock();
        ch.m_selStartSample = 10;
        ch.m_selEndSample = 20;
    }
    doc.setSelectionFlag(true);

    AnsweringFileDialogs files;
    files.path = QDir::temp().filePath("sonmetra-export-test.wav");
    IFileDialogs* previous = setFileDialogs(&files);
    whenModal<QDialog>([](QDialog* d) {
        QCOMPARE(d->windowTitle(), QString("Data Channel Select"));
        auto* list = d->findChild<QListWidget*>();
        QCOMPARE(rows(list), (QStringList{"Audio", "EMG"}));
        lookAt(d, "data-channel-select");
        list->setCurrentRow(1);
        buttonWithText(d, "OK")->click();
    });
    exportChannelAs(nullptr, doc);
    setFileDialogs(previous);

    QCOMPARE(files.requests.size(), 1);
    QCOMPARE(files.asked().title, QString("Save a Data Channel As"));
    QCOMPARE(files.asked().defaultName, QString("Channel of session.kvd"));
    QCOMPARE(files.asked().filters, QStringList{"Wave files (*.wav)"});
    QVERIFY(files.asked().save);

    QFile written(files.path);
    QVERIFY(written.open(QIODevice::ReadOnly));
    const QByteArray bytes = written.readAll();
    written.remove();
    QCOMPARE(bytes.size(), 44 + 600);
    QCOMPARE(qFromLittleEndian<quint32>(bytes.constData() + 24), 2000u);
    QCOMPARE(qFromLittleEndian<qint16>(bytes.constData() + 44 + 2 * 299), qint16(598));
    QVERIFY(messages.texts().empty());

    // Cancel in the channel dialog asks for no file name.
    whenModal<QDialog>([](QDialog* d) { buttonWithText(d, "Cancel")->click(); });
    setFileDialogs(&files);
    exportChannelAs(nullptr, doc);
    setFileDialogs(previous);
    QCOMPARE(files.requests.size(), 1);
}

QTEST_MAIN(ImportDialogsTest)
#include "ImportDialogsTest.moc"
