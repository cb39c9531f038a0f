#include "TestFiles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <future>
#include <iterator>
#include <random>

namespace sonmetra::test {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "sonmetra-test-XXXXXX").string();
    m_path = mkdtemp(pattern.data());
}

TempDir::~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(m_path, ec);
}

std::vector<std::uint8_t> readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeBytes(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void fillChannel(CChannel& c, double rateHz, std::size_t samples, int seed) {
    std::mt19937 rng(static_cast<unsigned>(seed));
    std::uniform_int_distribution<int> dist(-32768, 32767);
    c.m_rateHz = rateHz;
    EXPECT_TRUE(c.m_samples.resize(samples));
    for (auto& s : c.m_samples) s = static_cast<std::int16_t>(dist(rng));
    c.setSampleCountFromBlock();
    c.m_inUse = 1;
    c.resetDisplayToWhole();
}

void fillSampleDocument(CKestruneDoc& doc) {
    doc.clearChannels();
    fillChannel(doc.channel(0), 11025.0, 4410, 1);
    fillChannel(doc.channel(1), 1102.5, 441, 2);
    fillChannel(doc.channel(2), 1102.5, 441, 3);
    const char* names[] = {"Audio", "Airflow", "Pressure"};
    for (int i = 0; i < 3; ++i) {
        CChannel& c = doc.channel(i);
        c.m_name = names[i];
        c.m_number = i + 1;
        c.m_units = i == 0 ? "bits" : "ml/s";
        c.m_reservedA = 11 + i;
        c.m_reservedB = 22 + i;
        c.m_reservedC = -33;
        c.m_reservedD = 44;
        c.m_reservedE = 55;
        c.m_reservedF = 66;
        c.m_reservedG = 0x7fffffff;
        c.m_gain = 8;
        c.m_bandwidthHz = c.m_rateHz / 2;
        c.m_reference = 12.5;
        c.m_c3 = 0.001;
        c.m_c2 = -0.25;
        c.m_c1 = 2.5;
        c.m_c0 = -10.0;
    }
    doc.channel(0).m_audio = 1;
    for (double t : {0.0, 100.0, 250.5, 400.0}) {
        CLabel l;
        l.timeMs = t;
        l.text = "label at " + std::to_string(static_cast<int>(t));
        l.justification = 2;
        l.setLineFlag(true);
        l.red = 200;
        l.green = 10;
        l.blue = 30;
        l.params[2] = 77;
        l.font.height = -17;
        l.font.weight = 700;
        l.font.italic = 1;
        l.font.charSet = 0xee;
        l.font.setFace("DejaVu Serif");
        l.font.faceName[20] = 'x';  // a byte after the face's NUL, kept as read
        doc.channel(0).m_labels.push_back(l);
    }
    doc.setChannelCount(3);
    doc.setHoldsData(true);
}

void SampleFileTest::SetUp() {
    CKestruneDoc doc;
    fillSampleDocument(doc);
    sample = dir.file("sample.kvd");
    ASSERT_TRUE(doc.saveAs(sample, 1));
}

bool returnsWithin(const std::function<void()>& action, const std::string& fifoPath, int timeoutMs) {
    auto done = std::async(std::launch::async, action);
    if (done.wait_for(std::chrono::milliseconds(timeoutMs)) == std::future_status::ready) return true;
    while (done.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready) {
        const int fd = ::open(fifoPath.c_str(), O_WRONLY | O_NONBLOCK);
        if (fd >= 0) ::close(fd);
    }
    return false;
}

}  // namespace sonmetra::test
