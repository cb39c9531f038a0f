#include "AtomicFileWriter.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "MessageService.h"

namespace sonmetra {

bool writeFileAtomically(const std::string& path, const std::function<bool(std::FILE*)>& writer) {
    std::string temp = path + ".XXXXXX";
    const int fd = mkstemp(temp.data());
    std::FILE* file = fd >= 0 ? fdopen(fd, "wb") : nullptr;
    if (!file) {
        const int err = errno;
        if (fd >= 0) {
            ::close(fd);
            std::remove(temp.c_str());
        }
        showMessage("Cannot create the file '" + path + "':\n" + std::strerror(err), MsgButtons::Ok, MsgIcon::Error);
        return false;
    }
    std::setvbuf(file, nullptr, _IOFBF, 1 << 20);
    bool ok = writer(file);
    ok = (std::fflush(file) == 0) && ok;
    ok = (std::fclose(file) == 0) && ok;
    if (ok) {
        // A replaced file keeps its permissions; a new one gets the usual
        // ones rather than mkstemp's private mode.
        namespace fs = std::filesystem;
        std::error_code ec;
        const fs::perms perms = fs::exists(path, ec) ? fs::status(path, ec).permissions()
                                                     : fs::perms::owner_read | fs::perms::owner_write |
                                                           fs::perms::group_read | fs::perms::others_read;
        fs::permissions(temp, perms, ec);
        ok = std::rename(temp.c_str(), path.c_str()) == 0;
    }
    if (!ok) std::remove(temp.c_str());
    return ok;
}

}  // namespace sonmetra
