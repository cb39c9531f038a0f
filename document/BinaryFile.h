// A file opened for reading by the document readers: sized, seekable, and
// read in whole records. Every read says how many bytes it really got, so
// that a truncated file is seen as short data, never read past its end.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace sonmetra {

// Opens a path for reading only when it names a regular file, without
// waiting on a pipe or a device. Returns the descriptor (close-on-exec), or
// -1 with the reason in `error`.
int openRegularFileForReading(const std::string& path, std::string& error);

class BinaryFile {
public:
    BinaryFile() = default;
    ~BinaryFile();
    BinaryFile(const BinaryFile&) = delete;
    BinaryFile& operator=(const BinaryFile&) = delete;

    // Opens a regular file for reading; false, with the reason in error(),
    // when it cannot or when the path names a pipe, device or folder.
    bool open(const std::string& path);
    void close();
    bool isOpen() const { return m_file != nullptr; }
    const std::string& path() const { return m_path; }
    // Text of the reason the last open failed.
    const std::string& error() const { return m_error; }

    std::uint64_t size() const { return m_size; }
    std::uint64_t position() const;
    std::uint64_t remaining() const;
    bool seek(std::uint64_t offset);
    // Reads up to n bytes; returns the number read.
    std::size_t read(void* buffer, std::size_t n);
    // Reads exactly n bytes or returns false (position then undefined).
    bool readExact(void* buffer, std::size_t n) { return read(buffer, n) == n; }
    // Reads up to n bytes at `offset` without moving the position; returns the
    // number read. Several threads may call it at once.
    std::size_t readAt(std::uint64_t offset, void* buffer, std::size_t n) const;

private:
    std::FILE* m_file = nullptr;
    std::uint64_t m_size = 0;
    std::string m_path;
    std::string m_error;
};

}  // namespace sonmetra
