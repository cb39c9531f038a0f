#include "CFormLog.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QProgressDialog>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "CDatatbl5.h"
#include "document/MessageService.h"
#include "res/StringTable.h"

using sonmetra::LogCell;
using sonmetra::LogRow;

namespace {

// Open logs, the one activated last at the back.
std::vector<CFormLog*>& openLogs() {
    static std::vector<CFormLog*> logs;
    return logs;
}

CFormLog::FileDialogHook& fileDialogHook() {
    static CFormLog::FileDialogHook hook;
    return hook;
}

int g_untitledNumber = 0;

const QString kLogFilter = QStringLiteral("Log files (*.log);;All files (*)");

// The name of value i (from 0) when its entry gives none.
QString genericHeading(int i) { return QString("Value %1").arg(i + 1); }

// Names of the values of an entry against those in force: an entry with
// fewer values may stand under longer headings.
bool sameNames(const QStringList& inForce, const QStringList& names) {
    for (int i = 0; i < static_cast<int>(names.size()); ++i) {
        const QString current = i < static_cast<int>(inForce.size()) ? inForce[i] : genericHeading(i);
        if (current != names[i]) return false;
    }
    return true;
}
const QString kTextFilter = QStringLiteral("text files (*.txt)");

}  // namespace

CFormLog::CFormLog(QWidget* parent) : QWidget(parent), m_grid(new CDatatbl5(this)) {
    m_saveButton = new QPushButton(tr("Save"), this);
    m_saveAsButton = new QPushButton(tr("Save As"), this);
    m_saveTextButton = new QPushButton(tr("Save As Text"), this);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_saveButton);
    buttons->addWidget(m_saveAsButton);
    buttons->addWidget(m_saveTextButton);
    buttons->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addLayout(buttons);
    layout->addWidget(m_grid);
    connect(m_saveButton, &QPushButton::clicked, this, [this] { save(); });
    connect(m_saveAsButton, &QPushButton::clicked, this, [this] { saveAs(); });
    connect(m_saveTextButton, &QPushButton::clicked, this, [this] { saveAsText(); });
    connect(m_grid, &QTableWidget::itemChanged, this, [this] {
        if (!m_filling) setModified(true);
    });

    (void)m_grid->setGridSize(0, 1);
    m_grid->setColumnTitle(0, "Measurement");
    m_grid->setColumnWidth(0, 240);
    setTitle(QString("Log%1").arg(++g_untitledNumber));
    openLogs().push_back(this);
}

CFormLog::~CFormLog() {
    auto& logs = openLogs();
    logs.erase(std::remove(logs.begin(), logs.end(), this), logs.end());
}

CFormLog* CFormLog::activeLog() { return openLogs().empty() ? nullptr : openLogs().back(); }

void CFormLog::makeActive() {
    auto& logs = openLogs();
    logs.erase(std::remove(logs.begin(), logs.end(), this), logs.end());
    logs.push_back(this);
}

void CFormLog::markClosed() {
    auto& logs = openLogs();
    logs.erase(std::remove(logs.begin(), logs.end(), this), logs.end());
}

void CFormLog::setFileDialogHook(FileDialogHook hook) { fileDialogHook() = std::move(hook); }

QString CFormLog::askFileName(QWidget* parent, const QString& title, const QString& filter, bool save) {
    if (fileDialogHook()) return fileDialogHook()(parent, title, filter, save);
    QFileDialog dialog(parent, title, QString(), filter);
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    if (save) dialog.setDefaultSuffix(filter.contains("*.txt") ? "txt" : "log");
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return QString();
    return dialog.selectedFiles().first();
}

void CFormLog::setModified(bool on) {
    if (m_modified == on) return;
    m_modified = on;
    emit modifiedChanged(on);
}

void CFormLog::setTitle(const QString& title) {
    m_title = title;
    emit titleChanged(title);
}

