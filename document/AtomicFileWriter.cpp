#include "AtomicFileWriter.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <random>

#include "MessageService.h"

namespace sonmetra {
namespace {

namespace fs = std::filesystem;

std::atomic<bool> g_namedOnly{false};

constexpr const char* kTempInfix = ".sonmetra-";
constexpr std::size_t kTempSuffixLength = 6;
// A named temporary younger than this may belong to a save that has only
// just created it and not yet locked it; it is left alone.
constexpr auto kStaleAge = std::chrono::seconds(10);
// Permissions of a new file (a replaced one keeps its own).
constexpr mode_t kNewFileMode = 0644;

void reportCannotCreate(const std::string& path, const std::string& reason) {
    showMessage("Cannot create the file '" + path + "':\n" + reason, MsgButtons::Ok, MsgIcon::Error);
}

std::string tempPrefix(const std::string& name) { return "." + name + kTempInfix; }

std::string randomSuffix() {
    static constexpr char kChars[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    thread_local std::mt19937 rng{std::random_device{}()};
    std::uniform_int_distribution<std::size_t> pick(0, sizeof kChars - 2);
    std::string s;
    for (std::size_t i = 0; i < kTempSuffixLength; ++i) s += kChars[pick(rng)];
    return s;
}

// Removes the named temporaries of `name` in `folder` that no save holds
// any more: a save locks its own for as long as it runs, and a killed one
// loses its lock.
void removeStaleTemporaries(const std::string& folder, const std::string& name) {
    DIR* dir = opendir(folder.c_str());
    if (dir == nullptr) return;
    const std::string prefix = tempPrefix(name);
    const auto now = std::chrono::system_clock::now();
    while (const dirent* entry = readdir(dir)) {
        const std::string entryName = entry->d_name;
        if (entryName.size() != prefix.size() + kTempSuffixLength || entryName.compare(0, prefix.size(), prefix) != 0)
            continue;
        const int fd = openat(dirfd(dir), entryName.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0) continue;
        struct stat st {};
        const bool old = fstat(fd, &st) == 0 && S_ISREG(st.st_mode) &&
                         now - std::chrono::system_clock::from_time_t(st.st_mtime) > kStaleAge;
        if (old && flock(fd, LOCK_EX | LOCK_NB) == 0) unlinkat(dirfd(dir), entryName.c_str(), 0);
        close(fd);
    }
    closedir(dir);
}

// The file a save replaces: a symbolic link is followed, so that the link
// stays and the file it names gets the new contents.
std::string resolvedTarget(const std::string& path) {
    std::error_code ec;
    if (!fs::is_symlink(path, ec)) return path;
    const fs::path resolved = fs::weakly_canonical(path, ec);
    return ec ? path : resolved.string();
}

std::string folderOf(const std::string& path) {
    const fs::path parent = fs::path(path).parent_path();
    return parent.empty() ? std::string(".") : parent.string();
}

// Why the target cannot be replaced, or empty when it can. `mode` gets the
// permissions of an existing target.
std::string targetProblem(const std::string& target, mode_t& mode) {
    struct stat st {};
    if (stat(target.c_str(), &st) != 0) return errno == ENOENT ? std::string() : std::strerror(errno);
    mode = st.st_mode & 07777;
    if (S_ISDIR(st.st_mode)) return "it is a folder";
    if (!S_ISREG(st.st_mode)) return "it is not a regular file";
    // Saving over a read-only file is refused, as editors do, even where the
    // folder would let it be replaced (and even for the superuser).
    if ((st.st_mode & 0222) == 0 || access(target.c_str(), W_OK) != 0) return "the file is read-only";
    return {};
}

std::string folderProblem(const std::string& folder, int error) {
    if (error == ENOENT || error == ENOTDIR) return "the folder '" + folder + "' does not exist";
    return "the folder '" + folder + "' does not allow a new file in it (" + std::strerror(error) +
           "); a save writes the new file beside the old one";
}

// Gives the unnamed file `fd` a hidden name in `folder`; false when the
// system allows none.
bool nameUnnamed(int fd, const std::string& folder, const std::string& name, std::string& tempPath) {
    const std::string procPath = "/proc/self/fd/" + std::to_string(fd);
    for (int attempt = 0; attempt < 100; ++attempt) {
        tempPath = (fs::path(folder) / (tempPrefix(name) + randomSuffix())).string();
        if (linkat(AT_FDCWD, procPath.c_str(), AT_FDCWD, tempPath.c_str(), AT_SYMLINK_FOLLOW) == 0) return true;
        if (errno == EEXIST) continue;
        // Without /proc, linking by the descriptor itself may still be allowed.
        if (linkat(fd, "", AT_FDCWD, tempPath.c_str(), AT_EMPTY_PATH) == 0) return true;
        if (errno != EEXIST) return false;
    }
    return false;
}

}  // namespace

void useNamedTemporariesOnly(bool on) { g_namedOnly = on; }

bool writeFileAtomically(const std::string& path, const std::function<bool(std::FILE*)>& writer) {
    const std::string target = resolvedTarget(path);
    mode_t mode = kNewFileMode;
    if (const std::string problem = targetProblem(target, mode); !problem.empty()) {
        reportCannotCreate(path, problem);
        return false;
    }
    const std::string folder = folderOf(target);
    const std::string name = fs::path(target).filename().string();
    removeStaleTemporaries(folder, name);

    int fd = -1;
    std::string tempPath;
    bool unnamed = false;
    if (!g_namedOnly) {
        fd = open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
        unnamed = fd >= 0;
        // These say the folder refuses any new file; others only that it
        // has no unnamed ones, and the named temporary is tried.
        if (fd < 0 && (errno == EACCES || errno == EPERM || errno == EROFS || errno == ENOSPC || errno == EDQUOT ||
                       errno == ENOENT || errno == ENOTDIR)) {
            reportCannotCreate(path, folderProblem(folder, errno));
            return false;
        }
    }
    if (fd < 0) {
        tempPath = (fs::path(folder) / (tempPrefix(name) + "XXXXXX")).string();
        fd = mkostemp(tempPath.data(), O_CLOEXEC);
        if (fd < 0) {
            reportCannotCreate(path, folderProblem(folder, errno));
            return false;
        }
    }
    // Held until the file is renamed or removed: tells a later save that
    // this temporary is in use.
    flock(fd, LOCK_EX | LOCK_NB);
    auto discard = [&] {
        if (!tempPath.empty()) unlink(tempPath.c_str());
        close(fd);
    };

    const int streamFd = dup(fd);
    std::FILE* file = streamFd >= 0 ? fdopen(streamFd, "wb") : nullptr;
    if (!file) {
        const int err = errno;
        if (streamFd >= 0) close(streamFd);
        discard();
        reportCannotCreate(path, std::strerror(err));
        return false;
    }
    std::setvbuf(file, nullptr, _IOFBF, 1 << 20);
    bool ok = writer(file);
    ok = (std::fflush(file) == 0) && ok;
    ok = (std::fclose(file) == 0) && ok;
    // A replaced file keeps its permissions; a new one gets the usual ones
    // rather than the temporary's private mode.
    ok = ok && fchmod(fd, mode) == 0;
    if (ok && unnamed) ok = nameUnnamed(fd, folder, name, tempPath);
    ok = ok && std::rename(tempPath.c_str(), target.c_str()) == 0;
    if (ok) {
        close(fd);
        return true;
    }
    discard();
    return false;
}

}  // namespace sonmetra
