// Labels in the waveform view: entry by click in label mode, drawing,
// editing and deleting by click, the label list, and label mode's menu text.
#include <QCheckBox>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QtTest>

#include "GuiEditFixture.h"
#include "log/CDatatbl5.h"
#include "log/CFormLog.h"
#include "view/CFormLabelView.h"
#include "view/CFrameLabelView.h"
#include "view/DocumentWindows.h"
#include "view/LabelEntryDialog.h"
#include "view/MeasurementEntries.h"
#include "view/TimeBase.h"

using namespace guitest;

class LabelViewTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { registerFeatures(); }

    void init() {
        m_doc = makeDocument(3);
        m_view = shownView(m_doc.get(), QSize(900, 520));
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    }
    void cleanup() {
        m_view.reset();
        m_doc.reset();
    }

    void modeTextFollowsTheMode() {
        QCOMPARE(viewCommand("Mode").dynamicText(*m_view), QString("Enable Label Entry Mode"));
        run("Mode", *m_view);
        QCOMPARE(viewCommand("Mode").dynamicText(*m_view), QString("Disable Label Entry Mode"));
        run("Mode", *m_view);
        QVERIFY(!m_view->extension<LabelController>()->labelMode());
    }

    void clickEntersEditsAndDeletesALabel() {
        run("Mode", *m_view);
        const int y = stripY(*m_view, 1) + 40;
        const QPoint at(m_view->msToX(400.0) + 1, y);

        // A click with the mode off enters nothing.
        run("Mode", *m_view);
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, at);
        QVERIFY(m_doc->channel(1).m_labels.empty());
        run("Mode", *m_view);

        whenModal<LabelEntryDialog>([](LabelEntryDialog* d) {
            QTest::keyClicks(d->textField(), "onset");
            d->addLineBox()->setChecked(true);
            d->justificationButton(sonmetra::Justification::Left)->setChecked(true);
            d->accept();
        });
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, at);
        QTRY_COMPARE(m_doc->channel(1).m_labels.size(), std::size_t(1));
        const auto& label = m_doc->channel(1).m_labels[0];
        QCOMPARE(label.text, std::string("onset"));
        QVERIFY(std::abs(label.timeMs - m_view->cursorMs()) < 1e-9);
        QVERIFY(std::abs(label.timeMs - 400.0) < 2.0);
        QVERIFY(m_doc->isModified());
        QVERIFY(m_doc->channel(0).m_labels.empty());

        // Drawn: pixels of the label's colour (black) right of its time, and its line.
        m_doc->channel(1).m_labels[0].red = 220;
        m_view->requestRedraw();
        const QImage image = m_view->renderNow();
        const int x = m_view->msToX(label.timeMs);
        int reddish = 0;
        for (int yy = stripY(*m_view, 1); yy < stripY(*m_view, 2); ++yy) {
            for (int xx = x; xx < x + 60; ++xx) {
                const QColor c = image.pixelColor(xx, yy);
                if (c.red() > 150 && c.green() < 90 && c.blue() < 90) ++reddish;
            }
        }
        QVERIFY2(reddish > 40, qPrintable(QString::number(reddish)));
        shoot(m_view.get(), "label_view");

        // The template keeps the settings of the last label.
        QVERIFY(m_view->extension<LabelController>()->labelTemplate().lineFlag());

        // A click on the label opens it; empty text deletes it.
        const int* r = m_doc->channel(1).m_labels[0].placement;
        const QPoint onLabel((r[0] + r[2]) / 2, (r[1] + r[3]) / 2);
        QString shown;
        whenModal<LabelEntryDialog>([&shown](LabelEntryDialog* d) {
            shown = d->text();
            d->textField()->clear();
            d->accept();
        });
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, onLabel);
        QCOMPARE(shown, QString("onset"));
        QTRY_COMPARE(m_doc->channel(1).m_labels.size(), std::size_t(0));
    }

    void labelsAreDrawnByJustificationFontAndColour() {
        auto make = [](double ms, const char* text, int justification, int heightPx, QColor color, bool line) {
            sonmetra::CLabel l;
            l.timeMs = ms;
            l.text = text;
            l.justification = justification;
            l.font.height = heightPx;
            l.setLineFlag(line);
            l.red = color.red();
            l.green = color.green();
            l.blue = color.blue();
            return l;
        };
        auto& labels = m_doc->channel(0).m_labels;
        labels = {make(200, "left", 0, 14, Qt::blue, true), make(500, "centre", 1, 24, Qt::darkGreen, true),
                  make(800, "right\nline two", 2, 14, Qt::red, false), make(205, "crowded", 0, 14, Qt::black, false)};
        labels[0].font.weight = 700;
        labels[1].font.italic = 1;
        m_view->requestRedraw();
        const QImage image = m_view->renderNow();
        shoot(m_view.get(), "label_justification");

        const int* left = labels[0].placement;
        const int* centre = labels[1].placement;
        const int* right = labels[2].placement;
        const int x0 = m_view->msToX(200), x1 = m_view->msToX(500), x2 = m_view->msToX(800);
        QVERIFY(left[0] >= x0 && left[0] <= x0 + 3);
        QVERIFY(std::abs((centre[0] + centre[2]) / 2 - x1) <= 2);
        QVERIFY(right[2] <= x2 && right[2] >= x2 - 3);
        QVERIFY(centre[3] - centre[1] > left[3] - left[1]);          // the larger font is taller
        QVERIFY(right[3] - right[1] > 2 * (left[3] - left[1]) - 4);  // two lines
        // Every label stands inside its strip, below the name.
        const int top = stripY(*m_view, 0);
        QVERIFY(left[1] > top + 8 && left[3] < stripY(*m_view, 1));

        // The line runs below the centred text in its colour; no line for "right".
        const QColor below = image.pixelColor(x1, centre[3] + 20);
        QVERIFY(below.green() > 60 && below.red() < 60 && below.blue() < 60);
        for (int y = right[3] + 2; y < stripY(*m_view, 1) - 2; ++y) {
            const QColor c = image.pixelColor(x2, y);
            QVERIFY(!(c.red() > 150 && c.green() < 90));
        }

        // A label that would cover another stands below it.
        const int* crowded = labels[3].placement;
        QVERIFY(crowded[1] >= left[3]);
        QVERIFY(crowded[0] >= m_view->msToX(205));

        int hitChannel = -1, hitIndex = -1;
        QVERIFY(m_view->extension<LabelController>()->hitTest(QPoint(centre[0] + 2, centre[1] + 2), &hitChannel,
                                                              &hitIndex));
        QCOMPARE(hitChannel, 0);
        QCOMPARE(hitIndex, 1);
        QVERIFY(!m_view->extension<LabelController>()->hitTest(QPoint(x1, top + 120), &hitChannel, &hitIndex));
    }

    void okWithEmptyTextOnNewLabelAndCancelChangeNothing() {
        run("Mode", *m_view);
        const QPoint at(m_view->msToX(300.0), stripY(*m_view, 0) + 30);
        whenModal<LabelEntryDialog>([](LabelEntryDialog* d) { d->accept(); });
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, at);
        whenModal<LabelEntryDialog>([](LabelEntryDialog* d) {
            QTest::keyClicks(d->textField(), "never");
            d->reject();
        });
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, at);
        for (int ch = 0; ch < 3; ++ch) QVERIFY(m_doc->channel(ch).m_labels.empty());
        QVERIFY(!m_doc->isModified());
    }

    void labelListShowsAndFollowsTheLabels() {
        m_doc->channel(2).m_labels.push_back({});
        m_doc->channel(2).m_labels.back().timeMs = 250.0;
        m_doc->channel(2).m_labels.back().text = "burst";
        run("View Labels", *m_view);
        CFrameLabelView* list = qobject_cast<CFrameLabelView*>(attachedWindow(m_doc.get(), windowrole::kLabelList));
        QVERIFY(list);
        QCOMPARE(list->windowTitle(), QString("Labels::speech.kvd"));
        QCOMPARE(list->form()->grid()->rowCount(), 1);
        QCOMPARE(list->form()->grid()->text(0, 0), QString("ch3"));
        QCOMPARE(list->form()->grid()->text(0, 2), QString("burst"));
        list->show();
        shoot(list, "label_list");

        // A second "View Labels" brings the same window back.
        run("View Labels", *m_view);
        QCOMPARE(qobject_cast<CFrameLabelView*>(attachedWindow(m_doc.get(), windowrole::kLabelList)), list);

        // A label entered with the mouse shows at once.
        run("Mode", *m_view);
        whenModal<LabelEntryDialog>([](LabelEntryDialog* d) {
            QTest::keyClicks(d->textField(), "closure");
            d->accept();
        });
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, QPoint(m_view->msToX(100.0), stripY(*m_view, 0) + 30));
        QCOMPARE(list->form()->grid()->rowCount(), 2);
        QCOMPARE(list->form()->grid()->text(0, 2), QString("closure"));

        // Closing the list clears the document's record of it.
        QPointer<CFrameLabelView> guard(list);
        list->close();
        QTRY_VERIFY(guard.isNull());
        QCOMPARE(qobject_cast<CFrameLabelView*>(attachedWindow(m_doc.get(), windowrole::kLabelList)), nullptr);
    }

    // Marker and data selection rows: the times, and per channel its
    // calibrated value or mean, minimum and maximum, under headings with
    // the channel's name and unit.
    void measurementEntriesNameAndCalibrateTheirValues() {
        sonmetra::CChannel& ramp = m_doc->channel(1);  // "ch2": value 0.5 i + 10 ml/s at sample i
        for (std::size_t i = 0; i < ramp.m_samples.size(); ++i) ramp.m_samples[i] = static_cast<std::int16_t>(i);
        ramp.m_units = "ml/s";
        ramp.m_converterRange = ramp.m_converterFullScale = 32768.0;
        ramp.m_gain = 1.0;
        ramp.m_c1 = 0.5;
        ramp.m_c0 = 10.0;
        CFormLog log;
        m_view->mouseDownAtMs(250.0);
        m_view->mouseUpAtMs(250.0);
        QVERIFY(enabled("Enter at Marker\tCtrl+T", *m_view));
        run("Enter at Marker\tCtrl+T", *m_view);
        CDatatbl5* grid = log.grid();
        QCOMPARE(grid->text(0, 0), QString("Marker Entry: time"));
        QCOMPARE(grid->columnTitle(1), QString("ch1 time (ms)"));
        QCOMPARE(grid->columnTitle(3), QString("ch2 time (ms)"));
        QCOMPARE(grid->columnTitle(4), QString("ch2 (ml/s)"));
        QCOMPARE(grid->columnTitle(6), QString("ch3 (mv)"));
        double v = 0;
        QVERIFY(grid->number(0, 3, &v));
        QCOMPARE(v, m_doc->channel(1).m_cursorMs);
        QVERIFY(grid->number(0, 4, &v));
        QCOMPARE(v, 0.5 * std::trunc(m_doc->channel(1).m_cursorSample) + 10.0);

        timebase::selectRange(*m_doc, 100.0, 300.0);
        m_view->setSelectionPresent(true);
        run("Enter Data Selection", *m_view);
        QCOMPARE(grid->rowTitle(1), QString("Columns"));
        QCOMPARE(grid->text(1, 5), QString("ch2 start (ms)"));
        QCOMPARE(grid->text(1, 6), QString("ch2 mean (ml/s)"));
        QCOMPARE(grid->text(1, 7), QString("ch2 min (ml/s)"));
        QCOMPARE(grid->text(1, 8), QString("ch2 max (ml/s)"));
        QCOMPARE(grid->rowTitle(2), QString("Entry 2"));
        QCOMPARE(grid->text(2, 0), QString("Data Selection Entry: time"));
        const double expected[] = {100.0, 0.5 * 199.5 + 10.0, 60.0, 0.5 * 299 + 10.0};
        for (int i = 0; i < 4; ++i) {
            QVERIFY(grid->number(2, 5 + i, &v));
            QCOMPARE(v, expected[i]);
        }

        // A selection long enough to be counted per raw value gives the same figures.
        sonmetra::CChannel longRamp = ramp;
        QVERIFY(longRamp.m_samples.resize(200000));
        for (std::size_t i = 0; i < longRamp.m_samples.size(); ++i)
            longRamp.m_samples[i] = static_cast<std::int16_t>(int(i % 20000) - 10000);
        longRamp.m_selStartSample = 0.0;
        longRamp.m_selEndSample = 200000.0;
        const SelectionStatistics s = selectionStatistics(longRamp);
        QCOMPARE(s.minimum, 0.5 * -10000 + 10.0);
        QCOMPARE(s.maximum, 0.5 * 9999 + 10.0);
        QCOMPARE(s.mean, 0.5 * -0.5 + 10.0);
        log.markClosed();
    }

private:
    std::shared_ptr<sonmetra::CKestruneDoc> m_doc;
    std::unique_ptr<CKestruneView> m_view;
};

QTEST_MAIN(LabelViewTest)
#include "LabelViewTest.moc"
