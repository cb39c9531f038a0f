#include "DisplayOptionDialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QRadioButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "DisplayConfig.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "view/CKestruneView.h"

namespace {

const int kBitChoices[] = {8, 12, 16};

QDoubleSpinBox* sizeField(double value, QWidget* parent) {
    auto* f = new QDoubleSpinBox(parent);
    f->setRange(0.1, 1000.0);
    f->setDecimals(2);
    f->setValue(value);
    return f;
}

}  // namespace

DisplayOptionDialog::DisplayOptionDialog(const sonmetra::CKestruneDoc& doc, const sonmetra::AppConfig& config,
                                         QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(QStringLiteral("Display Option"));
    auto* column = new QVBoxLayout(this);

    // Per-channel settings.
    m_grid = new QTableWidget(this);
    m_grid->setColumnCount(4);
    m_grid->setHorizontalHeaderLabels({"Channel", "Bits", "Zero line", "Reference"});
    m_grid->verticalHeader()->setVisible(false);
    for (int i = 0; i < doc.channelCount(); ++i) {
        const auto& ch = doc.channel(i);
        if (!ch.present()) continue;
        const int row = m_grid->rowCount();
        m_grid->insertRow(row);
        m_rowChannel.push_back(i);
        auto* name = new QTableWidgetItem(QString::fromStdString(ch.m_name));
        name->setFlags(name->flags() & ~Qt::ItemIsEditable);
        m_grid->setItem(row, kChannel, name);
        auto* bits = new QComboBox(m_grid);
        for (int b : kBitChoices) bits->addItem(QString::number(b), b);
        bits->setCurrentIndex(std::max(0, bits->findData(ch.m_bitsPerSample)));
        m_grid->setCellWidget(row, kBits, bits);
        auto* zero = new QComboBox(m_grid);
        zero->addItem(QStringLiteral("Bottom"), -1);
        zero->addItem(QStringLiteral("Middle"), 0);
        zero->addItem(QStringLiteral("Top"), 1);
        zero->setCurrentIndex(std::max(0, zero->findData(ch.m_referenceCode)));
        m_grid->setCellWidget(row, kZeroLine, zero);
        auto* reference = new QDoubleSpinBox(m_grid);
        reference->setRange(-65536.0, 65536.0);
        reference->setDecimals(2);
        reference->setValue(ch.m_reference);
        m_grid->setCellWidget(row, kReference, reference);
    }
    m_grid->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    column->addWidget(m_grid);

    // Print and bitmap size.
    auto* sizeBox = new QGroupBox(QStringLiteral("Print and bitmap size"), this);
    auto* sizeGrid = new QGridLayout(sizeBox);
    m_width = sizeField(config.m_print.width, sizeBox);
    m_height = sizeField(config.m_print.height, sizeBox);
    m_inches = new QRadioButton(QStringLiteral("Inches"), sizeBox);
    m_cm = new QRadioButton(QStringLiteral("cm"), sizeBox);
    auto* units = new QButtonGroup(sizeBox);  // choosing one clears the other
    units->addButton(m_inches);
    units->addButton(m_cm);
    (config.m_print.inches != 0 ? m_inches : m_cm)->setChecked(true);
    sizeGrid->addWidget(new QLabel(QStringLiteral("width  = "), sizeBox), 0, 0);
    sizeGrid->addWidget(m_width, 0, 1);
    sizeGrid->addWidget(m_inches, 0, 2);
    sizeGrid->addWidget(new QLabel(QStringLiteral("heigth = "), sizeBox), 1, 0);
    sizeGrid->addWidget(m_height, 1, 1);
    sizeGrid->addWidget(m_cm, 1, 2);
    m_color = new QRadioButton(QStringLiteral("Color"), sizeBox);
    m_blackWhite = new QRadioButton(QStringLiteral("Black White"), sizeBox);
    auto* colours = new QButtonGroup(sizeBox);
    colours->addButton(m_color);
    colours->addButton(m_blackWhite);
    (config.m_print.color != 0 ? m_color : m_blackWhite)->setChecked(true);
    sizeGrid->addWidget(m_color, 0, 3);
    sizeGrid->addWidget(m_blackWhite, 1, 3);
    column->addWidget(sizeBox);

    m_trackMouse = new QCheckBox(QStringLiteral("Track mouse for all windows"), this);
    m_trackMouse->setChecked(config.m_trackMouse != 0);
    column->addWidget(m_trackMouse);

    auto* gridRow = new QHBoxLayout;
    m_gridOn = new QCheckBox(QStringLiteral("Add Time grid with spacing (ms) = "), this);
    m_gridStep = new QDoubleSpinBox(this);
    m_gridStep->setRange(0.0, 1.0e7);
    m_gridStep->setDecimals(2);
    m_gridStep->setValue(doc.m_timeGridStepMs > 0.0 ? doc.m_timeGridStepMs : config.m_timeGridStepMs);
    m_gridOn->setChecked(config.m_timeGridOn != 0);
    m_gridStep->setEnabled(m_gridOn->isChecked());
    connect(m_gridOn, &QCheckBox::toggled, m_gridStep, &QWidget::setEnabled);
    gridRow->addWidget(m_gridOn);
    gridRow->addWidget(m_gridStep);
    column->addLayout(gridRow);
    column->addWidget(new QLabel(QStringLiteral("Note:\nA value of 0 will make the time grids adjust automatically to "
                                                "the zoomed window.\nGrid is always displayed on the main screen but "
                                                "follows the selection for the print and bitmap."),
                                 this));

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);
    resize(560, 480);
}

void DisplayOptionDialog::apply(sonmetra::CKestruneDoc& doc, sonmetra::AppConfig& config) const {
    for (int row = 0; row < static_cast<int>(m_rowChannel.size()); ++row) {
        const int index = m_rowChannel[static_cast<std::size_t>(row)];
        if (index >= doc.channelCount()) continue;
        auto& ch = doc.channel(index);
        ch.m_bitsPerSample = static_cast<QComboBox*>(m_grid->cellWidget(row, kBits))->currentData().toInt();
        ch.m_referenceCode = static_cast<QComboBox*>(m_grid->cellWidget(row, kZeroLine))->currentData().toInt();
        ch.m_reference = static_cast<QDoubleSpinBox*>(m_grid->cellWidget(row, kReference))->value();
    }
    config.m_print.width = m_width->value();
    config.m_print.height = m_height->value();
    config.m_print.inches = m_inches->isChecked() ? 1 : 0;
    config.m_print.color = m_color->isChecked() ? 1 : 0;
    config.m_trackMouse = m_trackMouse->isChecked() ? 1 : 0;
    config.m_timeGridOn = m_gridOn->isChecked() ? 1 : 0;
    config.m_timeGridStepMs = m_gridStep->value();
    // Unchecked, the screen keeps an automatic grid and printouts have none.
    doc.m_timeGridStepMs = m_gridOn->isChecked() ? m_gridStep->value() : 0.0;
}

void runDisplayOptions(CKestruneView& view) {
    DisplayOptionDialog dialog(*view.document(), displayConfig(), &view);
    if (dialog.exec() != QDialog::Accepted) return;
    dialog.apply(*view.document(), displayConfig());
    writeDisplayConfig();
    view.refreshReadouts();
    view.requestRedraw();
}
