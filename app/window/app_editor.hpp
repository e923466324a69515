#pragma once

#include "interface/binding/editor.hpp"

namespace vanta {

/// A window of the program's own: it takes any size, and there is no host to tell of gestures.
class AppEditor final : public interface::Editor {
public:
    void beginGesture(int) override {}
    void endGesture(int) override {}
    bool canResize() const override { return true; }
    bool resize(InterfaceSize) override { return true; }
};

}  // namespace vanta
