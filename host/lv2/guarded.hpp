#pragma once

namespace vanta {

/// What `work` says, or `otherwise` if it throws: no exception may reach a host.
template <typename Work, typename Result>
Result guarded(Work work, Result otherwise) {
    try {
        return work();
    } catch (...) {
        return otherwise;
    }
}

/// The same for work that has nothing to say.
template <typename Work>
void guarded(Work work) {
    try {
        work();
    } catch (...) {
    }
}

}  // namespace vanta
