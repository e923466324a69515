#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "foundation/channel_layout.hpp"
#include "host/aax_host/aax_collection.hpp"

namespace vanta {

/// A loaded module and what it says of itself. It goes when the last of its instances has gone.
class AaxModule {
public:
    /// Failure, with the path in front, for a file that is no module of this interface or does not describe
    /// itself.
    explicit AaxModule(const std::filesystem::path& file);
    ~AaxModule();
    AaxModule(const AaxModule&) = delete;
    AaxModule& operator=(const AaxModule&) = delete;

    const std::filesystem::path& path() const { return path_; }
    const AaxCollection& description() const { return description_; }
    /// Of all effects, in the order in which they were described.
    std::vector<const AaxComponent*> components() const;
    /// Null if there is none.
    const AaxComponent* find(ChannelLayout layout, bool offline) const;
    IACFClassFactory& factory() const { return *factory_; }
    /// Whether nothing that it has made is left.
    bool canUnload() const;

private:
    template <typename Proc>
    Proc symbol(const char* name) const;
    void open();
    void scan();

    struct Close {
        void operator()(void* library) const;
    };

    std::filesystem::path path_;
    std::unique_ptr<void, Close> library_;
    IACFClassFactory* factory_ = nullptr;
    AaxCollection description_;
};

}  // namespace vanta
