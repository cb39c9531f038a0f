#include "LogOptionDialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QSpinBox>

#include "DisplayConfig.h"
#include "document/AppConfig.h"

LogOptionDialog::LogOptionDialog(int frameStepHz, QWidget* parent) : QDialog(parent), m_step(new QSpinBox(this)) {
    setWindowTitle(QStringLiteral("Log Option"));
    m_step->setRange(1, 5000);
    m_step->setValue(frameStepHz);
    auto* form = new QFormLayout(this);
    form->addRow(QStringLiteral("Step size for entire frame entry (Hz) = "), m_step);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(buttons);
}

int LogOptionDialog::frameStepHz() const { return m_step->value(); }

void runLogOptions(QWidget* parent) {
    sonmetra::AppConfig& config = displayConfig();
    LogOptionDialog dialog(config.m_logFrameStepHz, parent);
    if (dialog.exec() != QDialog::Accepted) return;
    config.m_logFrameStepHz = dialog.frameStepHz();
    writeDisplayConfig();
}
