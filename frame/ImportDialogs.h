// The two questions of File > Open for foreign files: the channel selection
// dialog (which channel of a multi-channel WAV or AIFF file to take) and the
// "Generic File Selection" dialog (how to read a file no reader recognised).
#pragma once

#include <QDialog>

#include "document/FileReader.h"

class QListWidget;
class QRadioButton;
class QSpinBox;
class QGroupBox;

// Lists "Channel #1" … "Channel #N" for the N channels of the file.
class CChannelSelectDialog : public QDialog {
    Q_OBJECT
public:
    explicit CChannelSelectDialog(int channelCount, QWidget* parent = nullptr);
    // 0-based channel of the selected row (the first when none is selected).
    int chosenChannel() const;
    QListWidget* channelList() const { return m_list; }

private:
    QListWidget* m_list;
};

// Header size, sample rate, "8 bit"/"16 bit", "Low byte first"/"High byte
// first", answered with "Yes" or "Cancel".
class CGenericFileDialog : public QDialog {
    Q_OBJECT
public:
    explicit CGenericFileDialog(const sonmetra::GenericFileSettings& settings, QWidget* parent = nullptr);
    sonmetra::GenericFileSettings settings() const;

    QSpinBox* headerBox() const { return m_header; }
    QSpinBox* rateBox() const { return m_rate; }
    QRadioButton* button8Bit() const { return m_8bit; }
    QRadioButton* button16Bit() const { return m_16bit; }
    QRadioButton* buttonLowFirst() const { return m_lowFirst; }
    QRadioButton* buttonHighFirst() const { return m_highFirst; }

private:
    QSpinBox* m_header;
    QSpinBox* m_rate;
    QRadioButton* m_8bit;
    QRadioButton* m_16bit;
    QRadioButton* m_lowFirst;
    QRadioButton* m_highFirst;
    QGroupBox* m_orderGroup;
};

// The answers of the workstation: the two dialogs above, shown modally over
// parent with an arrow cursor even while File > Open shows its wait cursor.
class CImportDialogs : public sonmetra::IImportDialogs {
public:
    explicit CImportDialogs(QWidget* parent = nullptr) : m_parent(parent) {}
    int chooseChannel(int channelCount) override;
    bool genericFileSelection(sonmetra::GenericFileSettings& settings) override;

private:
    QWidget* m_parent;
};
