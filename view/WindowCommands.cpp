#include "WindowCommands.h"

#include <QMdiSubWindow>
#include <QStringList>

namespace {
constexpr char kContextProperty[] = "sonmetraCommandContext";
}

WindowCommandRegistry& WindowCommandRegistry::instance() {
    static WindowCommandRegistry registry;
    return registry;
}

QStringList WindowCommandRegistry::contexts() const {
    QStringList list;
    for (const WindowCommand& c : m_commands)
        if (!list.contains(c.context)) list.push_back(c.context);
    return list;
}

void setCommandContext(QMdiSubWindow* frame, const QString& context) {
    if (frame) frame->setProperty(kContextProperty, context);
}

QString commandContext(const QMdiSubWindow* frame) {
    return frame ? frame->property(kContextProperty).toString() : QString();
}
