#include "AboutDialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

#include "res/StringTable.h"

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent) {
    setWindowTitle("About Sonmetra");
    auto* layout = new QVBoxLayout(this);
    auto* name = new QLabel("<b>Sonmetra</b><br>Speech and slow-signal workstation", this);
    auto* version = new QLabel(QString::fromLatin1(sonmetra::loadString(sonmetra::IDS_VERSION)), this);
    version->setObjectName("version");
    auto* link = new QLabel("<a href=\"https://sonmetra.example.org/\">https://sonmetra.example.org/</a>", this);
    link->setOpenExternalLinks(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    layout->addWidget(name);
    layout->addWidget(version);
    layout->addWidget(link);
    layout->addWidget(buttons);
}