void CFormLog::appendHeadingRow(const QStringList& names) {
    const int row = m_grid->rowCount();
    m_grid->setRowCount(row + 1);
    m_grid->setRowTitle(row, headingRowTitle());
    m_grid->setText(row, 0, m_grid->columnTitle(0));
    for (int i = 0; i < static_cast<int>(names.size()); ++i) m_grid->setText(row, 1 + i, names[i]);
    markHeadingRow(row);
}

void CFormLog::markHeadingRow(int row) {
    for (int c = 0; c < m_grid->columnCount(); ++c) {
        if (QTableWidgetItem* item = m_grid->item(row, c)) {
            QFont font = item->font();
            font.setBold(true);
            item->setFont(font);
        }
    }
}

void CFormLog::ensureValueColumns(int columns) {
    const int old = m_grid->columnCount();
    if (columns <= old) return;
    m_grid->setColumnCount(columns);
    for (int c = old; c < columns; ++c) m_grid->setColumnTitle(c, genericHeading(c - 1));
}

void CFormLog::addEntry(const QString& kind, const std::vector<double>& values) { addEntry(kind, values, {}); }

void CFormLog::addEntry(const QString& kind, const std::vector<double>& values, const QStringList& headings) {
    const int count = static_cast<int>(values.size());
    QStringList names = headings.mid(0, count);
    for (int i = static_cast<int>(names.size()); i < count; ++i) names.push_back(genericHeading(i));
    m_filling = true;
    ensureValueColumns(1 + count);
    if (m_grid->rowCount() == 0) {
        // The first entry names the table's columns, each wide enough to
        // show its whole name.
        for (int i = 0; i < count; ++i) {
            m_grid->setColumnTitle(1 + i, names[i]);
            const int fit = m_grid->horizontalHeader()->sectionSizeHint(1 + i);
            if (m_grid->columnWidth(1 + i) < fit) m_grid->setColumnWidth(1 + i, std::min(fit, 320));
        }
        m_headingsInForce = names;
    } else if (!sameNames(m_headingsInForce, names)) {
        appendHeadingRow(names);
        m_headingsInForce = names;
    }
    const int row = m_grid->rowCount();
    m_grid->setRowCount(row + 1);
    m_grid->setRowTitle(row, QString("Entry %1").arg(++m_entryCount));
    m_grid->setText(row, 0, kind);
    for (std::size_t i = 0; i < values.size(); ++i) m_grid->setNumber(row, 1 + static_cast<int>(i), values[i]);
    m_filling = false;
    m_grid->scrollToBottom();
    setModified(true);
}

std::vector<LogRow> CFormLog::rows() const {
    std::vector<LogRow> out;
    const int columns = m_grid->columnCount();
    LogRow headings{LogCell::makeText(m_cornerTitle.toStdString())};
    for (int c = 0; c < columns; ++c) headings.push_back(LogCell::makeText(m_grid->columnTitle(c).toStdString()));
    out.push_back(std::move(headings));
    for (int r = 0; r < m_grid->rowCount(); ++r) {
        LogRow row{LogCell::makeText(m_grid->rowTitle(r).toStdString())};
        for (int c = 0; c < columns; ++c) {
            double v = 0.0;
            if (m_grid->number(r, c, &v)) {
                row.push_back(LogCell::makeNumber(v));
            } else if (!m_grid->isEmptyCell(r, c)) {
                row.push_back(LogCell::makeText(m_grid->text(r, c).toStdString()));
            } else {
                row.push_back(LogCell());
            }
        }
        out.push_back(std::move(row));
    }
    return out;
}

