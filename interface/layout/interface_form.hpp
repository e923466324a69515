#pragma once

#include "interface/layout/layout_context.hpp"

namespace vanta::interface {

/// All controls between the bars. Another size may want another form: then this one goes with its controls.
class InterfaceForm {
public:
    virtual ~InterfaceForm() = default;

    virtual bool isCompact() const = 0;
    /// The root has another size, or the form is new.
    virtual void layOut() = 0;
    virtual void follow(const ParameterChange& change) = 0;
    virtual void channelLayoutChanged() = 0;
    /// Hz.
    virtual void setSampleRate(float /*rate*/) {}
    /// The picture of all that has been begins anew.
    virtual void restartPicture() {}
};

}  // namespace vanta::interface
