#pragma once

#include <travesty/factory.h>

#include "host/common/embedded_view.hpp"
#include "host/vst3/com.hpp"
#include "host/vst3/host_interface.hpp"

namespace vanta::vst3 {

/// What a module tells of its one class, and how a host makes instances of it. The host's main thread.
class FactoryRole final : public ComInterface {
public:
    FactoryRole(ComObject& object, EmbeddedViewFactory views);

    v3_result factoryInfo(v3_factory_info* info) noexcept;
    std::int32_t classCount() noexcept;
    v3_result classInfo(std::int32_t index, v3_class_info* info) noexcept;
    v3_result createInstance(const std::uint8_t* classId, const std::uint8_t* interfaceId, void** instance);
    v3_result classInfo2(std::int32_t index, v3_class_info_2* info) noexcept;
    v3_result classInfo3(std::int32_t index, v3_class_info_3* info) noexcept;
    v3_result setHostContext(v3_funknown** context);

private:
    static const v3_plugin_factory_cpp kTable;

    EmbeddedViewFactory views_;
    HostInterface<v3_funknown> context_;
};

class Factory final : public ComObject {
public:
    explicit Factory(EmbeddedViewFactory views = {}) : role_(*this, std::move(views)) {}

    /// As a module hands it out.
    ComInterface& interface() { return role_; }

protected:
    ComInterface* interfaceOf(const std::uint8_t* id) noexcept override;

private:
    FactoryRole role_;
};

}  // namespace vanta::vst3
