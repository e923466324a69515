#pragma once

#include <cstddef>
#include <functional>

namespace vanta::test {

/// Lets memory run out. Linking it replaces operator new and delete in the whole program. What C libraries
/// get from malloc never fails: GLib, for one, would end the process.
///
/// While one stands, the allocation `failing` of the thread that made it, counted from 0, throws
/// std::bad_alloc; all others succeed. One at a time.
class AllocationFailure {
public:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    explicit AllocationFailure(std::size_t failing = kNone);
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;

    /// How many allocations this thread has made since, the failed one included.
    static std::size_t count();
};

/// Blocks that operator new has given out, on any thread, and that are not given back yet.
std::ptrdiff_t liveAllocations();

/// The most bytes from operator new that are held at a time while `work` runs, beyond those of before.
std::size_t mostBytesHeld(const std::function<void()>& work);

/// Runs `work` to count its allocations, then again with one allocation failing each time: all in turn, or
/// spread over `mostRuns` if there are more. Where the spread begins differs from run to run; it is printed,
/// and set by the environment variable VANTA_ALLOCATION_OFFSET. A run may throw std::bad_alloc, or come to an
/// end without what it lacked. `check` follows each run, and takes back what the run may have done: after it
/// as many blocks must live as before.
void failEachAllocation(
    const std::function<void()>& work, const std::function<void()>& check = [] {},
    std::size_t mostRuns = 500);

}  // namespace vanta::test
