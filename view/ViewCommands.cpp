#include "ViewCommands.h"

#include <QStringList>

ViewCommandRegistry& ViewCommandRegistry::instance() {
    static ViewCommandRegistry registry;
    return registry;
}

const QStringList& ViewCommandRegistry::menuOrder() {
    // The menus of the other windows' contexts (WindowCommands.h) take their
    // places from the same list; a title that is not listed comes last.
    static const QStringList order = {"&Edit", "&View",        "&Label",    "&Log",
                                      "&Play", "&Record/Play", "&Analysis", "&Options"};
    return order;
}
