#include "CFormLabelView.h"

#include <QVBoxLayout>

#include "document/CKestruneDoc.h"
#include "document/MessageService.h"
#include "log/CDatatbl5.h"
#include "res/StringTable.h"

namespace {
const char* justificationText(int j) {
    switch (j) {
        case 1:
            return "Center";
        case 2:
            return "Right";
        default:
            return "Left";
    }
}
}  // namespace

CFormLabelView::CFormLabelView(sonmetra::CKestruneDoc* doc, QWidget* parent)
    : QWidget(parent), m_doc(doc), m_grid(new CDatatbl5(this)) {
    m_grid->setReadOnly(true);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(m_grid);
    refresh();
}

void CFormLabelView::detachDocument() {
    m_doc = nullptr;
    m_grid->setRowCount(0);
}

void CFormLabelView::refresh() {
    int rows = 0;
    if (m_doc) {
        for (int ch = 0; ch < m_doc->channelCount(); ++ch) rows += static_cast<int>(m_doc->channel(ch).m_labels.size());
    }
    m_grid->clear();
    if (!m_grid->setGridSize(rows, 5)) {
        sonmetra::showMessage(sonmetra::IDS_DATA_TABLE_ERROR);
        return;
    }
    const char* titles[] = {"Channel", "Time (ms)", "Text", "Justification", "Line"};
    for (int c = 0; c < 5; ++c) m_grid->setColumnTitle(c, titles[c]);
    int row = 0;
    for (int ch = 0; m_doc && ch < m_doc->channelCount(); ++ch) {
        const auto& channel = m_doc->channel(ch);
        for (const auto& l : channel.m_labels) {
            m_grid->setRowTitle(row, QString::number(row + 1));
            m_grid->setText(row, 0, QString::fromStdString(channel.m_name));
            m_grid->setNumber(row, 1, l.timeMs);
            // Lines of a several-line text are shown side by side.
            m_grid->setText(row, 2, QString::fromUtf8(l.text.c_str()).replace('\n', " / "));
            m_grid->setText(row, 3, justificationText(l.justification));
            m_grid->setCheck(row, 4, l.lineFlag());
            ++row;
        }
    }
    m_grid->fitColumns();
}
