// Shared pieces of the main frame's menu and toolbar tests: documents
// written as .kvd files and opened through the frame.
#pragma once

#include <QMenuBar>
#include <QtTest>
#include <string>
#include <vector>

#include "document/CKestruneDoc.h"
#include "tests/support/GuiTestSupport.h"
#include "tests/support/TestDocument.h"

namespace menutest {

using namespace sonmetra::test;

struct ChannelSpec {
    std::string name;
    std::vector<std::int16_t> samples;
    bool audio = false;
};

// A document of the given channels at rateHz, written to path.
inline bool writeDocument(const QString& path, const std::vector<ChannelSpec>& channels, double rateHz) {
    sonmetra::CKestruneDoc doc;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        fillChannel(doc, static_cast<int>(i), channels[i].name, rateHz, channels[i].samples, channels[i].audio);
        doc.channel(static_cast<int>(i)).m_number = static_cast<std::int32_t>(i + 1);
    }
    return doc.saveAs(path.toStdString(), 1);
}

inline std::vector<std::int16_t> constant(std::size_t n, std::int16_t value) {
    return std::vector<std::int16_t>(n, value);
}

inline std::vector<std::int16_t> samplesOf(const sonmetra::CChannel& c) {
    return std::vector<std::int16_t>(c.m_samples.data(), c.m_samples.data() + c.m_samples.size());
}

}  // namespace menutest
