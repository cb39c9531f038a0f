// The raw integer and ASCII readers behind the "Generic File Selection" dialog.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "ImportTestSupport.h"
#include "document/DocumentOpener.h"
#include "document/readers/AsciiReader.h"

namespace sonmetra::test {
namespace {

class GenericReaders : public ::testing::Test {
protected:
    RecordingMessageService m_messages;
    ScopedMessageService m_install{&m_messages};
    ScriptedDialogs m_dialogs;
    CKestruneDoc m_doc;

    void SetUp() override { m_dialogs.genericAnswer = true; }
    bool open(const std::string& name) { return openDocument(m_doc, fixture(name), m_dialogs); }
};

TEST_F(GenericReaders, RawIntegersInTheChosenLayout) {
    ASSERT_TRUE(open("raw-16le-1ch.raw"));  // the dialog's defaults
    EXPECT_EQ(m_doc.readerName(), "int_binary");
    EXPECT_EQ(m_doc.channel(0).m_name, "int_binary file");
    EXPECT_DOUBLE_EQ(m_doc.channel(0).m_rateHz, 10000.0);
    EXPECT_EQ(samplesOf(m_doc), rampSamples(1000));

    // Header skipped, high byte first, the trailing odd byte ignored.
    m_dialogs.useGenericChoice = true;
    m_dialogs.genericChoice = {32, 12000.0, 16, false};
    CKestruneDoc be;
    ASSERT_TRUE(openDocument(be, fixture("raw-16be-hdr32-odd.raw"), m_dialogs));
    EXPECT_EQ(samplesOf(be), rampSamples(1000));
    EXPECT_DOUBLE_EQ(be.channel(0).m_rateHz, 12000.0);
    EXPECT_EQ(be.m_generic.headerBytes, 32) << "the choices are kept in the document";

    m_dialogs.genericChoice = {0, 8000.0, 8, true};
    CKestruneDoc eight;
    ASSERT_TRUE(openDocument(eight, fixture("raw-8-1ch.raw"), m_dialogs));
    for (std::size_t i = 0; i < 1000; ++i)
        ASSERT_EQ(eight.channel(0).m_samples[i], static_cast<std::int8_t>(byte8(i)) * 256) << i;
    EXPECT_TRUE(m_messages.texts().empty());
}

TEST_F(GenericReaders, RawReaderFailureShowsItsMessage) {
    m_dialogs.useGenericChoice = true;
    m_dialogs.genericChoice = {5000, 10000.0, 16, true};  // header longer than the file
    EXPECT_FALSE(open("raw-16le-1ch.raw"));
    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{"Error in reading the generic file."});
}

// A file of numbers in text is declined by the raw reader and read by ASCII.
TEST_F(GenericReaders, NumbersInTextGoToTheAsciiReader) {
    ASSERT_TRUE(open("ascii-numbers.txt"));
    EXPECT_EQ(m_doc.readerName(), "ascii");
    EXPECT_EQ(m_doc.channel(0).m_name, "ascii file");
    EXPECT_TRUE(m_doc.foreignMark());
    // "0 / 1 -1 / +2 -2.4 / 2.5 1e3 / .5E1 -3. / 40000 -1e9 / 32767 / -32768"
    const std::vector<std::int16_t> expected = {0, 1, -1, 2, -2, 3, 1000, 5, -3, 32767, -32768, 32767, -32768};
    EXPECT_EQ(samplesOf(m_doc), expected);
    EXPECT_EQ(m_messages.texts(),
              std::vector<std::string>{"2 samples were beyond 16-bit full scale and have been clipped."});
}

TEST_F(GenericReaders, AsciiReaderRefusesWhatIsNotANumber) {
    const std::string notPure =
        "The file is not a pure ascii file. Make sure that this file does not contain and header and does not "
        "have any formatting.";
    // Number characters only, so the raw reader declines; "1-2" is no number.
    EXPECT_FALSE(open("ascii-number-chars-not-numbers.txt"));
    EXPECT_EQ(m_messages.texts(), std::vector<std::string>{notPure});

    // Read alone, the ASCII reader refuses text with a comma, and keeps nothing.
    m_messages.clear();
    CKestruneDoc doc;
    EXPECT_EQ(readWith("ascii", fixture("ascii-not-pure.txt"), doc, m_dialogs), ReadStatus::Abandoned);
    EXPECT_EQ(m_messages.lastText(), notPure);
    EXPECT_EQ(doc.channelCount(), 0);
}

// Words are text, not raw integers: the raw reader declines them, so that
// the ASCII reader's message tells the user what is wrong with the file.
TEST_F(GenericReaders, TextOfWordsGetsTheAsciiReadersMessage) {
    const std::string notPure =
        "The file is not a pure ascii file. Make sure that this file does not contain and header and does not "
        "have any formatting.";
    const std::string words = tempPath("words.txt");
    const std::string text = "the quick brown fox\njumps over the lazy dog\n";
    const std::string utf8 =
        "caf\xc3\xa9 na\xc3\xafve \xe2\x80\x94 12 14\r\n\tstra\xc3\x9f"
        "e\n";
    for (const std::string& content : {text, utf8, std::string("12\n13, 14\n15\n"),
                                       std::string("\xef\xbb\xbf"
                                                   "1 2 x")}) {
        writeBytes(words, std::vector<std::uint8_t>(content.begin(), content.end()));
        m_messages.clear();
        CKestruneDoc doc;
        EXPECT_FALSE(openDocument(doc, words, m_dialogs)) << content;
        EXPECT_EQ(m_messages.texts(), std::vector<std::string>{notPure}) << content;
    }
    // A byte that is neither text nor part of a UTF-8 character makes the
    // file binary again: the raw reader takes it.
    for (const std::string& content : {text + '\0', text + "\xe9t\xe9", text + '\x01'}) {
        writeBytes(words, std::vector<std::uint8_t>(content.begin(), content.end()));
        m_messages.clear();
        CKestruneDoc doc;
        EXPECT_TRUE(openDocument(doc, words, m_dialogs)) << content;
        EXPECT_EQ(doc.readerName(), "int_binary");
    }
    std::remove(words.c_str());
}

TEST(AsciiNumbers, Syntax) {
    for (const char* good : {"0", "-7", "+7", "1.", ".5", "1.5e3", "2E-2", "-.5e+1", "007"})
        EXPECT_TRUE(parseAsciiNumber(good).has_value()) << good;
    for (const char* bad :
         {"", "+", "-", ".", "e5", "1e", "1e+", "1-2", "1..2", "1.2.3", "--1", "0x10", "1,5", "nan", "inf"})
        EXPECT_FALSE(parseAsciiNumber(bad).has_value()) << bad;
    EXPECT_EQ(*parseAsciiNumber("-.5e+1"), -5.0);
    EXPECT_EQ(*parseAsciiNumber("1e999"), HUGE_VAL);
    EXPECT_EQ(*parseAsciiNumber("-1e999"), -HUGE_VAL);
    EXPECT_EQ(*parseAsciiNumber("1e-999"), 0.0);
    // Below the smallest double, and written without an exponent.
    EXPECT_EQ(*parseAsciiNumber("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_EQ(*parseAsciiNumber("1" + std::string(400, '0')), HUGE_VAL);
}

}  // namespace
}  // namespace sonmetra::test
