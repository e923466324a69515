#include "host/vst3/factory.hpp"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "host/common/product_identity.hpp"
#include "host/vst3/single_component.hpp"
#include "host/vst3/utf16.hpp"

namespace vanta::vst3 {
namespace {

constexpr std::int32_t kUnicode = 0x10;
constexpr std::int32_t kAnyNumber = 0x7FFFFFFF;
constexpr const char* kAudioModule = "Audio Module Class";

constexpr int digitOf(char c) {
    return c <= '9' ? c - '0' : c - 'A' + 10;
}

/// Of the class, for good: sessions find the plug-in by it.
constexpr auto kClassId = [] {
    constexpr std::string_view digits = VANTA_VST3_CLASS_ID;
    std::array<std::uint8_t, sizeof(v3_tuid)> id{};
    static_assert(digits.size() == 2 * id.size());
    for (std::size_t i = 0; i < id.size(); ++i) {
        id[i] = static_cast<std::uint8_t>(digitOf(digits[2 * i]) * 16 + digitOf(digits[2 * i + 1]));
    }
    return id;
}();

template <std::size_t size>
void write(std::string_view text, char (&out)[size]) {
    const std::size_t length = text.copy(out, size - 1);
    std::fill(out + length, out + size, '\0');
}

template <std::size_t size>
void write(std::string_view text, std::int16_t (&out)[size]) {
    writeUtf16(text, out);
}

/// What all generations of the description have.
template <typename Info>
v3_result describe(std::int32_t index, Info* info) {
    if (!info || index != 0) return V3_INVALID_ARG;
    *info = {};
    std::ranges::copy(kClassId, info->class_id);
    info->cardinality = kAnyNumber;
    write(kAudioModule, info->category);
    write(productIdentity().name, info->name);
    return V3_OK;
}

template <typename Info>
v3_result describeMore(std::int32_t index, Info* info) {
    if (const v3_result result = describe(index, info); result != V3_OK) return result;
    write(VANTA_VST3_CATEGORIES, info->sub_categories);
    write(productIdentity().vendor, info->vendor);
    write(productIdentity().version, info->version);
    write(VANTA_VST3_SDK_VERSION, info->sdk_version);
    return V3_OK;
}

}  // namespace

const v3_plugin_factory_cpp FactoryRole::kTable{
    kUnknown,
    {
        .get_factory_info = entry<&FactoryRole::factoryInfo>,
        .num_classes = entry<&FactoryRole::classCount>,
        .get_class_info = entry<&FactoryRole::classInfo>,
        .create_instance = entry<&FactoryRole::createInstance>,
    },
    {.get_class_info_2 = entry<&FactoryRole::classInfo2>},
    {
        .get_class_info_utf16 = entry<&FactoryRole::classInfo3>,
        .set_host_context = entry<&FactoryRole::setHostContext>,
    },
};

FactoryRole::FactoryRole(ComObject& object, EmbeddedViewFactory views)
    : ComInterface(kTable, object), views_(std::move(views)) {}

v3_result FactoryRole::factoryInfo(v3_factory_info* info) noexcept {
    if (!info) return V3_INVALID_ARG;
    *info = {};
    write(productIdentity().vendor, info->vendor);
    write(productIdentity().uri, info->url);
    info->flags = kUnicode;
    return V3_OK;
}

std::int32_t FactoryRole::classCount() noexcept {
    return 1;
}

v3_result FactoryRole::classInfo(std::int32_t index, v3_class_info* info) noexcept {
    return describe(index, info);
}

v3_result FactoryRole::classInfo2(std::int32_t index, v3_class_info_2* info) noexcept {
    return describeMore(index, info);
}

v3_result FactoryRole::classInfo3(std::int32_t index, v3_class_info_3* info) noexcept {
    return describeMore(index, info);
}

v3_result FactoryRole::createInstance(const std::uint8_t* classId, const std::uint8_t* interfaceId,
                                      void** instance) {
    if (!instance) return V3_INVALID_ARG;
    *instance = nullptr;
    if (!classId || !interfaceId || !v3_tuid_match(classId, kClassId.data())) return V3_NO_INTERFACE;
    auto* const made = new SingleComponent(views_, context_.get());
    const v3_result result = made->query(interfaceId, instance);
    made->unref();
    return result;
}

v3_result FactoryRole::setHostContext(v3_funknown** context) {
    context_ = HostInterface<v3_funknown>(context);
    return V3_OK;
}

ComInterface* Factory::interfaceOf(const std::uint8_t* id) noexcept {
    for (const std::uint8_t* known :
         {v3_funknown_iid, v3_plugin_factory_iid, v3_plugin_factory_2_iid, v3_plugin_factory_3_iid}) {
        if (v3_tuid_match(id, known)) return &role_;
    }
    return nullptr;
}

}  // namespace vanta::vst3
