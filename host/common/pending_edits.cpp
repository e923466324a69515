#include "host/common/pending_edits.hpp"

namespace vanta {

void PendingEdits::add(int index, HostCallbacks::Edit edit, float value) {
    Parameter& parameter = parameters_[static_cast<std::size_t>(index)];
    parameter.value.store(value);
    parameter.edits.fetch_or(bit(edit));
    any_.store(true);
}

void PendingEdits::forgetValues() {
    for (Parameter& parameter : parameters_) parameter.edits.fetch_and(~bit(HostCallbacks::Edit::Value));
}

}  // namespace vanta
