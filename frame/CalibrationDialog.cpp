#include "CalibrationDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <cmath>

#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "document/UserException.h"
#include "io/usb/UsbProtocol.h"
#include "log/CDatatbl5.h"
#include "view/CKestruneView.h"
#include "view/EditCommands.h"
#include "view/TimeBase.h"
#include "view/recordplay/RecordPlayConfig.h"
#include "view/recordplay/UsbUnitSetup.h"

using namespace sonmetra;

namespace {

// The channel's raw value v converted as its calibration sees it:
// (converter range / full scale) x (v - reference) / gain.
double converted(const CChannel& ch, double raw) {
    const double v = raw - ch.m_reference;
    return ch.m_converterFullScale != 0.0 && ch.m_gain != 0.0
               ? ch.m_converterRange / ch.m_converterFullScale * v / ch.m_gain
               : v;
}

constexpr std::size_t kMaxTextLength = 63;  // what a document file keeps of a name or unit text

}  // namespace

CalibrationDialog::CalibrationDialog(CKestruneView& view)
    : QDialog(&view),
      m_view(&view),
      m_table(new CDatatbl5(this)),
      m_identify(new QPushButton(QStringLiteral("Identify unit"), this)),
      m_unit(new QLabel(this)),
      m_channel(new QComboBox(this)),
      m_take{new QPushButton(QStringLiteral("Take point 1"), this),
             new QPushButton(QStringLiteral("Take point 2"), this)},
      m_known{new QDoubleSpinBox(this), new QDoubleSpinBox(this)},
      m_reading{new QLabel(QStringLiteral("not taken"), this), new QLabel(QStringLiteral("not taken"), this)},
      m_compute(new QPushButton(QStringLiteral("Compute c1 and c0"), this)) {
    setWindowTitle(QStringLiteral("Calibration"));
    setAttribute(Qt::WA_DeleteOnClose);
    m_table->setGridSize(0, 6);
    const char* titles[] = {"Name", "Units", "c3", "c2", "c1", "c0"};
    for (int c = 0; c < 6; ++c) m_table->setColumnTitle(c, titles[c]);
    m_table->setReadOnly(false);
    m_table->horizontalHeader()->setStretchLastSection(true);

    auto* unitRow = new QHBoxLayout;
    unitRow->addWidget(m_identify);
    unitRow->addWidget(m_unit, 1);

    auto* twoPoint = new QGroupBox(QStringLiteral("Two-point calibration"), this);
    auto* grid = new QGridLayout(twoPoint);
    grid->addWidget(new QLabel(QStringLiteral("Channel"), twoPoint), 0, 0);
    grid->addWidget(m_channel, 0, 1, 1, 3);
    for (int p = 0; p < 2; ++p) {
        m_known[p]->setRange(-1e12, 1e12);
        m_known[p]->setDecimals(4);
        grid->addWidget(m_take[p], p + 1, 0);
        grid->addWidget(m_reading[p], p + 1, 1);
        grid->addWidget(new QLabel(QStringLiteral("known value"), twoPoint), p + 1, 2);
        grid->addWidget(m_known[p], p + 1, 3);
        connect(m_take[p], &QPushButton::clicked, this, [this, p] { takePoint(p); });
    }
    grid->addWidget(m_compute, 3, 3);
    grid->addWidget(new QLabel(QStringLiteral("Place the cursor on, or select, a stretch of known value in the view, "
                                              "then take it."),
                               twoPoint),
                    4, 0, 1, 4);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto* column = new QVBoxLayout(this);
    column->addLayout(unitRow);
    column->addWidget(m_table, 1);
    column->addWidget(twoPoint);
    column->addWidget(buttons);

    connect(m_identify, &QPushButton::clicked, this, [this] { identifyUnit(); });
    connect(m_compute, &QPushButton::clicked, this, [this] { computeTwoPoint(); });
    connect(buttons, &QDialogButtonBox::accepted, this, &CalibrationDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CalibrationDialog::reject);
    m_unit->setText(unitStatusText());
    fillFromDocument();
    resize(640, 460);
}

void CalibrationDialog::fillFromDocument() {
    const CKestruneDoc& doc = *m_view->document();
    m_channels.clear();
    m_channel->clear();
    for (int i = 0; i < doc.channelCount(); ++i)
        if (doc.channel(i).present()) m_channels.push_back(i);
    m_table->setGridSize(static_cast<int>(m_channels.size()), 6);
    for (int r = 0; r < static_cast<int>(m_channels.size()); ++r) {
        const CChannel& ch = doc.channel(m_channels[static_cast<std::size_t>(r)]);
        m_table->setRowTitle(r, QString::number(m_channels[static_cast<std::size_t>(r)] + 1));
        m_table->setText(r, kName, QString::fromStdString(ch.m_name));
        m_table->setText(r, kUnits, QString::fromStdString(ch.m_units));
        const double c[] = {ch.m_c3, ch.m_c2, ch.m_c1, ch.m_c0};
        // Full precision: a coefficient of 0.0012 must not read as 0.00.
        for (int k = 0; k < 4; ++k) m_table->setText(r, kC3 + k, QString::number(c[k], 'g', 12));
        m_channel->addItem(QString::fromStdString(ch.m_name), m_channels[static_cast<std::size_t>(r)]);
    }
    m_table->fitColumns();
}

int CalibrationDialog::rowOfChannel(int channel) const {
    for (std::size_t r = 0; r < m_channels.size(); ++r)
        if (m_channels[r] == channel) return static_cast<int>(r);
    return -1;
}

