// Helpers for the document tests: temporary folders, files as bytes, a
// small multi-channel document with labels, and a test that starts with that
// document saved in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "document/CKestruneDoc.h"
#include "document/MessageService.h"

namespace sonmetra::test {

// A fresh folder under the system's temporary folder, removed at the end.
class TempDir {
public:
    TempDir();
    ~TempDir();
    std::string file(const std::string& name) const { return (m_path / name).string(); }
    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

std::vector<std::uint8_t> readBytes(const std::string& path);
void writeBytes(const std::string& path, const std::vector<std::uint8_t>& bytes);

// Three channels (audio at 11025 Hz, two data channels at 1102.5 Hz) with
// distinct samples, reserved words, calibration and labels.
void fillSampleDocument(CKestruneDoc& doc);
void fillChannel(CChannel& c, double rateHz, std::size_t samples, int seed);

// Runs action and says whether it returned within timeoutMs. When it has
// not, the FIFO at fifoPath is opened for writing and closed, which ends a
// read that waits on it, so that a failing test still ends.
bool returnsWithin(const std::function<void()>& action, const std::string& fifoPath, int timeoutMs = 5000);

// A test whose folder `dir` holds `sample`, the sample document saved as
// sample.kvd, with the messages shown kept in `messages`.
class SampleFileTest : public ::testing::Test {
protected:
    void SetUp() override;

    TempDir dir;
    RecordingMessageService messages;
    ScopedMessageService install{&messages};
    std::string sample;
};

}  // namespace sonmetra::test
