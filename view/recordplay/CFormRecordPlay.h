// The record and play options: where recordings come from and at what
// rates, the channel table of the external unit and how it is reached.
//
// The form edits the settings of the configuration record (input source,
// input line, recording time, the audio rates, the channel table rows 0-16
// with selected, sample rate, bandwidth and gain, the multiplex type, the
// unit's device name) and the unit settings kept in QSettings (USB ids, the
// simulated unit). It shows the unit in use and the size it identified as.
// The recording and play commands call takeSettings() of the open form
// before they run, so that what the form shows is what they use.
//
// Input sources: "Line" and "Computer" record from the sound card (the
// record keeps them as source "Computer" with input line "Line" or "Mic");
// "External Hardware" records from the unit, whose audio front end takes
// the input line "Mic" or "Line".
#pragma once

#include <QWidget>

class CDatatbl5;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace sonmetra {
class AppConfig;
}

class CFormRecordPlay : public QWidget {
    Q_OBJECT
public:
    static constexpr int kRows = 17;
    enum Column { kSelected = 0, kRate = 1, kBandwidth = 2, kGain = 3 };

    explicit CFormRecordPlay(QWidget* parent = nullptr);
    ~CFormRecordPlay() override;

    // The form whose window exists, or null.
    static CFormRecordPlay* openForm();
    // Reads the form of the open window into the settings, if there is one.
    // False after its message when a value is refused; nothing is taken then.
    static bool takeOpenFormSettings();

    // Shows the settings in force.
    void loadSettings();
    // Takes every value into the configuration and the unit settings; a value
    // out of range shows a message and throws UserException, taking nothing.
    void takeSettings();
    // Writes the configuration record to its file (Apply, and when the window hides).
    void saveSettings();
    // Asks the unit its size and shows it.
    void identifyUnit();
    int identifiedSize() const { return m_identified; }

    // The controls, for tests and the live scope.
    QComboBox* sourceBox() const { return m_source; }
    QComboBox* inputLineBox() const { return m_inputLine; }
    QSpinBox* recordTimeBox() const { return m_recordTime; }
    QSpinBox* computerRateBox() const { return m_computerRate; }
    QSpinBox* lineRateBox() const { return m_lineRate; }
    QSpinBox* externalRateBox() const { return m_externalRate; }
    QComboBox* multiplexBox() const { return m_multiplex; }
    QComboBox* unitBox() const { return m_unit; }
    QComboBox* deviceBox() const { return m_device; }
    // The USB id (vendor:product) of "Rvm-0" (0) and "Ezusb-0" (1).
    QLineEdit* usbIdEdit(int device) const { return m_usbIds[device != 0 ? 1 : 0]; }
    CDatatbl5* channelTable() const { return m_table; }
    QLabel* unitStatus() const { return m_status; }
    QPushButton* identifyButton() const { return m_identify; }
    QPushButton* applyButton() const { return m_apply; }

private:
    void updateEnabling();
    void showUnitStatus();
    [[noreturn]] void refuse(const QString& text, QWidget* focus);

    QComboBox* m_source;
    QComboBox* m_inputLine;
    QSpinBox* m_recordTime;
    QSpinBox* m_computerRate;
    QSpinBox* m_lineRate;
    QSpinBox* m_externalRate;
    QComboBox* m_multiplex;
    QComboBox* m_unit;
    QComboBox* m_device;
    QLineEdit* m_usbIds[2];
    QLabel* m_status;
    QPushButton* m_identify;
    QPushButton* m_apply;
    CDatatbl5* m_table;
    int m_identified = 0;  // 0 not asked yet, -1 none found
};
