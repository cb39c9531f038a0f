// Feeds arbitrary bytes to one reader of the open sequence. The reader must
// accept, decline or abandon with a message: never crash, hang or allocate
// more than the file could hold.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "document/FileReader.h"
#include "document/MessageService.h"

namespace {

struct Answers : sonmetra::IImportDialogs {
    int channel = 0;
    int chooseChannel(int count) override { return count > 0 ? channel % count : -1; }
    bool genericFileSelection(sonmetra::GenericFileSettings&) override { return true; }
};

const sonmetra::FileReaderEntry* findReader(const std::string& name) {
    for (const auto* list : {&sonmetra::sequenceReaders(), &sonmetra::genericReaders()})
        for (const auto& entry : *list)
            if (name == entry.name) return &entry;
    return nullptr;
}

}  // namespace

// libvorbis (under libsndfile) leaks on some damaged Ogg headers; a plain
// sf_open leaks the same way, so it is not ours to find.
extern "C" const char* __lsan_default_suppressions() { return "leak:vorbis_info_init\n"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static sonmetra::RecordingMessageService quiet;
    static sonmetra::ScopedMessageService install(&quiet);
    static const sonmetra::FileReaderEntry* reader = findReader(FUZZ_READER_NAME);
    // The input lives in an anonymous file in memory, opened by the reader
    // through its /proc name as any file would be: nothing is ever named in
    // a folder, so a run that ends in any way leaves nothing behind.
    static const int memory = memfd_create("sonmetra-fuzz", MFD_CLOEXEC);
    static const std::string path = "/proc/self/fd/" + std::to_string(memory);
    if (!reader || memory < 0) __builtin_trap();
    quiet.clear();

    if (ftruncate(memory, 0) != 0) return 0;
    for (std::size_t done = 0; done < size;) {
        const ssize_t n = pwrite(memory, data + done, size - done, static_cast<off_t>(done));
        if (n <= 0) return 0;
        done += static_cast<std::size_t>(n);
    }

    sonmetra::BinaryFile file;
    if (!file.open(path)) return 0;
    sonmetra::CKestruneDoc doc;
    Answers answers;
    answers.channel = size > 0 ? data[0] : 0;
    sonmetra::ReadContext context{&answers, "fuzz"};
    reader->read(file, doc, context);
    return 0;
}
