// The "Display Option" dialog: per-channel display settings (bits, zero
// line, reference), the print and bitmap size in inches or cm, colour or
// black and white, mouse tracking, and the time grid spacing.
#pragma once

#include <QDialog>

class QCheckBox;
class QDoubleSpinBox;
class QRadioButton;
class QTableWidget;
class CKestruneView;

namespace sonmetra {
class AppConfig;
class CKestruneDoc;
}  // namespace sonmetra

class DisplayOptionDialog : public QDialog {
    Q_OBJECT
public:
    DisplayOptionDialog(const sonmetra::CKestruneDoc& doc, const sonmetra::AppConfig& config,
                        QWidget* parent = nullptr);
    // Writes the dialog's values into the document's channels and the record.
    void apply(sonmetra::CKestruneDoc& doc, sonmetra::AppConfig& config) const;

    // The controls, for tests.
    QTableWidget* channelGrid() const { return m_grid; }
    QDoubleSpinBox* widthField() const { return m_width; }
    QDoubleSpinBox* heightField() const { return m_height; }
    QRadioButton* inchesButton() const { return m_inches; }
    QRadioButton* cmButton() const { return m_cm; }
    QRadioButton* colorButton() const { return m_color; }
    QRadioButton* blackWhiteButton() const { return m_blackWhite; }
    QCheckBox* trackMouseBox() const { return m_trackMouse; }
    QCheckBox* gridBox() const { return m_gridOn; }
    QDoubleSpinBox* gridField() const { return m_gridStep; }

    enum GridColumn { kChannel = 0, kBits = 1, kZeroLine = 2, kReference = 3 };

private:
    QTableWidget* m_grid;
    QDoubleSpinBox* m_width;
    QDoubleSpinBox* m_height;
    QRadioButton* m_inches;
    QRadioButton* m_cm;
    QRadioButton* m_color;
    QRadioButton* m_blackWhite;
    QCheckBox* m_trackMouse;
    QCheckBox* m_gridOn;
    QDoubleSpinBox* m_gridStep;
    std::vector<int> m_rowChannel;  // channel index of each grid row
};

// "Display": on OK the settings go into the document, the configuration
// file, and the view is redrawn.
void runDisplayOptions(CKestruneView& view);
