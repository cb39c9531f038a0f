#include "ViewExtension.h"

#include <vector>

#include "AppServices.h"

namespace {
std::vector<ViewExtensionFactory>& factories() {
    static std::vector<ViewExtensionFactory> list;
    return list;
}
}  // namespace

void registerViewExtension(ViewExtensionFactory factory) { factories().push_back(std::move(factory)); }
const std::vector<ViewExtensionFactory>& viewExtensionFactories() { return factories(); }

AppServices& AppServices::instance() {
    static AppServices services;
    return services;
}
