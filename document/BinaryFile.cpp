#include "BinaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace sonmetra {

BinaryFile::~BinaryFile() { close(); }

namespace {

// Why a path that exists is no file to read: pipes, devices, sockets and
// folders either block an open or a read, or never end.
std::string notRegularReason(mode_t mode) {
    if (S_ISDIR(mode)) return "it is a folder";
    if (S_ISFIFO(mode)) return "it is a pipe (FIFO), not a regular file";
    if (S_ISCHR(mode) || S_ISBLK(mode)) return "it is a device, not a regular file";
    if (S_ISSOCK(mode)) return "it is a socket, not a regular file";
    return "it is not a regular file";
}

}  // namespace

int openRegularFileForReading(const std::string& path, std::string& error) {
    // The type is checked before the open (opening a FIFO waits for a writer)
    // and again on the open descriptor, in case the path changed between.
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) {
        error = std::strerror(errno);
        return -1;
    }
    if (!S_ISREG(st.st_mode)) {
        error = notRegularReason(st.st_mode);
        return -1;
    }
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        error = std::strerror(errno);
        return -1;
    }
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        error = notRegularReason(st.st_mode);
        ::close(fd);
        return -1;
    }
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    return fd;
}

bool BinaryFile::open(const std::string& path) {
    close();
    m_path = path;
    const int fd = openRegularFileForReading(path, m_error);
    if (fd < 0) return false;
    m_file = fdopen(fd, "rb");
    if (!m_file) {
        m_error = std::strerror(errno);
        ::close(fd);
        return false;
    }
    struct stat st {};
    fstat(fd, &st);
    m_size = static_cast<std::uint64_t>(st.st_size);
    // Large reads go straight into the caller's buffer; a big stdio buffer
    // helps the many small header reads.
    std::setvbuf(m_file, nullptr, _IOFBF, 1 << 16);
    return true;
}

void BinaryFile::close() {
    if (m_file) std::fclose(m_file);
    m_file = nullptr;
    m_size = 0;
}

std::uint64_t BinaryFile::position() const {
    if (!m_file) return 0;
    const long long p = ftello(m_file);
    return p < 0 ? 0 : static_cast<std::uint64_t>(p);
}

std::uint64_t BinaryFile::remaining() const {
    const std::uint64_t p = position();
    return p >= m_size ? 0 : m_size - p;
}

bool BinaryFile::seek(std::uint64_t offset) {
    if (!m_file || offset > m_size) return false;
    return fseeko(m_file, static_cast<off_t>(offset), SEEK_SET) == 0;
}

std::size_t BinaryFile::readAt(std::uint64_t offset, void* buffer, std::size_t n) const {
    if (!m_file) return 0;
    const int fd = fileno(m_file);
    auto* p = static_cast<char*>(buffer);
    std::size_t got = 0;
    while (got < n) {
        const ssize_t r = pread(fd, p + got, n - got, static_cast<off_t>(offset + got));
        if (r < 0 && errno == EINTR) continue;
        if (r <= 0) break;
        got += static_cast<std::size_t>(r);
    }
    return got;
}

std::size_t BinaryFile::read(void* buffer, std::size_t n) {
    if (!m_file || n == 0) return 0;
    return std::fread(buffer, 1, n, m_file);
}

}  // namespace sonmetra
