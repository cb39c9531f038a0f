#include "ImportDialogs.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <algorithm>
#include <climits>
#include <cmath>

#include "document/readers/ImportDefaults.h"

namespace {

// Shows the normal cursor over a dialog that opens under a wait cursor.
class ArrowCursorScope {
public:
    ArrowCursorScope() { QApplication::setOverrideCursor(Qt::ArrowCursor); }
    ~ArrowCursorScope() { QApplication::restoreOverrideCursor(); }
    ArrowCursorScope(const ArrowCursorScope&) = delete;
    ArrowCursorScope& operator=(const ArrowCursorScope&) = delete;
};

}  // namespace

CChannelSelectDialog::CChannelSelectDialog(int channelCount, QWidget* parent)
    : QDialog(parent), m_list(new QListWidget(this)) {
    setWindowTitle("Select Channel");
    for (int i = 1; i <= channelCount; ++i) m_list->addItem(QString("Channel #%1").arg(i));
    m_list->setCurrentRow(0);
    m_list->setMinimumHeight(m_list->sizeHintForRow(0) * std::min(channelCount, 10) + 2 * m_list->frameWidth());

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_list, &QListWidget::itemDoubleClicked, this, &QDialog::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(
        new QLabel(QString("The file holds %1 channels. Which one do you want to open?").arg(channelCount), this));
    layout->addWidget(m_list);
    layout->addWidget(buttons);
}

int CChannelSelectDialog::chosenChannel() const { return std::max(0, m_list->currentRow()); }

CGenericFileDialog::CGenericFileDialog(const sonmetra::GenericFileSettings& settings, QWidget* parent)
    : QDialog(parent),
      m_header(new QSpinBox(this)),
      m_rate(new QSpinBox(this)),
      m_orderGroup(new QGroupBox("Byte order", this)) {
    // Each pair of choices lives in its own group box, which makes the two
    // pairs exclusive independently of each other.
    auto* sizeGroup = new QGroupBox("Sample size", this);
    m_8bit = new QRadioButton("8 bit", sizeGroup);
    m_16bit = new QRadioButton("16 bit", sizeGroup);
    m_lowFirst = new QRadioButton("Low byte first", m_orderGroup);
    m_highFirst = new QRadioButton("High byte first", m_orderGroup);
    setWindowTitle("Generic File Selection");
    m_header->setRange(0, INT_MAX);
    m_header->setValue(settings.headerBytes);
    // Rates the readers accept: whole hertz up to 1 MHz.
    m_rate->setRange(1, static_cast<int>(sonmetra::kMaxRateHz));
    m_rate->setValue(static_cast<int>(std::lround(settings.rateHz)));
    (settings.bits == 8 ? m_8bit : m_16bit)->setChecked(true);
    (settings.lowByteFirst ? m_lowFirst : m_highFirst)->setChecked(true);

    auto* sizeLayout = new QHBoxLayout(sizeGroup);
    sizeLayout->addWidget(m_8bit);
    sizeLayout->addWidget(m_16bit);
    auto* orderLayout = new QHBoxLayout(m_orderGroup);
    orderLayout->addWidget(m_lowFirst);
    orderLayout->addWidget(m_highFirst);
    // The byte order means nothing for one-byte samples.
    m_orderGroup->setEnabled(m_16bit->isChecked());
    connect(m_16bit, &QRadioButton::toggled, m_orderGroup, &QWidget::setEnabled);

    auto* form = new QFormLayout;
    form->addRow("Header size (bytes):", m_header);
    form->addRow("Sample rate (Hz):", m_rate);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* yes = buttons->addButton("Yes", QDialogButtonBox::AcceptRole);
    buttons->addButton("Cancel", QDialogButtonBox::RejectRole);
    yes->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(sizeGroup);
    layout->addWidget(m_orderGroup);
    layout->addWidget(buttons);
}

sonmetra::GenericFileSettings CGenericFileDialog::settings() const {
    sonmetra::GenericFileSettings s;
    s.headerBytes = m_header->value();
    s.rateHz = m_rate->value();
    s.bits = m_8bit->isChecked() ? 8 : 16;
    s.lowByteFirst = m_lowFirst->isChecked();
    return s;
}

int CImportDialogs::chooseChannel(int channelCount) {
    ArrowCursorScope arrow;
    CChannelSelectDialog dialog(channelCount, m_parent);
    return dialog.exec() == QDialog::Accepted ? dialog.chosenChannel() : -1;
}

bool CImportDialogs::genericFileSelection(sonmetra::GenericFileSettings& settings) {
    ArrowCursorScope arrow;
    CGenericFileDialog dialog(settings, m_parent);
    if (dialog.exec() != QDialog::Accepted) return false;
    settings = dialog.settings();
    return true;
}
