#include "CFormRecordPlay.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "RecordPlayConfig.h"
#include "UsbUnitSetup.h"
#include "document/AppConfig.h"
#include "document/MessageService.h"
#include "document/UserException.h"
#include "io/usb/UsbProtocol.h"
#include "log/CDatatbl5.h"

using namespace sonmetra;

namespace {

// The form whose window exists; there is at most one.
CFormRecordPlay* g_openForm = nullptr;

constexpr int kLineSource = 0;
constexpr int kComputerSource = 1;
constexpr int kExternalSource = 2;
const char* const kDeviceNames[2] = {usb::kRvmName, usb::kEzusbName};

QSpinBox* rateBox(QWidget* parent) {
    auto* box = new QSpinBox(parent);
    box->setRange(1000, 200000);
    box->setSuffix(QStringLiteral(" Hz"));
    return box;
}

// A whole number cell within [lo, hi]; nullopt when it holds anything else.
std::optional<int> wholeCell(const CDatatbl5& table, int row, int column, int lo, int hi) {
    double v = 0.0;
    if (!table.number(row, column, &v)) {
        bool ok = false;
        v = table.text(row, column).trimmed().toDouble(&ok);
        if (!ok) return std::nullopt;
    }
    if (v != std::trunc(v) || v < lo || v > hi) return std::nullopt;
    return static_cast<int>(v);
}

}  // namespace

