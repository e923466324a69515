#pragma once

#include <cxxabi.h>

namespace vanta {

/// What `work` says, or `otherwise` if it throws: no exception may reach a host. The end of a thread that its
/// host cancels must, as the system aborts the process where that is held up.
template <typename Work, typename Result>
Result guarded(Work work, Result otherwise) {
    try {
        return work();
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        return otherwise;
    }
}

/// The same for work that has nothing to say.
template <typename Work>
void guarded(Work work) {
    guarded(
        [&] {
            work();
            return true;
        },
        false);
}

}  // namespace vanta
