#include "LabelFileDialogs.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "document/MessageService.h"

using namespace sonmetra;

namespace {

QString channelText(const CKestruneDoc& doc, int i) {
    const std::string& name = doc.channel(i).m_name;
    return name.empty() ? QString("Channel %1").arg(i + 1)
                        : QString("%1 %2").arg(i + 1).arg(QString::fromStdString(name));
}

QString tierText(const LabelTier& tier) {
    int filled = 0;
    for (const TierItem& it : tier.items) filled += it.text.empty() ? 0 : 1;
    const bool intervals = tier.kind == TierKind::Interval;
    return QString("%1 (%2 tier, %3 %4 with text)")
        .arg(QString::fromStdString(tier.name), intervals ? "interval" : "point")
        .arg(filled)
        .arg(intervals ? (filled == 1 ? "interval" : "intervals") : (filled == 1 ? "point" : "points"));
}

QDialogButtonBox* okCancel(QDialog* dialog) {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}

}  // namespace

CImportLabelsDialog::CImportLabelsDialog(const LabelFile& file, const CKestruneDoc& doc, const QString& fileName,
                                         QWidget* parent)
    : QDialog(parent), m_doc(doc) {
    setWindowTitle("Import Labels");
    auto* grid = new QGridLayout;
    grid->addWidget(new QLabel("<b>Tier</b>", this), 0, 0);
    grid->addWidget(new QLabel("<b>Channel</b>", this), 0, 1);
    const int audio = doc.audioChannelIndex();
    for (std::size_t t = 0; t < file.tiers.size(); ++t) {
        const int row = static_cast<int>(t) + 1;
        grid->addWidget(new QLabel(tierText(file.tiers[t]), this), row, 0);
        auto* box = new QComboBox(this);
        box->addItem("Not imported");
        for (int i = 0; i < doc.channelCount(); ++i) box->addItem(channelText(doc, i));
        if (t == 0 && doc.channelCount() > 0) box->setCurrentIndex((audio >= 0 ? audio : 0) + 1);
        grid->addWidget(box, row, 1);
        m_channels.push_back(box);
    }
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QString("Tiers of '%1':").arg(fileName), this));
    layout->addLayout(grid);
    auto* note = new QLabel(
        "The labels of each chosen channel are replaced by its tier's. An interval becomes a label at its "
        "start, and its end an empty label unless another interval starts there.",
        this);
    note->setWordWrap(true);
    layout->addWidget(note);
    layout->addWidget(okCancel(this));
}

std::vector<TierAssignment> CImportLabelsDialog::assignments() const {
    std::vector<TierAssignment> chosen;
    for (std::size_t t = 0; t < m_channels.size(); ++t)
        if (m_channels[t]->currentIndex() > 0) chosen.push_back({t, m_channels[t]->currentIndex() - 1});
    return chosen;
}

void CImportLabelsDialog::accept() {
    const auto chosen = assignments();
    if (chosen.empty()) {
        showMessage("Choose a channel for at least one tier.", MsgButtons::Ok, MsgIcon::Information);
        return;
    }
    for (std::size_t a = 0; a < chosen.size(); ++a)
        for (std::size_t b = a + 1; b < chosen.size(); ++b)
            if (chosen[a].channel == chosen[b].channel) {
                showMessage(
                    "Only one tier can go to channel " + channelText(m_doc, chosen[a].channel).toStdString() + ".",
                    MsgButtons::Ok, MsgIcon::Information);
                return;
            }
    QDialog::accept();
}

CExportLabelsDialog::CExportLabelsDialog(const CKestruneDoc& doc, QWidget* parent) : QDialog(parent) {
    setWindowTitle("Export Labels");
    auto* grid = new QGridLayout;
    grid->addWidget(new QLabel("<b>Channel</b>", this), 0, 0);
    grid->addWidget(new QLabel("<b>Tier name</b>", this), 0, 1);
    grid->addWidget(new QLabel("<b>Kind</b>", this), 0, 2);
    for (const TierExport& t : defaultTierExports(doc)) {
        Row row;
        row.channel = t.channel;
        const auto count = doc.channel(t.channel).m_labels.size();
        row.include = new QCheckBox(
            QString("%1 (%2 label%3)").arg(channelText(doc, t.channel)).arg(count).arg(count == 1 ? "" : "s"), this);
        row.include->setChecked(true);
        row.name = new QLineEdit(QString::fromStdString(t.name), this);
        row.kind = new QComboBox(this);
        row.kind->addItems({"Interval tier", "Point tier"});
        row.kind->setCurrentIndex(t.kind == TierKind::Interval ? 0 : 1);
        const int r = static_cast<int>(m_rows.size()) + 1;
        grid->addWidget(row.include, r, 0);
        grid->addWidget(row.name, r, 1);
        grid->addWidget(row.kind, r, 2);
        m_rows.push_back(row);
    }
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    auto* note = new QLabel(
        "In an interval tier each label with text starts an interval that runs to the next label; empty "
        "labels mark where intervals end. A tab-separated label text holds one channel.",
        this);
    note->setWordWrap(true);
    layout->addWidget(note);
    layout->addWidget(okCancel(this));
}

std::vector<TierExport> CExportLabelsDialog::tiers() const {
    std::vector<TierExport> chosen;
    for (const Row& r : m_rows) {
        if (!r.include->isChecked()) continue;
        chosen.push_back(TierExport{r.channel, r.name->text().toStdString(),
                                    r.kind->currentIndex() == 0 ? TierKind::Interval : TierKind::Point});
    }
    return chosen;
}

void CExportLabelsDialog::accept() {
    if (tiers().empty()) {
        showMessage("Choose at least one channel.", MsgButtons::Ok, MsgIcon::Information);
        return;
    }
    QDialog::accept();
}
