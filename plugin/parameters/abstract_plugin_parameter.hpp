#pragma once

#include <string>

#include "foundation/realtime.hpp"
#include "plugin/base/generic_parameter_owner.hpp"

namespace vanta {

/// One setting, as the interface, the host, MIDI and preset files see it. A value that crosses an object
/// boundary is the parameter's own number: a float, or the index of an indexed parameter.
class AbstractPluginParameter {
public:
    enum class Kind { Float, Indexed };

    /// Adds itself to the owner's list.
    AbstractPluginParameter(GenericParameterOwner& owner, std::string name, Kind kind);
    virtual ~AbstractPluginParameter() = default;
    AbstractPluginParameter(const AbstractPluginParameter&) = delete;
    AbstractPluginParameter& operator=(const AbstractPluginParameter&) = delete;

    /// Between the own number and the number that a user sees.
    virtual float fromDisplay(float shown) const { return shown; }
    virtual float toDisplay(float value) const { return value; }
    /// Between the own number and 0 to 1.
    virtual float normalize(float value) const = 0;
    virtual float denormalize(float normal) const = 0;
    /// The same for a control with `steps` steps. False: the position selects nothing.
    virtual float normalizeZoned(float value, int steps) const;
    virtual bool denormalizeZoned(float normal, int steps, float* out) const;
    /// Reads what a user typed and limits it to the range. False: not understood.
    virtual bool parseText(const std::string& text, float* out) const;
    /// Whether `text` is understood but lies outside the range, so that `parseText` has to limit it.
    virtual bool exceedsRange(const std::string& text) const;
    virtual std::string text(float value) const = 0;
    /// At most `maxLength` characters; 0 means no limit.
    virtual std::string text(float value, int maxLength) const;
    virtual float defaultValue() const = 0;
    virtual float minimum() const = 0;
    virtual float maximum() const = 0;
    /// The index that a zone maps `mapped` to, or -1.
    virtual int zoneValue(int mapped) const;
    /// Changes `value` by the same ratio of shown values as from `from` to `to`.
    virtual float scaleValue(float value, float from, float to) const;
    /// Any thread.
    virtual float value() const = 0;
    /// Limits to the range, stores, and tells the owner if the value really changed. Ignores NaN. Any thread.
    virtual void setValue(float value, int flags) = 0;
    virtual bool isContinuous() const = 0;
    /// Drives the listeners and cells. On the owner's own thread: for a processor, the audio thread.
    VANTA_REALTIME virtual void applyValue(float value) = 0;

    const std::string& name() const { return name_; }
    int index() const { return index_; }
    Kind kind() const { return kind_; }
    GenericParameterOwner& owner() const { return *owner_; }

    bool automatable = true;
    std::string displayName;  ///< the name that the host sees
    std::string helpText;

private:
    std::string name_;
    int index_ = -1;
    GenericParameterOwner* owner_;
    Kind kind_;
};

}  // namespace vanta
