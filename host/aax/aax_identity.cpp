#include "host/aax/aax_identity.hpp"

#include "host/aax/stem_formats.hpp"
#include "host/common/product_identity.hpp"

namespace vanta {
namespace {

constexpr char kCode[] = VANTA_AAX_CODE;
static_assert(sizeof(kCode) == 5);

char lastCharacter(int flags) {
    if (flags & kAaxAudioSuite) return flags & kAaxMono ? '6' : '5';
    if (flags & kAaxMonoToStereo) return '1';
    return flags & kAaxMono ? '2' : kCode[3];
}

}  // namespace

AAX_CTypeID aaxManufacturerId() {
    return AAX_FourChars(VANTA_AAX_MANUFACTURER);
}

AAX_CTypeID aaxPluginId(int flags, std::optional<ChannelLayout> layout) {
    const char first = layout ? stemCharacter(*layout) : kCode[0];
    const char id[] = {first, kCode[1], kCode[2], lastCharacter(flags), '\0'};
    return AAX_FourChars(id);
}

std::string aaxEffectId(const Product& product, int flags) {
    std::string id = VANTA_AAX_DOMAIN + product.name + '.' + std::to_string(product.majorVersion) + ".AAX";
    if (flags & kAaxAudioSuite) id += ".AS";
    if (flags & kAaxMono) {
        id += ".Mono";
    } else if (flags & kAaxMonoToStereo) {
        id += ".MonoToStereo";
    }
    return id;
}

std::vector<std::string> aaxPackageNames() {
    const std::string name = productIdentity().name;
    return {std::string(productIdentity().vendor) + ' ' + name, name};
}

std::vector<std::string> aaxEffectNames(int flags) {
    std::vector<std::string> names = aaxPackageNames();
    // Some control surfaces have room for four characters.
    names.emplace_back(kCode);
    if ((flags & kAaxMono) && (flags & kAaxAudioSuite)) {
        for (std::string& name : names) name += " (mono)";
    }
    return names;
}

}  // namespace vanta
