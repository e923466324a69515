#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vanta {

/// A store of named values with one operation a type that serves both directions: a reader ignores `value`
/// and returns what it finds, or `defaultValue`; a writer stores `value` and returns it. So
/// `x = settings.integer("Key", x, x)` both loads and saves. Nothing here throws for a missing value.
///
/// Only `text` must be given; the other types go through it, as numbers in the C locale whatever the
/// process has set, and as hexadecimal digits for bytes. A store with native types overrides them.
class SettingSerializer {
public:
    virtual ~SettingSerializer() = default;
    virtual bool isWriter() const = 0;
    /// A reader that finds nothing fitting leaves `bytes` empty.
    virtual void binary(const std::string& key, std::vector<std::uint8_t>& bytes);
    virtual bool boolean(const std::string& key, bool value, bool defaultValue);
    /// Kept to 15 significant digits.
    virtual double real(const std::string& key, double value, double defaultValue);
    virtual int integer(const std::string& key, int value, int defaultValue);
    virtual std::string text(const std::string& key, const std::string& value,
                             const std::string& defaultValue) = 0;
};

}  // namespace vanta
