#pragma once

#include "foundation/setting_serializer.hpp"
#include "plugin/settings/settings_store.hpp"

namespace vanta {

/// Reads the values of one key path. A value of another type counts as absent.
class RegistryReader final : public SettingSerializer {
public:
    explicit RegistryReader(const std::string& keyPath, SettingsHive hive = SettingsHive::User)
        : store(keyPath, hive) {}

    bool isWriter() const override { return false; }
    void binary(const std::string& key, std::vector<std::uint8_t>& bytes) override;
    int integer(const std::string& key, int value, int defaultValue) override;
    std::string text(const std::string& key, const std::string& value,
                     const std::string& defaultValue) override;

private:
    SettingsStore store;
};

/// Writes values of one key path of the user, each on its own. What cannot be stored is lost without a word.
class RegistryWriter final : public SettingSerializer {
public:
    explicit RegistryWriter(const std::string& keyPath) : store(keyPath) {}

    bool isWriter() const override { return true; }
    void binary(const std::string& key, std::vector<std::uint8_t>& bytes) override;
    int integer(const std::string& key, int value, int defaultValue) override;
    std::string text(const std::string& key, const std::string& value,
                     const std::string& defaultValue) override;

private:
    SettingsStore store;
};

}  // namespace vanta
