#include "foundation/interval_timer.hpp"

#include <chrono>

namespace vanta {

std::uint32_t SteadyIntervalTimer::monotonicMilliseconds() {
    using namespace std::chrono;
    return static_cast<std::uint32_t>(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

}  // namespace vanta
