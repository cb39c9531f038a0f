// Writes a file so that a failure never destroys the one it replaces: the
// data goes to a temporary file beside the target, which is renamed over
// the target only after a complete write.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

namespace sonmetra {

// Runs writer on the temporary file. When the file cannot be created, shows
// "Cannot create the file '<path>':" with the reason and returns false; a
// writer that returns false, or a failed flush, close or rename, returns
// false and leaves the target as it was.
bool writeFileAtomically(const std::string& path, const std::function<bool(std::FILE*)>& writer);

}  // namespace sonmetra
