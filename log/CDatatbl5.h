// The data grid of the forms (log, label list, option tables): a
// QTableWidget with row titles in the vertical header, column titles in the
// horizontal header, and three kinds of cell besides plain text: check
// boxes, whole numbers, and numbers shown with two decimals (the grid
// format "#####################.##"). A number cell keeps its full value;
// only its display is rounded.
#pragma once

#include <QTableWidget>

class CDatatbl5 : public QTableWidget {
    Q_OBJECT
public:
    explicit CDatatbl5(QWidget* parent = nullptr);

    // Sets the grid's size; false when the cells cannot be had (the caller
    // shows "Error in setting up the data table").
    bool setGridSize(int rows, int columns);

    void setRowTitle(int row, const QString& title);
    QString rowTitle(int row) const;
    void setColumnTitle(int column, const QString& title);
    QString columnTitle(int column) const;

    void setText(int row, int column, const QString& text);
    QString text(int row, int column) const;
    void setNumber(int row, int column, double value);  // shown with two decimals
    void setWholeNumber(int row, int column, qlonglong value);
    void setCheck(int row, int column, bool checked);
    bool isChecked(int row, int column) const;
    // True when the cell holds a number of either kind; value receives it.
    bool number(int row, int column, double* value = nullptr) const;
    bool isEmptyCell(int row, int column) const;
    void clearCell(int row, int column);
    // The text a cell shows (numbers with their two decimals).
    QString displayText(int row, int column) const;

    // A cell editor is open ("editing is in progress").
    bool editingInProgress() const { return state() == QAbstractItemView::EditingState; }
    // Closes an open editor, keeping what was typed.
    void commitEditing();

    void setReadOnly(bool on);
    // Column widths to fit their contents, within sensible limits.
    void fitColumns();
};
