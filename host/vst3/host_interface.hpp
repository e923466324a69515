#pragma once

#include <utility>

#include <travesty/base.h>

namespace vanta::vst3 {

/// A reference to an object of the host's, given back at the end. Empty if the host does not have it.
template <typename Interface>
class HostInterface {
public:
    HostInterface() = default;
    /// Another reference to what is only lent.
    explicit HostInterface(Interface** lent) : object_(lent) {
        if (object_) v3_cpp_obj_ref(object_);
    }
    HostInterface(HostInterface&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    HostInterface& operator=(HostInterface&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~HostInterface() {
        if (object_) v3_cpp_obj_unref(object_);
    }

    /// What an object of the host's, or null, knows by the id of this interface.
    template <typename Other>
    static HostInterface of(Other** object, const v3_tuid id) {
        HostInterface found;
        if (!object || v3_cpp_obj_query_interface(object, id, &found.object_) != V3_OK)
            found.object_ = nullptr;
        return found;
    }

    explicit operator bool() const { return object_ != nullptr; }
    Interface** get() const { return object_; }
    bool operator==(const HostInterface& other) const { return object_ == other.object_; }

    /// One of its functions.
    template <typename Result, typename... Parameters, typename... Arguments>
    Result call(Result (*Interface::*function)(void*, Parameters...), Arguments... arguments) const {
        return (v3_cpp_obj(object_)->*function)(object_, arguments...);
    }

private:
    Interface** object_ = nullptr;
};

}  // namespace vanta::vst3
