// sonmetra-cli's labels command and its corpus runs, as a user runs them:
// files written, exit codes and the messages on standard error.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "../document/TestFiles.h"
#include "document/DocumentOpener.h"
#include "document/MessageService.h"
#include "tests/support/CommandRun.h"

using namespace sonmetra;
using namespace sonmetra::test;

namespace {

CommandRun cli(const std::string& args, const TempDir& dir, const std::string& prefix = std::string()) {
    return runCommand(prefix + std::string(SONMETRA_CLI) + " " + args, dir.file("stderr.txt"));
}

std::string text(const std::string& path) {
    const auto b = readBytes(path);
    return std::string(b.begin(), b.end());
}

void writeText(const std::string& path, const std::string& t) {
    writeBytes(path, std::vector<std::uint8_t>(t.begin(), t.end()));
}

class LabelsCorpusTest : public SampleFileTest {};  // four labels on the audio channel

}  // namespace

TEST_F(LabelsCorpusTest, ExportAndImportLabels) {
    CommandRun r = cli("labels export " + sample + " " + dir.file("s.txt"), dir);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(text(dir.file("s.txt")),
              "0\t0\tlabel at 0\n0.1\t0.1\tlabel at 100\n0.2505\t0.2505\tlabel at 250\n0.4\t0.4\tlabel at 400\n");

    // Intervals into the second channel; the document given stays as it was.
    const auto before = readBytes(sample);
    writeText(dir.file("in.txt"), "0.05\t0.15\tone\n0.2\t0.3\ttwo\n");
    r = cli("labels import " + sample + " " + dir.file("in.txt") + " -o " + dir.file("out.kvd") + " --channel 2", dir);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(readBytes(sample), before);
    CKestruneDoc out;
    DefaultImportDialogs dialogs;
    ASSERT_TRUE(openDocument(out, dir.file("out.kvd"), dialogs));
    ASSERT_EQ(out.channel(1).m_labels.size(), 4u);
    EXPECT_EQ(out.channel(1).m_labels[1].timeMs, 150.0);
    EXPECT_EQ(out.channel(1).m_labels[1].text, "");
    EXPECT_EQ(out.channel(0).m_labels.size(), 4u);

    r = cli("labels export " + dir.file("out.kvd") + " " + dir.file("out.TextGrid") + " --channel 2 --tier words", dir);
    ASSERT_EQ(r.status, 0) << r.err;
    const std::string grid = text(dir.file("out.TextGrid"));
    EXPECT_NE(grid.find("class = \"IntervalTier\" \n        name = \"words\" "), std::string::npos);
    EXPECT_NE(grid.find("xmin = 0.2 \n            xmax = 0.3 \n            text = \"two\" "), std::string::npos);

    // The tier by name; a name the file lacks is refused.
    r = cli(
        "labels import " + sample + " " + dir.file("out.TextGrid") + " -o " + dir.file("again.kvd") + " --tier nope",
        dir);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "'" + dir.file("out.TextGrid") + "' holds no tier named \"nope\" (its tiers: \"words\").\n");
    EXPECT_FALSE(std::filesystem::exists(dir.file("again.kvd")));
}

TEST_F(LabelsCorpusTest, BadLabelFilesAndUsage) {
    writeText(
        dir.file("cut.TextGrid"),
        "File type = \"ooTextFile\"\nObject class = \"TextGrid\"\n0\n1\n<exists>\n1\n\"TextTier\"\n\"p\"\n0\n1\n2\n"
        "0.1\n\"a\"\n");
    CommandRun r = cli("labels import " + sample + " " + dir.file("cut.TextGrid") + " -o " + dir.file("out.kvd"), dir);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err,
              "'cut.TextGrid' cannot be read as a TextGrid:\nthe file ends in tier 1 \"p\" after 1 of its 2 "
              "points.\n");
    EXPECT_FALSE(std::filesystem::exists(dir.file("out.kvd")));

    EXPECT_EQ(cli("labels import " + sample + " " + dir.file("cut.TextGrid"), dir).status, 2);  // no -o
    EXPECT_EQ(cli("labels export " + sample + " " + dir.file("x.wav"), dir).status, 2);
    EXPECT_EQ(cli("labels export " + sample + " " + dir.file("x.txt") + " --kind both", dir).status, 2);
}

// A corpus with a bad file among good ones: every good file's result
// equals its single run, the bad one's message names it, the exit code says so.
TEST_F(LabelsCorpusTest, CorpusRunGoesOnPastABadFile) {
    CKestruneDoc doc;
    fillSampleDocument(doc);
    doc.channel(0).m_labels.resize(2);
    ASSERT_TRUE(doc.saveAs(dir.file("second.kvd"), 1));
    writeText(dir.file("broken.kvd"), "RVM_PC but not really");
    const std::string inputs = sample + " " + dir.file("broken.kvd") + " " + dir.file("second.kvd");
    const std::string results = dir.file("results");

    CommandRun r = cli("pitch " + inputs + " --method autocorrelation --out-dir " + results, dir);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, dir.file("broken.kvd") + ": Wrong file type.\n1 of 3 inputs failed.\n");
    for (const char* name : {"sample", "second"}) {
        const CommandRun single = cli(std::string("pitch ") + dir.file(name) + ".kvd --method autocorrelation", dir);
        EXPECT_EQ(text(results + "/" + name + ".tsv"), single.out) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(results + "/broken.tsv"));
    EXPECT_FALSE(std::filesystem::exists(results + "/broken.tsv.part"));

    r = cli("labels export " + inputs + " --out-dir " + results + " --format txt", dir);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(text(results + "/second.txt"), "0\t0\tlabel at 0\n0.1\t0.1\tlabel at 100\n");

    // A picture per input with its own ending; a table that would be empty is not left behind.
    r = cli("spectrogram " + sample + " " + dir.file("second.kvd") + " --columns 8 --points 4 --png .png --out-dir " +
                results,
            dir);
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(std::filesystem::exists(results + "/second.png"));
    EXPECT_FALSE(std::filesystem::exists(results + "/second.tsv.part"));

    // All inputs are good: exit 0, and nothing on standard error, which is no terminal here.
    r = cli("intensity " + sample + " " + dir.file("second.kvd") + " --every 10 --out-dir " + results, dir);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, "");
}

TEST_F(LabelsCorpusTest, CorpusRunUsage) {
    std::filesystem::create_directory(dir.file("other"));
    std::filesystem::copy_file(sample, dir.file("other/sample.kvd"));
    CommandRun r = cli("pitch " + sample + " " + dir.file("other/sample.kvd") + " --out-dir " + dir.file("r"), dir);
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("would both write sample.tsv"), std::string::npos) << r.err;
    EXPECT_FALSE(std::filesystem::exists(dir.file("r")));
    EXPECT_EQ(
        cli("spectrogram " + sample + " --columns 8 --points 4 --png out.png --out-dir " + dir.file("r"), dir).status,
        2);
    EXPECT_EQ(cli("smooth " + sample + " --length 3 --out-dir " + dir.file("r"), dir).status, 2);
}

// On a terminal the run shows its progress on standard error ("script"
// gives the tool a terminal).
TEST_F(LabelsCorpusTest, ProgressBarOnATerminal) {
    const CommandRun ok =
        cli("intensity " + sample + " --out-dir " + dir.file("r") + "\" /dev/null", dir, "script -qec \"");
    EXPECT_EQ(ok.status, 0);
    EXPECT_NE(ok.out.find("] 0/1 sample.kvd"), std::string::npos) << ok.out;
    EXPECT_NE(ok.out.find("[##############################] 1/1"), std::string::npos) << ok.out;
}