void CalibrationDialog::identifyUnit() {
    takeDriverSetting(&recordPlayConfig());
    int size = -1;
    try {
        size = usb::IdentifyDevice();
    } catch (const UserException&) {
    }
    m_unit->setText(unitStatusText(size));
}

void CalibrationDialog::takePoint(int point) {
    if (!m_view || m_channel->currentIndex() < 0) return;
    const CKestruneDoc& doc = *m_view->document();
    const int channel = m_channel->currentData().toInt();
    if (channel >= doc.channelCount() || !doc.channel(channel).present()) return;
    const CChannel& ch = doc.channel(channel);
    double raw = timebase::valueAtCursor(doc, channel);
    if (m_view->selectionPresent() && ch.m_selEndSample > ch.m_selStartSample) {
        const auto first = static_cast<std::size_t>(std::max(0.0, std::trunc(ch.m_selStartSample)));
        const auto last = std::min(ch.m_samples.size(), static_cast<std::size_t>(std::trunc(ch.m_selEndSample)));
        double sum = 0.0;
        for (std::size_t i = first; i < last; ++i) sum += ch.m_samples[i];
        if (last > first) raw = sum / static_cast<double>(last - first);
    }
    m_taken[point] = converted(ch, raw);
    m_takenChannel[point] = channel;
    m_reading[point]->setText(QStringLiteral("%1 (raw %2)").arg(*m_taken[point], 0, 'g', 6).arg(raw, 0, 'f', 1));
}

void CalibrationDialog::computeTwoPoint() {
    const int channel = m_channel->currentData().toInt();
    if (!m_taken[0] || !m_taken[1] || m_takenChannel[0] != channel || m_takenChannel[1] != channel) {
        showMessage("Take both points on the channel '" + m_channel->currentText().toStdString() + "' first.");
        return;
    }
    const double x1 = *m_taken[0], x2 = *m_taken[1];
    if (x1 == x2) {
        showMessage(std::string("The two points read the same value; take them on stretches of different level."));
        return;
    }
    const double y1 = m_known[0]->value(), y2 = m_known[1]->value();
    const double c1 = (y2 - y1) / (x2 - x1);
    const double c0 = y1 - c1 * x1;
    const int row = rowOfChannel(channel);
    if (row < 0) return;
    m_table->setText(row, kC3, QStringLiteral("0"));
    m_table->setText(row, kC2, QStringLiteral("0"));
    m_table->setText(row, kC1, QString::number(c1, 'g', 12));
    m_table->setText(row, kC0, QString::number(c0, 'g', 12));
    m_table->fitColumns();
}

void CalibrationDialog::accept() {
    if (!m_view) {
        QDialog::reject();
        return;
    }
    m_table->commitEditing();
    CKestruneDoc& doc = *m_view->document();
    // The document may have changed beside the open dialog.
    for (const int channel : m_channels) {
        if (channel >= doc.channelCount() || !doc.channel(channel).present()) {
            showMessage(
                std::string("The document's channels changed while the dialog was open; the dialog shows "
                            "them again."));
            fillFromDocument();
            return;
        }
    }
    struct Values {
        std::string name, units;
        double c[4];
    };
    std::vector<Values> values(m_channels.size());
    for (int r = 0; r < static_cast<int>(m_channels.size()); ++r) {
        Values& v = values[static_cast<std::size_t>(r)];
        v.name = m_table->text(r, kName).trimmed().toStdString();
        v.units = m_table->text(r, kUnits).trimmed().toStdString();
        const std::string row = "channel " + m_table->rowTitle(r).toStdString();
        if (v.name.empty() || v.name.size() > kMaxTextLength || v.units.size() > kMaxTextLength) {
            showMessage("The name of " + row + " must have 1 to 63 characters and its units at most 63.");
            return;
        }
        for (int k = 0; k < 4; ++k) {
            double c = 0.0;
            if (!m_table->number(r, kC3 + k, &c)) {
                bool ok = false;
                c = m_table->text(r, kC3 + k).trimmed().toDouble(&ok);
                if (!ok) c = NAN;
            }
            if (!std::isfinite(c)) {
                showMessage("The calibration coefficients of " + row + " must be numbers.");
                return;
            }
            v.c[k] = c;
        }
    }
    // A copy for Undo first; "No" to going on without one keeps the document as it is.
    auto* edit = m_view->extension<EditController>();
    if (edit && !edit->undo().saveForUndo(doc)) return;
    for (std::size_t r = 0; r < m_channels.size(); ++r) {
        CChannel& ch = doc.channel(m_channels[r]);
        ch.m_name = values[r].name;
        ch.m_units = values[r].units;
        ch.m_c3 = values[r].c[0];
        ch.m_c2 = values[r].c[1];
        ch.m_c1 = values[r].c[2];
        ch.m_c0 = values[r].c[3];
    }
    if (edit) edit->undo().noteEditDone(doc);
    doc.setModified(true);
    m_view->requestRedraw();
    m_view->update();
    m_view->refreshReadouts();
    QDialog::accept();
}

void runCalibrationDialog(CKestruneView& view) {
    if (auto* open = view.findChild<CalibrationDialog*>(QString(), Qt::FindDirectChildrenOnly)) {
        open->raise();
        open->activateWindow();
        return;
    }
    auto* dialog = new CalibrationDialog(view);
    dialog->show();
}