CFormRecordPlay::CFormRecordPlay(QWidget* parent)
    : QWidget(parent),
      m_source(new QComboBox(this)),
      m_inputLine(new QComboBox(this)),
      m_recordTime(new QSpinBox(this)),
      m_computerRate(rateBox(this)),
      m_lineRate(rateBox(this)),
      m_externalRate(rateBox(this)),
      m_multiplex(new QComboBox(this)),
      m_unit(new QComboBox(this)),
      m_device(new QComboBox(this)),
      m_usbIds{new QLineEdit(this), new QLineEdit(this)},
      m_status(new QLabel(this)),
      m_identify(new QPushButton(QStringLiteral("Identify"), this)),
      m_apply(new QPushButton(QStringLiteral("Apply"), this)),
      m_table(new CDatatbl5(this)) {
    g_openForm = this;
    m_source->addItems({QStringLiteral("Line"), QStringLiteral("Computer"), QStringLiteral("External Hardware")});
    m_inputLine->addItems({QStringLiteral("Mic"), QStringLiteral("Line")});
    m_recordTime->setRange(1, 24 * 3600 * 1000);
    m_recordTime->setSuffix(QStringLiteral(" ms"));
    m_multiplex->addItems({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")});
    m_unit->addItem(QStringLiteral("USB unit"), 0);
    for (const int n : {5, 9, 13, 16}) m_unit->addItem(QStringLiteral("Simulated unit, %1 channels").arg(n), n);
    m_device->addItems({kDeviceNames[0], kDeviceNames[1]});
    for (QLineEdit* id : m_usbIds) id->setPlaceholderText(QStringLiteral("vendor:product, e.g. 1209:0001"));
    m_status->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* input = new QGroupBox(QStringLiteral("Recording"), this);
    auto* inputForm = new QFormLayout(input);
    inputForm->addRow(QStringLiteral("Input source"), m_source);
    inputForm->addRow(QStringLiteral("Input line of the unit"), m_inputLine);
    inputForm->addRow(QStringLiteral("Recording time"), m_recordTime);
    inputForm->addRow(QStringLiteral("Sample rate, Computer"), m_computerRate);
    inputForm->addRow(QStringLiteral("Sample rate, Line"), m_lineRate);
    inputForm->addRow(QStringLiteral("Sample rate, External Hardware"), m_externalRate);

    auto* unit = new QGroupBox(QStringLiteral("External unit"), this);
    auto* unitForm = new QFormLayout(unit);
    // What is in use is said first and in full, the simulated unit included.
    QFont bold = m_status->font();
    bold.setBold(true);
    m_status->setFont(bold);
    m_status->setWordWrap(true);
    unitForm->addRow(m_status);
    unitForm->addRow(QStringLiteral("Unit"), m_unit);
    unitForm->addRow(QStringLiteral("Device name"), m_device);
    unitForm->addRow(QStringLiteral("USB id of Rvm-0"), m_usbIds[0]);
    unitForm->addRow(QStringLiteral("USB id of Ezusb-0"), m_usbIds[1]);
    unitForm->addRow(QStringLiteral("Multiplex type"), m_multiplex);
    auto* identifyRow = new QHBoxLayout;
    identifyRow->addStretch(1);
    identifyRow->addWidget(m_identify);
    unitForm->addRow(identifyRow);

    m_table->setGridSize(kRows, 4);
    m_table->setColumnTitle(kSelected, QStringLiteral("Selected"));
    m_table->setColumnTitle(kRate, QStringLiteral("Sample rate (Hz)"));
    m_table->setColumnTitle(kBandwidth, QStringLiteral("Bandwidth (Hz)"));
    m_table->setColumnTitle(kGain, QStringLiteral("Gain"));
    for (int r = 0; r < kRows; ++r)
        m_table->setRowTitle(r, r == 0 ? QStringLiteral("Audio") : QStringLiteral("ch%1").arg(r));
    m_table->setReadOnly(false);
    m_table->horizontalHeader()->setStretchLastSection(true);

    auto* top = new QHBoxLayout;
    top->addWidget(input);
    top->addWidget(unit);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_apply);
    auto* column = new QVBoxLayout(this);
    column->addLayout(top);
    column->addWidget(new QLabel(QStringLiteral("Channels of the unit"), this));
    column->addWidget(m_table, 1);
    column->addLayout(buttons);

    connect(m_source, &QComboBox::currentIndexChanged, this, [this] { updateEnabling(); });
    // The audio row shows the unit's audio rate.
    connect(m_externalRate, &QSpinBox::valueChanged, this, [this](int rate) {
        if (QTableWidgetItem* item = m_table->item(0, kRate)) item->setData(Qt::EditRole, qlonglong{rate});
    });
    connect(m_identify, &QPushButton::clicked, this, [this] { identifyUnit(); });
    connect(m_apply, &QPushButton::clicked, this, [this] {
        try {
            takeSettings();
            saveSettings();
        } catch (const UserException&) {
        }
    });
    loadSettings();
    identifyUnit();
}

CFormRecordPlay::~CFormRecordPlay() {
    if (g_openForm == this) g_openForm = nullptr;
}

CFormRecordPlay* CFormRecordPlay::openForm() { return g_openForm; }

bool CFormRecordPlay::takeOpenFormSettings() {
    if (g_openForm == nullptr) return true;
    try {
        g_openForm->takeSettings();
        return true;
    } catch (const UserException&) {
        return false;
    }
}

void CFormRecordPlay::loadSettings() {
    const AppConfig& config = recordPlayConfig();
    const bool external = config.m_source == "External Hardware";
    m_source->setCurrentIndex(external                       ? kExternalSource
                              : config.m_inputLine == "Line" ? kLineSource
                                                             : kComputerSource);
    m_inputLine->setCurrentIndex(config.m_inputLine == "Line" ? 1 : 0);
    m_recordTime->setValue(config.m_recordTimeMs);
    m_computerRate->setValue(static_cast<int>(config.audioRateHz()));
    m_lineRate->setValue(config.m_lineRateHz);
    m_externalRate->setValue(config.m_externalRateHz);
    m_multiplex->setCurrentIndex(std::clamp(config.m_multiplexType, 1, 3) - 1);
    m_device->setCurrentIndex(config.m_driverSetting != 0 ? 1 : 0);

    const usb::UsbUnitSettings& unit = usbUnitSettingsInForce();
    m_unit->setCurrentIndex(std::max(0, m_unit->findData(unit.simulatedChannels)));
    for (int d = 0; d < 2; ++d) {
        const auto it = unit.ids.find(kDeviceNames[d]);
        m_usbIds[d]->setText(it != unit.ids.end() ? QString::fromStdString(usb::formatUsbId(it->second)) : QString());
    }

    for (int r = 0; r < kRows; ++r) {
        const ChannelRow& row = config.m_rows[static_cast<std::size_t>(r)];
        m_table->setCheck(r, kSelected, r == 0 || row.selected());
        m_table->setWholeNumber(r, kRate, r == 0 ? config.m_externalRateHz : row.rateHz);
        m_table->setWholeNumber(r, kBandwidth, row.bandwidthHz);
        m_table->setWholeNumber(r, kGain, row.gain);
    }
    // The audio channel is always recorded, at the unit's audio rate above.
    for (const int c : {kSelected, kRate})
        if (QTableWidgetItem* item = m_table->item(0, c)) item->setFlags(item->flags() & ~Qt::ItemIsEnabled);
    m_table->fitColumns();
    updateEnabling();
    showUnitStatus();
}

void CFormRecordPlay::refuse(const QString& text, QWidget* focus) {
    if (focus) focus->setFocus();
    showMessage(text.toStdString());
    throw UserException();
}

void CFormRecordPlay::takeSettings() {
    m_table->commitEditing();
    // Everything is checked before anything is taken.
    std::array<ChannelRow, kRows> rows{};
    for (int r = 0; r < kRows; ++r) {
        const QString name = m_table->rowTitle(r);
        const auto rate = wholeCell(*m_table, r, kRate, 0, r == 0 ? 200000 : 45000);
        const auto bandwidth = wholeCell(*m_table, r, kBandwidth, 0, 8000);
        const auto gain = wholeCell(*m_table, r, kGain, 0, 350);
        if (r > 0 && (!rate || (*rate != 0 && *rate < 1000)))
            refuse(QStringLiteral("The sample rate of %1 must be 0 (the rate the multiplex row gives) or a whole "
                                  "number of Hz from 1000 to 45000.")
                       .arg(name),
                   m_table);
        if (!bandwidth)
            refuse(QStringLiteral("The bandwidth of %1 must be a whole number of Hz from 0 to 8000.").arg(name),
                   m_table);
        if (!gain) refuse(QStringLiteral("The gain of %1 must be a whole number from 0 to 350.").arg(name), m_table);
        ChannelRow& row = rows[static_cast<std::size_t>(r)];
        row.rateHz = r == 0 ? recordPlayConfig().m_rows[0].rateHz : *rate;
        row.bandwidthHz = *bandwidth;
        row.gain = *gain;
        row.word = (recordPlayConfig().m_rows[static_cast<std::size_t>(r)].word & ~ChannelRow::kSelected) |
                   (r > 0 && m_table->isChecked(r, kSelected) ? ChannelRow::kSelected : 0);
    }
    usb::UsbUnitSettings unit = usbUnitSettingsInForce();
    for (int d = 0; d < 2; ++d) {
        usb::UsbId id;
        const QString text = m_usbIds[d]->text().trimmed();
        if (!usb::parseUsbId(text.toStdString(), id))
            refuse(QStringLiteral("The USB id of %1 must be four hexadecimal digits of the vendor, a colon and four "
                                  "of the product, e.g. 1209:0001; '%2' is not.")
                       .arg(kDeviceNames[d], text),
                   m_usbIds[d]);
        unit.ids[kDeviceNames[d]] = id;
    }
    unit.simulatedChannels = m_unit->currentData().toInt();

    AppConfig& config = recordPlayConfig();
    const int source = m_source->currentIndex();
    config.m_source = source == kExternalSource ? "External Hardware" : "Computer";
    config.m_inputLine = source == kLineSource              ? "Line"
                         : source == kComputerSource        ? "Mic"
                         : m_inputLine->currentIndex() == 1 ? "Line"
                                                            : "Mic";
    config.m_recordTimeMs = m_recordTime->value();
    if (m_computerRate->value() != static_cast<int>(config.audioRateHz()))
        config.takeAudioRate(m_computerRate->value());
    config.m_lineRateHz = m_lineRate->value();
    config.m_externalRateHz = m_externalRate->value();
    config.m_multiplexType = m_multiplex->currentIndex() + 1;
    config.m_driverSetting = m_device->currentIndex();
    for (std::size_t r = 0; r < rows.size(); ++r) config.m_rows[r] = rows[r];

    const bool unitChanged = unit.simulatedChannels != usbUnitSettingsInForce().simulatedChannels ||
                             unit.ids != usbUnitSettingsInForce().ids;
    if (unitChanged) {
        saveUsbUnitSettings(unit);
        applyUsbUnitSettings(unit);
        m_identified = 0;
    }
    if (config.m_driverSetting != usb::driverSetting()) m_identified = 0;
    takeDriverSetting(&config);
    showUnitStatus();
}

void CFormRecordPlay::saveSettings() { writeRecordPlayConfig(); }

void CFormRecordPlay::identifyUnit() {
    try {
        takeSettings();
        m_identified = usb::IdentifyDevice();
    } catch (const UserException&) {
        m_identified = -1;
    }
    showUnitStatus();
}

void CFormRecordPlay::updateEnabling() { m_inputLine->setEnabled(m_source->currentIndex() == kExternalSource); }

void CFormRecordPlay::showUnitStatus() { m_status->setText(unitStatusText(m_identified)); }
