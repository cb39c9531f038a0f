// The message service of the workstation: a modal QMessageBox, and the
// desktop's beep.
#pragma once

#include "document/MessageService.h"

class QWidget;

class QtMessageService : public sonmetra::IMessageService {
public:
    sonmetra::MsgAnswer show(const std::string& text, sonmetra::MsgButtons buttons, sonmetra::MsgIcon icon) override;
    void beep() override;
};
