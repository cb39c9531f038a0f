#include "CDatatbl5.h"

#include <QDoubleSpinBox>
#include <QHeaderView>
#include <QSpinBox>
#include <QStyledItemDelegate>
#include <algorithm>
#include <limits>
#include <new>

namespace {

// Shows doubles with two decimals and edits them with two decimals over a
// range wide enough for any measurement; whole numbers edit as whole numbers.
class NumberDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QString displayText(const QVariant& value, const QLocale& locale) const override {
        if (value.typeId() == QMetaType::Double) return QString::number(value.toDouble(), 'f', 2);
        return QStyledItemDelegate::displayText(value, locale);
    }
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override {
        const int type = index.data(Qt::EditRole).typeId();
        if (type == QMetaType::Double) {
            auto* box = new QDoubleSpinBox(parent);
            box->setDecimals(2);
            box->setRange(-1e15, 1e15);
            box->setFrame(false);
            return box;
        }
        // Whole-number cells stay numbers when edited (a plain line edit
        // would hand back text).
        if (type == QMetaType::LongLong || type == QMetaType::Int) {
            auto* box = new QSpinBox(parent);
            box->setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
            box->setFrame(false);
            return box;
        }
        return QStyledItemDelegate::createEditor(parent, option, index);
    }
};

}  // namespace

CDatatbl5::CDatatbl5(QWidget* parent) : QTableWidget(parent) {
    setItemDelegate(new NumberDelegate(this));
    verticalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    horizontalHeader()->setHighlightSections(false);
}

bool CDatatbl5::setGridSize(int rows, int columns) {
    if (rows < 0 || columns < 0) return false;
    try {
        setRowCount(rows);
        setColumnCount(columns);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return rowCount() == rows && columnCount() == columns;
}

void CDatatbl5::setRowTitle(int row, const QString& title) {
    auto* item = verticalHeaderItem(row);
    if (!item) {
        item = new QTableWidgetItem;
        setVerticalHeaderItem(row, item);
    }
    item->setText(title);
}

QString CDatatbl5::rowTitle(int row) const {
    const auto* item = verticalHeaderItem(row);
    return item ? item->text() : QString();
}

void CDatatbl5::setColumnTitle(int column, const QString& title) {
    auto* item = horizontalHeaderItem(column);
    if (!item) {
        item = new QTableWidgetItem;
        setHorizontalHeaderItem(column, item);
    }
    item->setText(title);
}

QString CDatatbl5::columnTitle(int column) const {
    const auto* item = horizontalHeaderItem(column);
    return item ? item->text() : QString();
}

void CDatatbl5::setText(int row, int column, const QString& text) { setItem(row, column, new QTableWidgetItem(text)); }

QString CDatatbl5::text(int row, int column) const {
    const auto* it = item(row, column);
    return it ? it->data(Qt::EditRole).toString() : QString();
}

void CDatatbl5::setNumber(int row, int column, double value) {
    auto* it = new QTableWidgetItem;
    it->setData(Qt::EditRole, value);
    it->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setItem(row, column, it);
}

void CDatatbl5::setWholeNumber(int row, int column, qlonglong value) {
    auto* it = new QTableWidgetItem;
    it->setData(Qt::EditRole, value);
    it->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setItem(row, column, it);
}

void CDatatbl5::setCheck(int row, int column, bool checked) {
    auto* it = item(row, column);
    if (!it || !(it->flags() & Qt::ItemIsUserCheckable)) {
        it = new QTableWidgetItem;
        it->setFlags((it->flags() | Qt::ItemIsUserCheckable) & ~Qt::ItemIsEditable);
        setItem(row, column, it);
    }
    it->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
}

bool CDatatbl5::isChecked(int row, int column) const {
    const auto* it = item(row, column);
    return it && it->checkState() == Qt::Checked;
}

bool CDatatbl5::number(int row, int column, double* value) const {
    const auto* it = item(row, column);
    if (!it) return false;
    const QVariant v = it->data(Qt::EditRole);
    const int type = v.typeId();
    if (type != QMetaType::Double && type != QMetaType::LongLong && type != QMetaType::Int) return false;
    if (value) *value = v.toDouble();
    return true;
}

bool CDatatbl5::isEmptyCell(int row, int column) const {
    const auto* it = item(row, column);
    if (!it) return true;
    if (it->flags() & Qt::ItemIsUserCheckable) return false;
    const QVariant v = it->data(Qt::EditRole);
    return !v.isValid() || v.toString().isEmpty();
}

void CDatatbl5::clearCell(int row, int column) { delete takeItem(row, column); }

QString CDatatbl5::displayText(int row, int column) const {
    const auto* it = item(row, column);
    if (!it) return QString();
    const QVariant v = it->data(Qt::EditRole);
    if (v.typeId() == QMetaType::Double) return QString::number(v.toDouble(), 'f', 2);
    return v.toString();
}

void CDatatbl5::commitEditing() {
    if (!editingInProgress()) return;
    // Cell editors are made as children of the viewport.
    for (QWidget* editor : viewport()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!editor->isVisible()) continue;
        commitData(editor);
        closeEditor(editor, QAbstractItemDelegate::NoHint);
    }
}

void CDatatbl5::setReadOnly(bool on) {
    setEditTriggers(on ? QAbstractItemView::NoEditTriggers
                       : QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                             QAbstractItemView::AnyKeyPressed);
}

void CDatatbl5::fitColumns() {
    resizeColumnsToContents();
    for (int c = 0; c < columnCount(); ++c) setColumnWidth(c, std::clamp(columnWidth(c), 60, 320));
}
