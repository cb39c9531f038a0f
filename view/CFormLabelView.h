// The label list of a document: one grid row per label, every channel in
// order, with the channel's name, the label's time, its text and settings.
#pragma once

#include <QWidget>

namespace sonmetra {
class CKestruneDoc;
}
class CDatatbl5;

class CFormLabelView : public QWidget {
    Q_OBJECT
public:
    explicit CFormLabelView(sonmetra::CKestruneDoc* doc, QWidget* parent = nullptr);

    // Rebuilds the grid from the document's labels; shows "Error in setting
    // up the data table" when the grid cannot be had.
    void refresh();
    // The document is going away: the list empties and stays so.
    void detachDocument();
    CDatatbl5* grid() const { return m_grid; }

private:
    sonmetra::CKestruneDoc* m_doc;
    CDatatbl5* m_grid;
};
