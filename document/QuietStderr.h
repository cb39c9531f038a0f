// Keeps third-party libraries' diagnostics off the user's terminal: while a
// QuietStderr lives, the process's standard error goes to /dev/null.
//
// libsndfile's MPEG decoder (libmpg123) prints notes such as "Illegal
// Audio-MPEG-Header" while it probes a file that is no MPEG stream; our own
// readers then report the file with their own message. Only the library
// calls are wrapped, never a message of ours. Nested and concurrent uses
// share one redirection, restored when the last one ends.
#pragma once

namespace sonmetra {

class QuietStderr {
public:
    QuietStderr();
    ~QuietStderr();
    QuietStderr(const QuietStderr&) = delete;
    QuietStderr& operator=(const QuietStderr&) = delete;
};

}  // namespace sonmetra
