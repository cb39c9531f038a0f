#include "ZoomOptionDialog.h"

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>

#include "DisplayConfig.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "view/CKestruneView.h"

ZoomOptionDialog::ZoomOptionDialog(double rangeMs, QWidget* parent)
    : QDialog(parent), m_range(new QDoubleSpinBox(this)) {
    setWindowTitle(QStringLiteral("Zoom Option"));
    // A range of 0 would zoom onto nothing; the field keeps it positive.
    m_range->setRange(0.01, 1.0e7);
    m_range->setDecimals(2);
    m_range->setValue(rangeMs);
    auto* form = new QFormLayout(this);
    form->addRow(QStringLiteral("Range to zoom from cursor ( ms ) = "), m_range);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(buttons);
}

double ZoomOptionDialog::rangeMs() const { return m_range->value(); }

void runZoomOptions(CKestruneView& view) {
    sonmetra::CKestruneDoc* doc = view.document();
    ZoomOptionDialog dialog(doc->m_zoomRangeMs, &view);
    if (dialog.exec() != QDialog::Accepted) return;
    doc->m_zoomRangeMs = dialog.rangeMs();
    displayConfig().m_zoomRangeMs = dialog.rangeMs();
    writeDisplayConfig();
}
