// Help > About: the program's name, "Version 8.9.1" and the maker's address.
#pragma once

#include <QDialog>

class AboutDialog : public QDialog {
    Q_OBJECT
public:
    explicit AboutDialog(QWidget* parent = nullptr);
};
