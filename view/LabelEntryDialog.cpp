#include "LabelEntryDialog.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QDialogButtonBox>
#include <QFontDialog>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "LabelFont.h"

using sonmetra::CLabel;
using sonmetra::Justification;

namespace {

LabelEntryDialog::FontPicker& fontPicker() {
    static LabelEntryDialog::FontPicker picker;
    return picker;
}

// The system font dialog with its effects, then the colour: the font
// dialog of this toolkit has no colour of its own.
bool pickFontAndColor(QWidget* parent, QFont& font, QColor& color) {
    bool ok = false;
    const QFont chosen = QFontDialog::getFont(&ok, font, parent, QObject::tr("Font"));
    if (!ok) return false;
    font = chosen;
    const QColor c = QColorDialog::getColor(color, parent, QObject::tr("Color"));
    if (c.isValid()) color = c;
    return true;
}

// The text of at most `limit` bytes in the file's encoding, cut at a character.
QString limitedText(const QString& text, int limit) {
    QString t = text.left(limit);
    while (t.toUtf8().size() > limit) t.chop(1);
    return t;
}

}  // namespace

void LabelEntryDialog::setFontPicker(FontPicker picker) { fontPicker() = std::move(picker); }

LabelEntryDialog::LabelEntryDialog(const CLabel& label, QWidget* parent) : QDialog(parent), m_label(label) {
    setWindowTitle("Label entry");

    auto* prompt = new QLabel("Enter Label (255 characters maximum): ", this);
    m_text = new QPlainTextEdit(this);
    m_text->setTabChangesFocus(true);
    m_text->setPlainText(QString::fromUtf8(label.text.c_str()));
    m_text->setMinimumSize(360, 90);
    connect(m_text, &QPlainTextEdit::textChanged, this, &LabelEntryDialog::limitText);
    prompt->setBuddy(m_text);

    m_font = new QPushButton("Font", this);
    connect(m_font, &QPushButton::clicked, this, &LabelEntryDialog::chooseFont);

    auto* group = new QGroupBox("Justification", this);
    m_left = new QRadioButton("Left", group);
    m_center = new QRadioButton("Center", group);
    m_right = new QRadioButton("Right", group);
    auto* groupLayout = new QHBoxLayout(group);
    groupLayout->addWidget(m_left);
    groupLayout->addWidget(m_center);
    groupLayout->addWidget(m_right);
    // A label without a known justification shows Left.
    QRadioButton* current = m_left;
    if (label.justification == static_cast<int>(Justification::Center)) current = m_center;
    if (label.justification == static_cast<int>(Justification::Right)) current = m_right;
    current->setChecked(true);

    m_addLine = new QCheckBox("Add line", this);
    m_addLine->setChecked(label.lineFlag());

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* options = new QHBoxLayout;
    options->addWidget(m_font);
    options->addWidget(group, 1);
    options->addWidget(m_addLine);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(prompt);
    layout->addWidget(m_text);
    layout->addLayout(options);
    layout->addWidget(buttons);

    m_text->moveCursor(QTextCursor::End);
    m_text->setFocus();
}

QRadioButton* LabelEntryDialog::justificationButton(Justification j) const {
    switch (j) {
        case Justification::Left:
            return m_left;
        case Justification::Center:
            return m_center;
        case Justification::Right:
            return m_right;
    }
    return m_left;
}

void LabelEntryDialog::limitText() {
    const QString t = m_text->toPlainText();
    const QString limited = limitedText(t, kMaxTextLength);
    if (limited == t) return;
    // The field stops at its limit: what goes beyond is not taken.
    QSignalBlocker block(m_text);
    const int position = std::min<int>(m_text->textCursor().position(), static_cast<int>(limited.size()));
    m_text->setPlainText(limited);
    QTextCursor cursor = m_text->textCursor();
    cursor.setPosition(position);
    m_text->setTextCursor(cursor);
}

void LabelEntryDialog::chooseFont() {
    QFont font = qFontFromLogFont(m_label.font);
    QColor color = labelColor(m_label);
    const bool ok = fontPicker() ? fontPicker()(this, font, color) : pickFontAndColor(this, font, color);
    if (!ok) return;
    logFontFromQFont(font, m_label.font);
    setLabelColor(m_label, color);
}

QString LabelEntryDialog::text() const { return m_text->toPlainText(); }

CLabel LabelEntryDialog::label() const {
    CLabel l = m_label;
    l.text = limitedText(m_text->toPlainText(), kMaxTextLength).toUtf8().toStdString();
    l.justification = static_cast<int>(m_center->isChecked()  ? Justification::Center
                                       : m_right->isChecked() ? Justification::Right
                                                              : Justification::Left);
    l.setLineFlag(m_addLine->isChecked());
    return l;
}
