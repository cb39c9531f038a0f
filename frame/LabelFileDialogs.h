// The dialogs of File > Import Labels and Export Labels.
//
// "Import Labels" lists the tiers of the file read, each with the channel
// it goes to ("Not imported", or a channel of the document); the first
// tier goes to the audio channel unless the user chooses otherwise.
// "Export Labels" lists the channels that hold labels, each with a check
// box, the name of its tier and the kind of tier it becomes.
#pragma once

#include <QDialog>
#include <vector>

#include "document/CKestruneDoc.h"
#include "document/labels/LabelTransfer.h"

class QCheckBox;
class QComboBox;
class QLineEdit;

class CImportLabelsDialog : public QDialog {
    Q_OBJECT
public:
    CImportLabelsDialog(const sonmetra::LabelFile& file, const sonmetra::CKestruneDoc& doc, const QString& fileName,
                        QWidget* parent = nullptr);
    // The tiers given a channel, in tier order.
    std::vector<sonmetra::TierAssignment> assignments() const;
    // Item 0 is "Not imported", item i + 1 channel i.
    QComboBox* channelBox(int tier) const { return m_channels.at(static_cast<std::size_t>(tier)); }

    // Refuses, with a message, no tier at all or two tiers for one channel.
    void accept() override;

private:
    const sonmetra::CKestruneDoc& m_doc;
    std::vector<QComboBox*> m_channels;
};

class CExportLabelsDialog : public QDialog {
    Q_OBJECT
public:
    explicit CExportLabelsDialog(const sonmetra::CKestruneDoc& doc, QWidget* parent = nullptr);
    // The checked channels' tiers, in channel order.
    std::vector<sonmetra::TierExport> tiers() const;

    struct Row {
        int channel = 0;
        QCheckBox* include = nullptr;
        QLineEdit* name = nullptr;
        QComboBox* kind = nullptr;  // 0 interval tier, 1 point tier
    };
    const std::vector<Row>& rows() const { return m_rows; }

    // Refuses, with a message, a choice without any channel.
    void accept() override;

private:
    std::vector<Row> m_rows;
};
