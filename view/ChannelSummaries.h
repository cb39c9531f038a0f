// The min/max summaries of a document's channels, built when first needed
// and rebuilt when a channel's sample block changes size or place (edits,
// recordings) or when the owner says the samples were edited in place.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "document/CKestruneDoc.h"
#include "document/MinMaxSummary.h"

class ChannelSummaries {
public:
    // The summary of channel slot `index`, rebuilt if its samples changed.
    const sonmetra::MinMaxSummary& forChannel(int index, const sonmetra::CChannel& channel);
    // Every summary is rebuilt at its next use (samples changed in place).
    void invalidateAll();

private:
    struct Entry {
        const std::int16_t* data = nullptr;
        std::size_t size = 0;
        bool valid = false;
        sonmetra::MinMaxSummary summary;
    };
    std::array<Entry, sonmetra::CKestruneDoc::kSlots> m_entries;
};
