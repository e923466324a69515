#include "plugin/settings/settings_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ostream>
#include <span>

#include "foundation/file_replacement.hpp"
#include "foundation/hex_text.hpp"

namespace vanta {
namespace {

constexpr const char* kIntegers = "Integers";
constexpr const char* kTexts = "Texts";
constexpr const char* kRawTexts = "Raw Texts";  ///< texts that are not UTF-8, as paths may be
constexpr const char* kBytes = "Bytes";
constexpr std::array<const char*, 4> kGroups{kIntegers, kTexts, kRawTexts, kBytes};

/// Far above what settings need; a larger file is not one of ours.
constexpr off_t kLargestFile = 1 << 20;

struct FreeMemory {
    void operator()(gchar* text) const { g_free(text); }
};
using GText = std::unique_ptr<gchar, FreeMemory>;

class OpenFile {
public:
    // A pipe in the file's place must not hold up the host.
    explicit OpenFile(const std::filesystem::path& path)
        : descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~OpenFile() {
        if (descriptor >= 0) ::close(descriptor);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    const int descriptor;
};

std::optional<std::string> readAll(int descriptor, std::size_t size) {
    std::string content(size, '\0');
    std::size_t filled = 0;
    while (filled < size) {
        const ssize_t count = ::read(descriptor, content.data() + filled, size - filled);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return {};
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
    }
    content.resize(filled);
    return content;
}

std::span<const std::uint8_t> bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

SettingsFile::SettingsFile(const std::filesystem::path& path) : values_(g_key_file_new()) {
    const OpenFile file(path);
    if (file.descriptor < 0) {
        state_ = errno == ENOENT || errno == ENOTDIR ? State::Missing : State::Unreadable;
        return;
    }
    struct stat status {};
    if (::fstat(file.descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        state_ = State::Unreadable;
        return;
    }
    if (status.st_size > kLargestFile) {
        state_ = State::Damaged;
        return;
    }
    const auto content = readAll(file.descriptor, static_cast<std::size_t>(status.st_size));
    state_ = content ? parse(*content) : State::Unreadable;
}

SettingsFile::State SettingsFile::parse(const std::string& content) {
    // A disk that lost power can leave a file of zeros, which would pass as one long comment or key.
    const bool isText = content.find('\0') == std::string::npos;
    if (isText && g_key_file_load_from_data(values_.get(), content.data(), content.size(),
                                            G_KEY_FILE_KEEP_COMMENTS, nullptr)) {
        return State::Sound;
    }
    values_.reset(g_key_file_new());  // what was parsed before the fault
    return State::Damaged;
}

bool SettingsFile::isName(const std::string& name) {
    const auto isPlain = [](unsigned char c) { return g_ascii_isalnum(c) || c == '_' || c == '-'; };
    return !name.empty() && std::all_of(name.begin(), name.end(), isPlain);
}

std::optional<std::string> SettingsFile::string(const char* group, const std::string& name) const {
    const GText text(g_key_file_get_string(values_.get(), group, name.c_str(), nullptr));
    if (!text) return {};
    return text.get();
}

std::optional<SettingValue> SettingsFile::get(const std::string& name) const {
    if (!isName(name)) return {};
    GError* error = nullptr;
    const int number = g_key_file_get_integer(values_.get(), kIntegers, name.c_str(), &error);
    if (!error) return number;
    g_error_free(error);
    if (auto text = string(kTexts, name)) return *text;
    if (const auto digits = string(kRawTexts, name)) {
        if (const auto bytes = fromHex(*digits)) return std::string(bytes->begin(), bytes->end());
    }
    if (const auto digits = string(kBytes, name)) {
        if (auto bytes = fromHex(*digits)) return *bytes;
    }
    return {};
}

void SettingsFile::set(const std::string& name, const SettingValue& value) {
    const char* group = kIntegers;
    if (const auto* text = std::get_if<std::string>(&value)) {
        const bool isUtf8 = g_utf8_validate(text->data(), static_cast<gssize>(text->size()), nullptr);
        group = isUtf8 ? kTexts : kRawTexts;  // a zero byte counts as invalid there
        if (isUtf8) {
            g_key_file_set_string(values_.get(), group, name.c_str(), text->c_str());
        } else {
            g_key_file_set_string(values_.get(), group, name.c_str(), toHex(bytesOf(*text)).c_str());
        }
    } else if (const auto* bytes = std::get_if<std::vector<std::uint8_t>>(&value)) {
        group = kBytes;
        g_key_file_set_string(values_.get(), group, name.c_str(), toHex(*bytes).c_str());
    } else {
        g_key_file_set_integer(values_.get(), group, name.c_str(), std::get<std::int32_t>(value));
    }
    for (const char* other : kGroups) {
        if (other != group) drop(other, name);
    }
}

// Of a name that a hand-edited file gives twice, removing one only uncovers the other, and only when the file
// is read again.
void SettingsFile::drop(const char* group, const std::string& name) {
    while (g_key_file_remove_key(values_.get(), group, name.c_str(), nullptr)) {
        gsize size = 0;
        const GText content(g_key_file_to_data(values_.get(), &size, nullptr));
        g_key_file_load_from_data(values_.get(), content.get(), size, G_KEY_FILE_KEEP_COMMENTS, nullptr);
    }
}

bool SettingsFile::save(const std::filesystem::path& path) const {
    gsize size = 0;
    const GText content(g_key_file_to_data(values_.get(), &size, nullptr));
    return content && replaceFile(path, [&](std::ostream& file) {
               return !file.write(content.get(), static_cast<std::streamsize>(size)).fail();
           });
}

}  // namespace vanta
