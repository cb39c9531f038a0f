// The "Label entry" dialog through its widgets.
#include <QCheckBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>

#include "GuiEditFixture.h"
#include "view/LabelEntryDialog.h"
#include "view/LabelFont.h"

using sonmetra::CLabel;
using sonmetra::Justification;

class LabelDialogTest : public QObject {
    Q_OBJECT
private slots:
    void opensWithItsTextsAndFocusInTheField() {
        CLabel l;
        l.text = "old";
        LabelEntryDialog dialog(l);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QCOMPARE(dialog.windowTitle(), QString("Label entry"));
        QStringList labels;
        for (auto* w : dialog.findChildren<QLabel*>()) labels << w->text();
        QVERIFY(labels.contains("Enter Label (255 characters maximum): "));
        QCOMPARE(dialog.fontButton()->text(), QString("Font"));
        QCOMPARE(dialog.addLineBox()->text(), QString("Add line"));
        QCOMPARE(dialog.focusWidget(), dialog.textField());
        QCOMPARE(dialog.text(), QString("old"));
        // A label with no known justification shows Left.
        QVERIFY(dialog.justificationButton(Justification::Left)->isChecked());
    }

    void fieldStopsAt254Characters() {
        LabelEntryDialog dialog{CLabel()};
        dialog.show();
        QTest::keyClicks(dialog.textField(), QString(300, 'a'));
        QCOMPARE(dialog.text().size(), 254);
        QCOMPARE(dialog.label().text, std::string(254, 'a'));
        // Several lines are allowed within the limit.
        dialog.textField()->setPlainText("two\nlines");
        QCOMPARE(dialog.label().text, std::string("two\nlines"));
    }

    void justificationLineFontAndColourAreTaken() {
        CLabel l;
        l.justification = 2;
        l.font.quality = 5;  // not shown by the dialog: kept as it was
        LabelEntryDialog dialog(l);
        dialog.show();
        QVERIFY(dialog.justificationButton(Justification::Right)->isChecked());
        QTest::mouseClick(dialog.justificationButton(Justification::Center), Qt::LeftButton);
        QVERIFY(dialog.justificationButton(Justification::Center)->isChecked());
        QVERIFY(!dialog.justificationButton(Justification::Right)->isChecked());
        QVERIFY(!dialog.justificationButton(Justification::Left)->isChecked());
        dialog.addLineBox()->click();

        LabelEntryDialog::setFontPicker([](QWidget*, QFont& font, QColor& color) {
            font.setFamily("DejaVu Serif");
            font.setPixelSize(22);
            font.setBold(true);
            font.setItalic(true);
            color = QColor(10, 120, 200);
            return true;
        });
        QTest::mouseClick(dialog.fontButton(), Qt::LeftButton);
        LabelEntryDialog::setFontPicker({});
        QTest::keyClicks(dialog.textField(), "vowel");

        const CLabel out = dialog.label();
        QCOMPARE(out.text, std::string("vowel"));
        QCOMPARE(out.justification, 1);
        QVERIFY(out.lineFlag());
        QCOMPARE(out.font.face(), std::string("DejaVu Serif"));
        QCOMPARE(out.font.height, 22);
        QCOMPARE(out.font.weight, 700);
        QCOMPARE(out.font.italic, std::uint8_t(1));
        QCOMPARE(out.font.quality, std::uint8_t(5));
        QCOMPARE(out.red, 10);
        QCOMPARE(out.blue, 200);

        // Cancel in the font dialog keeps the font.
        LabelEntryDialog::setFontPicker([](QWidget*, QFont&, QColor&) { return false; });
        LabelEntryDialog second(out);
        QTest::mouseClick(second.fontButton(), Qt::LeftButton);
        LabelEntryDialog::setFontPicker({});
        QCOMPARE(second.label().font, out.font);
    }

    void fontRecordMapsBothWays() {
        sonmetra::LogFont f = sonmetra::LogFont::defaultFont();
        f.height = -17;
        f.weight = 700;
        f.underline = 1;
        f.escapement = 900;  // kept as read
        const QFont q = qFontFromLogFont(f);
        QCOMPARE(q.pixelSize(), 17);
        QVERIFY(q.bold());
        QVERIFY(q.underline());
        QCOMPARE(q.family(), QString("Arial"));
        sonmetra::LogFont back = f;
        logFontFromQFont(q, back);
        QCOMPARE(back, f);
    }
};

QTEST_MAIN(LabelDialogTest)
#include "LabelDialogTest.moc"