bool CFormLog::loadFile(const QString& path) {
    QProgressDialog progress(tr("Loading log file..."), QString(), 0, 100, this);
    progress.setWindowTitle(tr("Log"));
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(0);
    progress.setValue(0);

    sonmetra::LogText text;
    const bool ok = sonmetra::readLogFile(path.toStdString(), text,
                                          [&progress](int done, int total) { progress.setValue(50 * done / total); });
    if (!ok) return false;

    const int rows = static_cast<int>(text.lines.size()) - 1;  // the first line holds the headings
    const int columns = text.columns - 1;                      // the first cell of a line is its title
    m_filling = true;
    m_grid->clear();
    if (!m_grid->setGridSize(std::max(rows, 0), std::max(columns, 1))) {
        m_filling = false;
        sonmetra::showMessage(sonmetra::IDS_DATA_TABLE_ERROR);
        return false;
    }
    auto cell = [](const std::vector<std::string>& line, int i) {
        return i < static_cast<int>(line.size()) ? QString::fromStdString(line[static_cast<std::size_t>(i)])
                                                 : QString();
    };
    const auto& head = text.lines.front();
    m_cornerTitle = cell(head, 0);
    for (int c = 0; c < columns; ++c) m_grid->setColumnTitle(c, cell(head, c + 1));
    m_headingsInForce.clear();
    for (int c = 1; c < columns; ++c) m_headingsInForce.push_back(cell(head, c + 1));
    int headingRows = 0;
    for (int r = 0; r < rows; ++r) {
        const auto& line = text.lines[static_cast<std::size_t>(r + 1)];
        m_grid->setRowTitle(r, cell(line, 0));
        for (int c = 0; c < columns && c + 1 < static_cast<int>(line.size()); ++c) {
            const std::string& s = line[static_cast<std::size_t>(c + 1)];
            double v = 0.0;
            // Column 0 names the entry; the value columns are converted, and
            // a cell that is not a number stays as its text.
            if (c >= 1 && sonmetra::parseLogNumber(s, v)) {
                m_grid->setNumber(r, c, v);
            } else if (!s.empty()) {
                m_grid->setText(r, c, QString::fromStdString(s));
            }
        }
        if (cell(line, 0) == headingRowTitle()) {
            // The names in force for the entries below it.
            ++headingRows;
            markHeadingRow(r);
            m_headingsInForce.clear();
            for (int c = 1; c < columns; ++c) m_headingsInForce.push_back(cell(line, c + 1));
            while (!m_headingsInForce.isEmpty() && m_headingsInForce.back().isEmpty()) m_headingsInForce.pop_back();
        }
        if (r % 256 == 0) progress.setValue(50 + 50 * r / std::max(rows, 1));
    }
    m_filling = false;
    progress.setValue(100);
    m_grid->setColumnWidth(0, 240);
    m_entryCount = rows - headingRows;
    m_path = path;
    setTitle(QFileInfo(path).fileName());
    setModified(false);
    return true;
}

bool CFormLog::writeTo(const QString& path) {
    m_grid->commitEditing();
    if (!sonmetra::writeLogFile(path.toStdString(), rows())) {
        sonmetra::beep();
        sonmetra::showMessage(sonmetra::IDS_LOG_WRITE_ERROR);
        return false;
    }
    return true;
}

bool CFormLog::save() {
    if (m_path.isEmpty()) return saveAs();
    if (!writeTo(m_path)) return false;
    setModified(false);
    return true;
}

bool CFormLog::saveAs() {
    const QString path = askFileName(this, tr("Save Log As"), kLogFilter, true);
    if (path.isEmpty()) return false;
    if (!writeTo(path)) return false;
    m_path = path;
    setTitle(QFileInfo(path).fileName());
    setModified(false);
    return true;
}

bool CFormLog::saveAsText() {
    const QString path = askFileName(this, "Save As Text", kTextFilter, true);
    if (path.isEmpty()) return false;
    return writeTo(path);
}

bool CFormLog::queryClose() {
    if (!m_modified) return true;
    const auto answer = sonmetra::showMessage(sonmetra::formatString(sonmetra::IDS_SAVE_LOG_Q, m_title.toStdString()),
                                              sonmetra::MsgButtons::YesNo, sonmetra::MsgIcon::Question);
    if (answer != sonmetra::MsgAnswer::Yes) return true;
    // A save that fails or whose dialog is cancelled keeps the window open,
    // so that no entry is lost unasked.
    return save();
}
