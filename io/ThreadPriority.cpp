#include "ThreadPriority.h"

#include <pthread.h>
#include <sched.h>

namespace sonmetra {

bool requestTimeCriticalPriority() {
    sched_param param{};
    param.sched_priority = sched_get_priority_max(SCHED_FIFO);
    if (param.sched_priority < 0) return false;
    return pthread_setschedparam(pthread_self(), SCHED_FIFO, &param) == 0;
}

}  // namespace sonmetra
