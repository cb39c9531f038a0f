#include "ViewCommands.h"

#include <QStringList>

ViewCommandRegistry& ViewCommandRegistry::instance() {
    static ViewCommandRegistry registry;
    return registry;
}

const QStringList& ViewCommandRegistry::menuOrder() {
    static const QStringList order = {"&Edit", "&View", "&Label", "&Record/Play", "&Analysis", "&Options"};
    return order;
}
