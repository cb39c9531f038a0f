// "Calibration...": per channel of the document its name, its unit text and
// its cubic calibration c3, c2, c1, c0; an "Identify unit" button that asks
// the external unit its size; and a two-point calibration: place the cursor
// (or a selection) on a stretch of known physical value, take it as point 1,
// do the same for point 2, type the two values, and c1 and c0 follow
// (c3 = c2 = 0), so that the status window shows the physical values.
//
// The dialog stays open beside the view so that the cursor can be moved
// between the two points. OK keeps a copy for Undo (Edit > Undo restores
// the calibration) and changes the document, which becomes modified.
#pragma once

#include <QDialog>
#include <QPointer>
#include <optional>
#include <vector>

class CDatatbl5;
class CKestruneView;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QPushButton;

class CalibrationDialog : public QDialog {
    Q_OBJECT
public:
    enum Column { kName = 0, kUnits = 1, kC3 = 2, kC2 = 3, kC1 = 4, kC0 = 5 };

    explicit CalibrationDialog(CKestruneView& view);

    // The controls, for tests.
    CDatatbl5* table() const { return m_table; }
    QPushButton* identifyButton() const { return m_identify; }
    QLabel* unitLabel() const { return m_unit; }
    QComboBox* pointChannel() const { return m_channel; }
    QPushButton* takeButton(int point) const { return m_take[point]; }
    QDoubleSpinBox* knownValue(int point) const { return m_known[point]; }
    QLabel* reading(int point) const { return m_reading[point]; }
    QPushButton* computeButton() const { return m_compute; }
    // The converted reading x taken for a point, before calibration.
    std::optional<double> takenReading(int point) const { return m_taken[point]; }

    void identifyUnit();
    // Takes the converted mean of the chosen channel over the selection (the
    // sample at the cursor without one) as the point's reading.
    void takePoint(int point);
    // c1 and c0 of the chosen channel's row from the two points.
    void computeTwoPoint();

public slots:
    void accept() override;

private:
    void fillFromDocument();
    int rowOfChannel(int channel) const;

    QPointer<CKestruneView> m_view;
    CDatatbl5* m_table;
    QPushButton* m_identify;
    QLabel* m_unit;
    QComboBox* m_channel;
    QPushButton* m_take[2];
    QDoubleSpinBox* m_known[2];
    QLabel* m_reading[2];
    QPushButton* m_compute;
    std::vector<int> m_channels;  // document channel of each row
    std::optional<double> m_taken[2];
    int m_takenChannel[2] = {-1, -1};
};

// The waveform view's "Calibration..." command: the view's dialog, made or raised.
void runCalibrationDialog(CKestruneView& view);
