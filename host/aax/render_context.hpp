#pragma once

#include "host/aax/standin/aax.hpp"

namespace vanta {

class AaxPluginAdapter;

/// The fields of the algorithm's context, by their indices.
enum class AaxField : AAX_CFieldIndex {
    MasterBypass,  ///< data in, int32: not 0 if bypassed
    Adapter,       ///< data in: pointer to the AaxPluginAdapter
    AudioIn,       ///< a pointer to each channel
    AudioOut,      ///< the same
    BufferLength,  ///< int32: samples
    SideChain,     ///< int32: which of the inputs it is
    SampleRate,    ///< float: Hz
    MidiIn,        ///< a node
    Transport,     ///< a node
    ResetRequest,  ///< private data, int32: not 0 to begin anew
    Meters,        ///< a pointer to the readings, 0 to 1
    Count
};

constexpr AAX_CFieldIndex indexOf(AaxField field) {
    return static_cast<AAX_CFieldIndex>(field);
}

/// One instance's fields, as a host hands them to the render entry.
class AaxRenderContext {
public:
    explicit AaxRenderContext(void* const* fields) : fields_(fields) {}

    /// Null if the host has no adapter yet.
    AaxPluginAdapter* adapter() const {
        auto* const posted = at<AaxPluginAdapter*>(AaxField::Adapter);
        return posted ? *posted : nullptr;
    }
    /// Null if the host leaves the field out.
    template <typename T>
    T* at(AaxField field) const {
        return static_cast<T*>(fields_[indexOf(field)]);
    }
    template <typename T>
    T value(AaxField field, T otherwise) const {
        const T* const given = at<T>(field);
        return given ? *given : otherwise;
    }

private:
    void* const* fields_;
};

/// The render entry of every component.
void aaxRender(void* const* const* contexts, std::int32_t count);

}  // namespace vanta
