// Damaged copies of every fixture (cut short at many lengths, header bytes
// overwritten) through every reader: each must accept, decline or abandon
// with a message, and what it accepts must be consistent and no larger than
// the file could hold.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>

#include "ImportTestSupport.h"
#include "document/readers/ImportDefaults.h"

namespace sonmetra::test {
namespace {

const char* const kReaders[] = {"WAV", "NSP", "AIFF", "sndfile", "int_binary", "ascii"};

int g_accepted = 0;
int g_variants = 0;

void checkOneVariant(const std::vector<std::uint8_t>& bytes, const std::string& what) {
    static const std::string path = tempPath("damaged");
    writeBytes(path, bytes);
    ++g_variants;
    for (const char* reader : kReaders) {
        CKestruneDoc doc;
        ScriptedDialogs dialogs;
        dialogs.channelAnswer = 1;
        dialogs.genericAnswer = true;
        const ReadStatus status = readWith(reader, path, doc, dialogs);
        if (status != ReadStatus::Accepted) continue;
        ++g_accepted;
        const CChannel& ch = doc.channel(0);
        ASSERT_EQ(doc.channelCount(), 1) << reader << " " << what;
        ASSERT_EQ(ch.m_sampleCount, static_cast<double>(ch.m_samples.size())) << reader << " " << what;
        ASSERT_TRUE(plausibleImportRate(ch.m_rateHz)) << reader << " " << what;
        ASSERT_TRUE(std::isfinite(ch.m_durationMs)) << reader << " " << what;
        if (std::string(reader) != "sndfile") {  // compressed data may hold more samples than bytes
            ASSERT_LE(ch.m_samples.size(), bytes.size()) << reader << " " << what;
        }
    }
}

TEST(ReaderRobustness, DamagedFixtures) {
    RecordingMessageService messages;
    ScopedMessageService install(&messages);
    for (const auto& entry : std::filesystem::directory_iterator(SONMETRA_IMPORT_FIXTURES)) {
        const std::string name = entry.path().filename().string();
        const std::vector<std::uint8_t> original = fileBytes(entry.path().string());
        // Cut short: every length through the headers, then in coarse steps.
        for (std::size_t n = 1; n < original.size(); n += (n < 80 ? 1 : 97))
            checkOneVariant({original.begin(), original.begin() + static_cast<std::ptrdiff_t>(n)},
                            name + " cut at " + std::to_string(n));
        // Header bytes set to their extremes: sizes, counts and rates become
        // zero, negative or huge.
        for (std::size_t at = 0; at < std::min<std::size_t>(original.size(), 64); ++at) {
            for (const std::uint8_t value : {std::uint8_t{0x00}, std::uint8_t{0xFF}, std::uint8_t{0x7F}}) {
                std::vector<std::uint8_t> damaged = original;
                damaged[at] = value;
                checkOneVariant(damaged, name + " byte " + std::to_string(at) + "=" + std::to_string(value));
            }
        }
    }
    std::remove(tempPath("damaged").c_str());
    // The damage must have reached the readers: most variants are still read.
    EXPECT_GT(g_variants, 10000);
    EXPECT_GT(g_accepted, g_variants);
}

}  // namespace
}  // namespace sonmetra::test
