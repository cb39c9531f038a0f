// Writes a file so that a failure never destroys the one it replaces: the
// data goes to a new file beside the target, which takes the target's name
// only after a complete write.
//
// The new file is unnamed while it is written (O_TMPFILE), so a save that is
// killed half way leaves nothing behind; it gets a hidden name of its own
// (".NAME.sonmetra-XXXXXX") only for the instant before it is renamed over
// the target. Where the filesystem has no unnamed files, it is written under
// that hidden name instead, locked while in use; every save removes the
// unlocked, stale ones of its target that a killed save left.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

namespace sonmetra {

// Runs writer on the new file. When the target cannot be replaced, shows
// the failed-save report "Cannot create the file '<path>':" with the reason
// and returns false: the target is read-only, is a folder or no regular
// file, or its folder allows no new file (which is how a save replaces a
// file). A writer that returns false, or a failed flush, close or rename,
// returns false and leaves the target as it was. A symbolic link is
// followed: the file it points to is replaced and the link kept.
bool writeFileAtomically(const std::string& path, const std::function<bool(std::FILE*)>& writer);

// For tests: takes the path of filesystems without unnamed files.
void useNamedTemporariesOnly(bool on);

}  // namespace sonmetra
