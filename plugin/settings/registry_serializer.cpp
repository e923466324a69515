#include "plugin/settings/registry_serializer.hpp"

namespace vanta {
namespace {

template <typename T>
T valueOr(const SettingsStore& store, const std::string& key, const T& defaultValue) {
    const auto value = store.read(key);
    const T* found = value ? std::get_if<T>(&*value) : nullptr;
    return found ? *found : defaultValue;
}

}  // namespace

void RegistryReader::binary(const std::string& key, std::vector<std::uint8_t>& bytes) {
    bytes = valueOr(store, key, std::vector<std::uint8_t>());
}

int RegistryReader::integer(const std::string& key, int, int defaultValue) {
    return valueOr<std::int32_t>(store, key, defaultValue);
}

std::string RegistryReader::text(const std::string& key, const std::string&,
                                 const std::string& defaultValue) {
    return valueOr(store, key, defaultValue);
}

void RegistryWriter::binary(const std::string& key, std::vector<std::uint8_t>& bytes) {
    store.write(key, bytes);
}

int RegistryWriter::integer(const std::string& key, int value, int) {
    store.write(key, value);
    return value;
}

std::string RegistryWriter::text(const std::string& key, const std::string& value, const std::string&) {
    store.write(key, value);
    return value;
}

}  // namespace vanta
