// Scheduling wishes of the sound workers. The playback worker asks for the
// highest real-time priority the system grants; a refusal (no privilege) is
// ignored and the thread keeps normal priority.
#pragma once

namespace sonmetra {

// Applies to the calling thread. Returns true when the request was granted.
bool requestTimeCriticalPriority();

}  // namespace sonmetra
