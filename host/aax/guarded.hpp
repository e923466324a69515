#pragma once

#include "host/aax/standin/aax.hpp"

namespace vanta {

/// An error of the interface's on its way to whoever answers the host.
struct AaxError {
    AAX_Result code;
};

inline void check(AAX_Result result) {
    if (result != AAX_SUCCESS) throw AaxError{result};
}

/// What the host was asked for; AAX_ERROR_NULL_OBJECT if it has none.
template <typename T>
T& present(T* object) {
    if (!object) throw AaxError{AAX_ERROR_NULL_OBJECT};
    return *object;
}

/// Answers a host's call: no exception leaves it.
template <typename Work>
AAX_Result guarded(Work work) noexcept {
    try {
        return work();
    } catch (const AaxError& error) {
        return error.code;
    } catch (...) {
        return AAX_ERROR_EXCEPTION;
    }
}

}  // namespace vanta
