#include "plugin/settings/settings_base.hpp"

#include "plugin/settings/registry_serializer.hpp"

namespace vanta {

/// Reads, and notes what it found.
class SettingsBase::Recorder final : public RegistryReader {
public:
    Recorder(const std::string& keyPath, std::map<std::string, SettingValue>& known)
        : RegistryReader(keyPath), known_(known) {}

private:
    SettingValue carry(const std::string& key, const SettingValue& value,
                       const SettingValue& defaultValue) override {
        return known_[key] = RegistryReader::carry(key, value, defaultValue);
    }

    std::map<std::string, SettingValue>& known_;
};

/// Writes what differs from what is known to be stored.
class SettingsBase::ChangeWriter final : public RegistryWriter {
public:
    ChangeWriter(const std::string& keyPath, std::map<std::string, SettingValue>& known)
        : RegistryWriter(keyPath), known_(known) {}

private:
    SettingValue carry(const std::string& key, const SettingValue& value, const SettingValue&) override {
        const auto found = known_.find(key);
        const bool isStored = found != known_.end() && found->second == value;
        // What could not be stored is tried again with the next change.
        if (!isStored && write(key, value)) known_[key] = value;
        return value;
    }

    std::map<std::string, SettingValue>& known_;
};

void SettingsBase::load() {
    Recorder recorder(keyPath_, known_);
    serialize(recorder);
}

void SettingsBase::propertyChanged(AbstractProperty&) {
    if (loaded) requestUpdate();
}

void SettingsBase::update() {
    UpdatedObject::update();
    ChangeWriter writer(keyPath_, known_);
    serialize(writer);
}

}  // namespace vanta
