#include "CStatusWindow.h"

#include <QHeaderView>
#include <QLabel>
#include <QMainWindow>
#include <QStatusBar>
#include <QTableWidget>
#include <QVBoxLayout>

#include "CursorDurationBar.h"
#include "view/AppServices.h"

namespace {
QString pair(double a, double b) {
    return QString::number(a, 'f', 2) + QStringLiteral(", ") + QString::number(b, 'f', 2);
}
}  // namespace

CStatusWindow::CStatusWindow(QWidget* parent)
    : QDockWidget(QStringLiteral("Status"), parent), m_table(new QTableWidget(this)), m_time(new QLabel(this)) {
    setObjectName(QStringLiteral("StatusWindow"));
    auto* body = new QWidget(this);
    auto* column = new QVBoxLayout(body);
    column->setContentsMargins(2, 2, 2, 2);
    column->addWidget(m_time);
    column->addWidget(m_table);
    setWidget(body);
    m_table->setColumnCount(kReadoutColumns);
    m_table->setHorizontalHeaderLabels({"Channel", "Units", "Rate (Hz)", "Gain", "Reference",
                                        "At cursor (value, calibrated)", "Selection (ms, samples)",
                                        "Selection start, end (ms)"});
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->verticalHeader()->setVisible(false);
    m_table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    setCursorTime(CursorTimes{});
}

CStatusWindow::~CStatusWindow() {
    if (AppServices::instance().readouts == this) AppServices::instance().readouts = nullptr;
}

void CStatusWindow::setRows(const std::vector<ReadoutRow>& rows) {
    m_table->setRowCount(static_cast<int>(rows.size()));
    for (int r = 0; r < static_cast<int>(rows.size()); ++r) {
        const ReadoutRow& row = rows[static_cast<std::size_t>(r)];
        const QString fixed[] = {QString::fromStdString(row.name), QString::fromStdString(row.units),
                                 QString::number(row.rateHz, 'g', 10), QString::number(row.gain, 'g', 10),
                                 QString::number(row.reference, 'f', 2)};
        for (int c = 0; c < 5; ++c) {
            auto* item = m_table->item(r, c);
            if (item == nullptr) m_table->setItem(r, c, item = new QTableWidgetItem);
            item->setText(fixed[c]);
        }
    }
}

void CStatusWindow::setCell(int row, int column, double first, double second) {
    if (row < 0 || row >= m_table->rowCount() || column < 0 || column >= m_table->columnCount()) return;
    auto* item = m_table->item(row, column);
    if (item == nullptr) m_table->setItem(row, column, item = new QTableWidgetItem);
    item->setText(pair(first, second));
}

void CStatusWindow::setCursorTime(const CursorTimes& times) {
    m_time->setText(QStringLiteral("Cursor (ms): %1    Window (ms): %2 - %3")
                        .arg(times.cursorMs, 0, 'f', 2)
                        .arg(times.displayStartMs, 0, 'f', 2)
                        .arg(times.displayEndMs, 0, 'f', 2));
    if (m_bar != nullptr) m_bar->setTimes(times);
}

QString CStatusWindow::cellText(int row, int column) const {
    const auto* item = m_table->item(row, column);
    return item != nullptr ? item->text() : QString();
}

QString CStatusWindow::timeText() const { return m_time->text(); }

CStatusWindow* createStatusWindow(QMainWindow* mainWindow) {
    auto* status = new CStatusWindow(mainWindow);
    mainWindow->addDockWidget(Qt::BottomDockWidgetArea, status);
    // Room for a few channel rows; the waveforms keep the rest.
    mainWindow->resizeDocks({status}, {170}, Qt::Vertical);
    auto* bar = new CursorDurationBar(mainWindow);
    mainWindow->statusBar()->addPermanentWidget(bar);
    status->setCursorBar(bar);
    AppServices::instance().readouts = status;
    return status;
}
