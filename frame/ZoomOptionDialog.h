// The zoom option dialog: the range in ms that "From Cursor for Duration" shows.
#pragma once

#include <QDialog>

class QDoubleSpinBox;

class ZoomOptionDialog : public QDialog {
    Q_OBJECT
public:
    explicit ZoomOptionDialog(double rangeMs, QWidget* parent = nullptr);
    double rangeMs() const;
    QDoubleSpinBox* rangeField() const { return m_range; }

private:
    QDoubleSpinBox* m_range;
};

class CKestruneView;
// "Zoom...": on OK the range goes into the document and the configuration file.
void runZoomOptions(CKestruneView& view);
