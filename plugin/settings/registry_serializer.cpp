#include "plugin/settings/registry_serializer.hpp"

namespace vanta {

void RegistrySerializer::binary(const std::string& key, std::vector<std::uint8_t>& bytes) {
    bytes = std::get<std::vector<std::uint8_t>>(carry(key, bytes, std::vector<std::uint8_t>()));
}

int RegistrySerializer::integer(const std::string& key, int value, int defaultValue) {
    return std::get<std::int32_t>(carry(key, value, defaultValue));
}

std::string RegistrySerializer::text(const std::string& key, const std::string& value,
                                     const std::string& defaultValue) {
    return std::get<std::string>(carry(key, value, defaultValue));
}

SettingValue RegistryReader::carry(const std::string& key, const SettingValue&,
                                   const SettingValue& defaultValue) {
    const auto found = store_.read(key);
    return found && found->index() == defaultValue.index() ? *found : defaultValue;
}

SettingValue RegistryWriter::carry(const std::string& key, const SettingValue& value, const SettingValue&) {
    write(key, value);
    return value;
}

}  // namespace vanta
