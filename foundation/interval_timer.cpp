#include "foundation/interval_timer.hpp"

#include <chrono>

namespace vanta {

std::int64_t SteadyIntervalTimer::monotonicMilliseconds() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace vanta
