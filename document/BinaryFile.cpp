#include "BinaryFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace sonmetra {

BinaryFile::~BinaryFile() { close(); }

bool BinaryFile::open(const std::string& path) {
    close();
    m_path = path;
    m_file = std::fopen(path.c_str(), "rb");
    if (!m_file) {
        m_error = std::strerror(errno);
        return false;
    }
    struct stat st {};
    if (fstat(fileno(m_file), &st) != 0 || !S_ISREG(st.st_mode)) {
        m_error = S_ISDIR(st.st_mode) ? "it is a folder" : "not a regular file";
        close();
        return false;
    }
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
