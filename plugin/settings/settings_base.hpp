#pragma once

#include <map>
#include <string>

#include "foundation/property.hpp"
#include "foundation/setting_serializer.hpp"
#include "foundation/updated_object.hpp"
#include "plugin/settings/setting_value.hpp"

namespace vanta {

/// Properties that are kept under one key path and store themselves: once `loaded` is set, a change is
/// written at once, or at the end of the update block around it. Only what this object changed is written,
/// so that it never undoes what another process has stored since. The interface's thread.
class SettingsBase : public PropertyOwner, public UpdatedObject {
public:
    explicit SettingsBase(std::string keyPath) : loaded(nullptr, false), keyPath_(std::move(keyPath)) {}

    /// Reads or writes every value, in one fixed order.
    virtual void serialize(SettingSerializer& serializer) = 0;
    /// Reads all values and remembers them as stored. `loaded` stays as it is.
    void load();

    void propertyChanged(AbstractProperty& property) override;

    /// While false a change stays in memory.
    Property<bool> loaded;

protected:
    void update() override;

private:
    class Recorder;
    class ChangeWriter;

    std::string keyPath_;
    std::map<std::string, SettingValue> known_;  ///< what is stored, as far as this object knows
};

}  // namespace vanta
