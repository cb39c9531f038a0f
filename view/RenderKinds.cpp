#include "RenderKinds.h"

#include <map>

namespace {
std::map<QString, RenderFactory>& kinds() {
    static std::map<QString, RenderFactory> map;
    return map;
}
}  // namespace

void registerRenderKind(const QString& kind, RenderFactory factory) { kinds()[kind] = std::move(factory); }

RenderFactory renderFactory(const QString& kind) {
    auto it = kinds().find(kind);
    return it == kinds().end() ? RenderFactory() : it->second;
}

QStringList renderKindNames() {
    QStringList names;
    for (const auto& [name, factory] : kinds()) names.push_back(name);
    return names;
}
