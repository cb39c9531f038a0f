#include "ExportChannel.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "view/FileDialogs.h"
#include "document/readers/ChannelExport.h"

CDataChannelSelectDialog::CDataChannelSelectDialog(const sonmetra::CKestruneDoc& doc, QWidget* parent)
    : QDialog(parent), m_list(new QListWidget(this)) {
    setWindowTitle("Data Channel Select");
    for (int i = 0; i < doc.channelCount(); ++i) {
        const std::string& name = doc.channel(i).m_name;
        // A channel without a name is still offered, by its number.
        m_list->addItem(name.empty() ? QString("Channel %1").arg(i + 1) : QString::fromStdString(name));
    }
    m_list->setCurrentRow(0);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_list, &QListWidget::itemDoubleClicked, this, &QDialog::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel("Channel to write as a WAV file:", this));
    layout->addWidget(m_list);
    layout->addWidget(buttons);
}

int CDataChannelSelectDialog::chosenChannel() const { return std::max(0, m_list->currentRow()); }

void exportChannelAs(QWidget* parent, sonmetra::CKestruneDoc& doc) {
    if (doc.channelCount() <= 0) return;
    CDataChannelSelectDialog select(doc, parent);
    if (select.exec() != QDialog::Accepted) return;
    const int channel = select.chosenChannel();

    FileDialogRequest request;
    request.save = true;
    request.title = "Save a Data Channel As";
    request.defaultName = "Channel of " + QString::fromStdString(doc.title());
    request.defaultSuffix = "wav";
    request.filters = {"Wave files (*.wav)"};
    const auto answer = fileDialogs().ask(parent, request);
    if (!answer) return;

    // The whole channel, even while a selection exists; a failure is shown there.
    sonmetra::exportChannelWav(doc.channel(channel), answer->path.toStdString());
}
