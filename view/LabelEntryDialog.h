// The "Label entry" dialog: the label's text (at most 254 characters,
// several lines allowed), "Font" for its font and colour, the
// "Justification" group and "Add line". It opens with the focus in the text.
#pragma once

#include <QDialog>
#include <functional>

#include "document/CLabel.h"

class QCheckBox;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

class LabelEntryDialog : public QDialog {
    Q_OBJECT
public:
    // Pre-filled with label's text and settings.
    explicit LabelEntryDialog(const sonmetra::CLabel& label, QWidget* parent = nullptr);

    // The label as edited: text, font, colour, justification and line flag
    // from the dialog, every other field as given.
    sonmetra::CLabel label() const;
    QString text() const;

    QPlainTextEdit* textField() const { return m_text; }
    QPushButton* fontButton() const { return m_font; }
    QRadioButton* justificationButton(sonmetra::Justification j) const;
    QCheckBox* addLineBox() const { return m_addLine; }

    // The font dialog behind "Font": given the label's font and colour,
    // returns false for Cancel. Tests install their own.
    using FontPicker = std::function<bool(QWidget* parent, QFont& font, QColor& color)>;
    static void setFontPicker(FontPicker picker);

    static constexpr int kMaxTextLength = 254;

private:
    void chooseFont();
    void limitText();

    sonmetra::CLabel m_label;
    QPlainTextEdit* m_text;
    QPushButton* m_font;
    QRadioButton* m_left;
    QRadioButton* m_center;
    QRadioButton* m_right;
    QCheckBox* m_addLine;
};
