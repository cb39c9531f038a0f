#include "IntensitySmoothDialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "DisplayConfig.h"
#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "log/CDatatbl5.h"
#include "res/StringTable.h"
#include "view/CKestruneView.h"

using namespace sonmetra;

namespace {

const char kGettingDataError[] = "Error in getting data from table";
const char kEditingInProgress[] =
    "Editing is in progress in the table.\nPlease click anywhere in the table cells or in the same cell and press "
    "return to complete the editing.";

// A whole-number cell: the setting with its fraction cut off.
qlonglong cut(double value) { return static_cast<qlonglong>(std::trunc(value)); }

QString rowName(int row) { return row == 0 ? QStringLiteral("Audio") : QString::asprintf("%d", row + 1); }

}  // namespace

IntensitySmoothDialog::IntensitySmoothDialog(const CKestruneDoc& doc, const AppConfig& config, QWidget* parent)
    : QDialog(parent), m_grid(new CDatatbl5(this)) {
    setWindowTitle(QStringLiteral("Intensity/Smooth Options"));
    const int rows = std::min(doc.channelCount(), static_cast<int>(config.m_channelSettings.size()));
    if (!m_grid->setGridSize(rows, kColumns)) {
        showMessage(IDS_DATA_TABLE_ERROR);
        return;
    }
    const char* titles[kColumns] = {"Channel",   "Window (ms)", "Step (ms)",
                                    "Normalise", "Smoothing",   "Length (samples)"};
    for (int c = 0; c < kColumns; ++c) m_grid->setColumnTitle(c, QString::fromLatin1(titles[c]));
    for (int r = 0; r < rows; ++r) {
        const ChannelAnalysisSettings& s = config.m_channelSettings[static_cast<std::size_t>(r)];
        m_grid->setRowTitle(r, rowName(r));
        m_grid->setText(r, kName, QString::fromStdString(doc.channel(r).m_name));
        m_grid->item(r, kName)->setFlags(m_grid->item(r, kName)->flags() & ~Qt::ItemIsEditable);
        m_grid->setWholeNumber(r, kWindow, cut(s.intensityWindowMs));
        m_grid->setWholeNumber(r, kStep, cut(s.intensityStepMs));
        m_grid->setCheck(r, kNormalise, s.normalise != 0);
        m_grid->setCheck(r, kSmoothing, s.smoothingOn != 0);
        m_grid->setWholeNumber(r, kLength, cut(s.smoothingLength));
    }
    m_grid->setReadOnly(false);
    m_grid->fitColumns();
    m_grid->horizontalHeader()->setStretchLastSection(true);

    auto* note = new QLabel(QStringLiteral("The intensity contour averages the power over the window, one window "
                                           "every step; smoothing replaces each sample by the mean of it and the "
                                           "following samples, over the length."),
                            this);
    note->setWordWrap(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &IntensitySmoothDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &IntensitySmoothDialog::reject);
    auto* column = new QVBoxLayout(this);
    column->addWidget(m_grid, 1);
    column->addWidget(note);
    column->addWidget(buttons);
    resize(620, std::min(560, 150 + 30 * rows));
    m_ready = true;
}

bool IntensitySmoothDialog::editingRefused() {
    if (!m_grid->editingInProgress()) return false;
    showMessage(kEditingInProgress);
    return true;
}

bool IntensitySmoothDialog::readGrid() {
    std::vector<ChannelAnalysisSettings> read;
    for (int r = 0; r < m_grid->rowCount(); ++r) {
        ChannelAnalysisSettings s;
        if (!m_grid->number(r, kWindow, &s.intensityWindowMs) || !m_grid->number(r, kStep, &s.intensityStepMs) ||
            !m_grid->number(r, kLength, &s.smoothingLength)) {
            showMessage(kGettingDataError);
            return false;
        }
        s.normalise = m_grid->isChecked(r, kNormalise) ? 1 : 0;
        s.smoothingOn = m_grid->isChecked(r, kSmoothing) ? 1 : 0;
        // Values the commands cannot use are refused here, where they can
        // still be corrected, rather than failing later.
        const std::string row = rowName(r).toStdString();
        if (!(s.intensityWindowMs >= 1.0 && s.intensityWindowMs <= kMaxWindowMs) ||
            !(s.intensityStepMs >= 1.0 && s.intensityStepMs <= kMaxWindowMs)) {
            showMessage("The intensity window and step of channel " + row +
                        " must be whole numbers of ms from 1 to 1000000.");
            return false;
        }
        if (!(s.smoothingLength >= 1.0 && s.smoothingLength <= kMaxSmoothingLength)) {
            showMessage("The smoothing length of channel " + row +
                        " must be a whole number of samples from 1 to 10000000.");
            return false;
        }
        read.push_back(s);
    }
    m_settings = std::move(read);
    return true;
}

void IntensitySmoothDialog::accept() {
    if (editingRefused() || !readGrid()) return;
    QDialog::accept();
}

void IntensitySmoothDialog::reject() {
    if (editingRefused()) return;
    QDialog::reject();
}

void takeChannelSettings(const AppConfig& config, CKestruneDoc& doc) {
    const int count = std::min(doc.channelCount(), static_cast<int>(config.m_channelSettings.size()));
    for (int i = 0; i < count; ++i) {
        const ChannelAnalysisSettings& s = config.m_channelSettings[static_cast<std::size_t>(i)];
        CChannel& ch = doc.channel(i);
        ch.m_intensityWindowMs = s.intensityWindowMs;
        ch.m_intensityStepMs = s.intensityStepMs;
        ch.m_normalise = s.normalise;
        ch.m_smoothingOn = s.smoothingOn;
        ch.m_smoothingLength = s.smoothingLength;
    }
}

void runIntensitySmoothOptions(CKestruneView& view) {
    CKestruneDoc& doc = *view.document();
    AppConfig& config = displayConfig();
    IntensitySmoothDialog dialog(doc, config, &view);
    if (!dialog.ready() || dialog.exec() != QDialog::Accepted) return;
    const auto& settings = dialog.settings();
    for (std::size_t i = 0; i < settings.size(); ++i) config.m_channelSettings[i] = settings[i];
    takeChannelSettings(config, doc);
    writeDisplayConfig();
}
