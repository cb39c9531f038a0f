// Feeds arbitrary bytes to one reader of the open sequence. The reader must
// accept, decline or abandon with a message: never crash, hang or allocate
// more than the file could hold.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
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
    // In memory where possible; a fresh file each run, since truncating an
    // existing one on disk forces a flush and slows the fuzzer a hundredfold.
    static const std::string path =
        std::string(access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + "/sonmetra-fuzz-" + std::to_string(getpid());
    if (!reader) __builtin_trap();
    quiet.clear();

    unlink(path.c_str());
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return 0;
    std::fwrite(data, 1, size, f);
    std::fclose(f);

    sonmetra::BinaryFile file;
    if (!file.open(path)) return 0;
    sonmetra::CKestruneDoc doc;
    Answers answers;
    answers.channel = size > 0 ? data[0] : 0;
    sonmetra::ReadContext context{&answers, "fuzz"};
    reader->read(file, doc, context);
    return 0;
}
