// File > Export Channel As: the "Data Channel Select" dialog, then the save
// dialog "Save a Data Channel As"; the chosen channel is written whole as a
// WAV file, whatever the selection.
#pragma once

#include <QDialog>

#include "document/CKestruneDoc.h"

class QListWidget;

// Lists the document's channels by name.
class CDataChannelSelectDialog : public QDialog {
    Q_OBJECT
public:
    explicit CDataChannelSelectDialog(const sonmetra::CKestruneDoc& doc, QWidget* parent = nullptr);
    int chosenChannel() const;  // 0-based
    QListWidget* channelList() const { return m_list; }

private:
    QListWidget* m_list;
};

void exportChannelAs(QWidget* parent, sonmetra::CKestruneDoc& doc);
