#pragma once

#include "foundation/setting_serializer.hpp"
#include "plugin/settings/settings_store.hpp"

namespace vanta {

/// A serializer over a store that keeps the types of its values. A derived class carries one value of any
/// type, in its own direction.
class RegistrySerializer : public SettingSerializer {
public:
    void binary(const std::string& key, std::vector<std::uint8_t>& bytes) final;
    int integer(const std::string& key, int value, int defaultValue) final;
    std::string text(const std::string& key, const std::string& value, const std::string& defaultValue) final;

protected:
    /// The value that holds from now on, of the type of `value` and `defaultValue`, which are of one type.
    virtual SettingValue carry(const std::string& key, const SettingValue& value,
                               const SettingValue& defaultValue) = 0;
};

/// Reads the values of one key path. A value of another type counts as absent.
class RegistryReader : public RegistrySerializer {
public:
    explicit RegistryReader(const std::string& keyPath, SettingsHive hive = SettingsHive::User)
        : store_(keyPath, hive) {}

    bool isWriter() const override { return false; }

protected:
    SettingValue carry(const std::string& key, const SettingValue& value,
                       const SettingValue& defaultValue) override;

private:
    SettingsStore store_;
};

/// Writes values of one key path of the user, each on its own. What cannot be stored is silently lost.
class RegistryWriter : public RegistrySerializer {
public:
    explicit RegistryWriter(const std::string& keyPath) : store_(keyPath) {}

    bool isWriter() const override { return true; }

protected:
    SettingValue carry(const std::string& key, const SettingValue& value,
                       const SettingValue& defaultValue) override;
    /// False if it could not be stored.
    bool write(const std::string& key, const SettingValue& value) const { return store_.write(key, value); }

private:
    SettingsStore store_;
};

}  // namespace vanta
