#include "ImportTestSupport.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "document/DocumentOpener.h"

// libvorbis, under libsndfile, leaks its info block when a damaged Ogg
// Vorbis header makes the open fail (plain sf_open does the same); the
// damaged-file test meets that on purpose. Read by LeakSanitizer only.
extern "C" const char* __lsan_default_suppressions() { return "leak:vorbis_info_init\n"; }

namespace sonmetra::test {

ReadStatus readWith(const std::string& readerName, const std::string& path, CKestruneDoc& doc,
                    IImportDialogs& dialogs) {
    BinaryFile file;
    if (!file.open(path)) throw std::runtime_error("cannot open " + path);
    ReadContext context{&dialogs, fileNameOf(path)};
    for (const auto* list : {&sequenceReaders(), &genericReaders()})
        for (const FileReaderEntry& entry : *list)
            if (readerName == entry.name) return entry.read(file, doc, context);
    throw std::runtime_error("no reader " + readerName);
}

std::vector<std::int16_t> samplesOf(const CKestruneDoc& doc) {
    const SampleBlock& s = doc.channel(0).m_samples;
    return {s.begin(), s.end()};
}

std::vector<std::int16_t> rampSamples(std::size_t n) {
    std::vector<std::int16_t> v(n);
    for (std::size_t i = 0; i < n; ++i) v[i] = ramp16(i);
    return v;
}

std::vector<std::uint8_t> fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeBytes(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    // A new file each time: truncating one in place makes some file systems
    // flush it to disk, which slows the damaged-file test a hundredfold.
    std::remove(path.c_str());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

std::string tempPath(const std::string& name) {
    const char* dir = std::getenv("TMPDIR");
    return std::string(dir ? dir : "/tmp") + "/sonmetra-import-" + std::to_string(getpid()) + "-" + name;
}

}  // namespace sonmetra::test
