// Shared pieces of the import tests: fixture paths, the sample formulas of
// make_fixtures.py, and dialogs that answer from a script and count questions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "document/CKestruneDoc.h"
#include "document/FileReader.h"
#include "document/MessageService.h"

namespace sonmetra::test {

inline std::string fixture(const std::string& name) { return std::string(SONMETRA_IMPORT_FIXTURES) + "/" + name; }

// The sample formulas of make_fixtures.py.
inline std::int16_t ramp16(std::size_t i) {
    return static_cast<std::int16_t>(static_cast<std::uint16_t>((i * 263) % 65536));
}
inline std::int16_t second16(std::size_t i) { return static_cast<std::int16_t>(-ramp16(i) - 1); }
inline std::uint8_t byte8(std::size_t i) { return static_cast<std::uint8_t>((i * 7) % 256); }

class ScriptedDialogs : public IImportDialogs {
public:
    int channelAnswer = 0;
    std::vector<int> channelQuestions;  // the channel counts offered
    bool genericAnswer = false;
    GenericFileSettings genericChoice;  // taken on "Yes" when useGenericChoice
    bool useGenericChoice = false;
    int genericQuestions = 0;

    int chooseChannel(int count) override {
        channelQuestions.push_back(count);
        return channelAnswer;
    }
    bool genericFileSelection(GenericFileSettings& settings) override {
        ++genericQuestions;
        if (genericAnswer && useGenericChoice) settings = genericChoice;
        return genericAnswer;
    }
};

// Runs the named reader of the sequence (or of the generic readers) alone.
ReadStatus readWith(const std::string& readerName, const std::string& path, CKestruneDoc& doc, IImportDialogs& dialogs);

std::vector<std::int16_t> samplesOf(const CKestruneDoc& doc);
std::vector<std::int16_t> rampSamples(std::size_t n);
std::vector<std::uint8_t> fileBytes(const std::string& path);
void writeBytes(const std::string& path, const std::vector<std::uint8_t>& bytes);
std::string tempPath(const std::string& name);

}  // namespace sonmetra::test
