#pragma once

#include <vector>

#include "interface/binding/editor.hpp"
#include "plugin/model/generic_plugin.hpp"

namespace vanta::interface {

/// What a user does to parameters, from taking hold to letting go: told to the host, kept as steps of undo.
/// Whatever part of an interface sets a parameter does it here. On the interface's thread.
class ParameterGestures {
public:
    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void parameterTouched(int /*index*/) {}
        virtual void parameterMoved(int /*index*/) {}
        virtual void parameterReleased(int /*index*/) {}
    };

    explicit ParameterGestures(GenericPlugin& plugin);
    /// Lets go of all that is held, as the host waits for it.
    ~ParameterGestures();
    ParameterGestures(const ParameterGestures&) = delete;
    ParameterGestures& operator=(const ParameterGestures&) = delete;

    /// They nest: two controls may hold one parameter.
    void begin(int index);
    /// `value` in the parameter's own numbers.
    void change(int index, float value);
    void end(int index);
    /// A whole gesture.
    void set(int index, float value);
    bool isHeld(int index) const { return held_[static_cast<std::size_t>(index)] > 0; }

    /// Null for none.
    void setEditor(Editor* editor) { editor_ = editor; }
    Editor* editor() const { return editor_; }
    void addListener(Listener& listener) { listeners_.push_back(&listener); }
    void removeListener(const Listener& listener) { std::erase(listeners_, &listener); }

private:
    template <typename Tell>
    void tellAll(Tell tell);

    GenericPlugin& model_;
    Editor* editor_ = nullptr;
    std::vector<Listener*> listeners_;
    std::vector<int> held_;  ///< by how many
};

}  // namespace vanta::interface
