#include "plugin/settings/settings_base.hpp"

#include "plugin/settings/registry_serializer.hpp"

namespace vanta {

/// Reads, and notes what it found.
class SettingsBase::Recorder final : public SettingSerializer {
public:
    Recorder(const std::string& keyPath, std::map<std::string, SettingValue>& recorded)
        : reader(keyPath), known(recorded) {}

    bool isWriter() const override { return false; }
    void binary(const std::string& key, std::vector<std::uint8_t>& bytes) override {
        reader.binary(key, bytes);
        known[key] = bytes;
    }
    int integer(const std::string& key, int value, int defaultValue) override {
        return record(key, reader.integer(key, value, defaultValue));
    }
    std::string text(const std::string& key, const std::string& value,
                     const std::string& defaultValue) override {
        return record(key, reader.text(key, value, defaultValue));
    }

private:
    template <typename T>
    T record(const std::string& key, const T& found) {
        known[key] = found;
        return found;
    }

    RegistryReader reader;
    std::map<std::string, SettingValue>& known;
};

/// Writes what differs from what is known to be stored.
class SettingsBase::ChangeWriter final : public SettingSerializer {
public:
    ChangeWriter(const std::string& keyPath, std::map<std::string, SettingValue>& stored)
        : store(keyPath), known(stored) {}

    bool isWriter() const override { return true; }
    void binary(const std::string& key, std::vector<std::uint8_t>& bytes) override { write(key, bytes); }
    int integer(const std::string& key, int value, int) override {
        write(key, value);
        return value;
    }
    std::string text(const std::string& key, const std::string& value, const std::string&) override {
        write(key, value);
        return value;
    }

private:
    void write(const std::string& key, const SettingValue& value) {
        const auto found = known.find(key);
        if (found != known.end() && found->second == value) return;
        // What could not be stored is tried again with the next change.
        if (store.write(key, value)) known[key] = value;
    }

    SettingsStore store;
    std::map<std::string, SettingValue>& known;
};

void SettingsBase::load() {
    Recorder recorder(keyPath, known);
    serialize(recorder);
}

void SettingsBase::propertyChanged(AbstractProperty&) {
    if (loaded) requestUpdate();
}

void SettingsBase::update() {
    UpdatedObject::update();
    ChangeWriter writer(keyPath, known);
    serialize(writer);
}

}  // namespace vanta
