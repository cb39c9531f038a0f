#include "ChannelSummaries.h"

const sonmetra::MinMaxSummary& ChannelSummaries::forChannel(int index, const sonmetra::CChannel& channel) {
    Entry& e = m_entries[static_cast<std::size_t>(index)];
    const std::int16_t* data = channel.m_samples.data();
    const std::size_t size = channel.m_samples.size();
    if (!e.valid || e.data != data || e.size != size) {
        e.summary.rebuild(data, size);
        e.data = data;
        e.size = size;
        e.valid = true;
    }
    return e.summary;
}

void ChannelSummaries::invalidateAll() {
    for (Entry& e : m_entries) e.valid = false;
}
