#pragma once
// The last part of a path, the name a window title shows.
#include <string>

namespace sonmetra {

inline std::string fileNameOf(const std::string& path) {
    const auto slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace sonmetra
