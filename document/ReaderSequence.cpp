// The order in which File > Open tries its readers. The file's contents
// choose the reader, not the filter the user picked.
#include "FileReader.h"
#include "KvdFormat.h"
#include "readers/AiffReader.h"
#include "readers/AsciiReader.h"
#include "readers/NspReader.h"
#include "readers/RawIntReader.h"
#include "readers/SndfileReader.h"
#include "readers/WavReader.h"

namespace sonmetra {

const std::vector<FileReaderEntry>& sequenceReaders() {
    static const std::vector<FileReaderEntry> readers = {
        {"RVM_PC", &readRvmPc},
        {"RVM_Mac", &readRvmMac},
        {"WAV", &readWav},
        {"NSP", &readNsp},
        {"AIFF", &readAiff},
        // libsndfile comes after the readers of our own, for what they decline.
        {"sndfile", &readSndfile},
    };
    return readers;
}

const std::vector<FileReaderEntry>& genericReaders() {
    static const std::vector<FileReaderEntry> readers = {
        {"int_binary", &readRawInt},
        {"ascii", &readAscii},
    };
    return readers;
}

}  // namespace sonmetra
