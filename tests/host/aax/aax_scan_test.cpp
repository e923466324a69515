#include <fstream>
#include <iterator>

#include "host/aax_host/aax_module.hpp"
#include "host/aax_host/scan_table.hpp"
#include "plugin/settings/settings_store.hpp"
#include "tests/host/aax/aax_fixture.hpp"
#include "tests/host/aax/aax_format_host.hpp"

#ifdef __SANITIZE_ADDRESS__
/// The leak checker else reads thread storage of modules by sizes that it has guessed, and crashes.
extern "C" [[gnu::visibility("default")]] const char* __asan_default_options();
const char* __asan_default_options() {
    return "intercept_tls_get_addr=0";
}
#endif

namespace vanta::test {
namespace {

using Kind = AaxComponent::Kind;

// Identifier, in real time or offline, stem format: as sessions know them for good.
const std::vector<std::tuple<std::string, bool, AAX_EStemFormat>> kComponents{
    {"Vn2p", false, 0x10002}, {"Vn25", true, 0x10002}, {"Vn22", false, 0x1},      {"Vn26", true, 0x1},
    {"3n2p", false, 0x20003}, {"3n25", true, 0x20003}, {"qn2p", false, 0x40004},  {"qn25", true, 0x40004},
    {"4n2p", false, 0x30004}, {"4n25", true, 0x30004}, {"5n2p", false, 0x50005},  {"5n25", true, 0x50005},
    {"6n2p", false, 0x60006}, {"6n25", true, 0x60006}, {"an2p", false, 0x70006},  {"an25", true, 0x70006},
    {"bn2p", false, 0x80007}, {"bn25", true, 0x80007}, {"sn2p", false, 0x90007},  {"sn25", true, 0x90007},
    {"dn2p", false, 0xb0007}, {"dn25", true, 0xb0007}, {"Sn2p", false, 0xa0008},  {"Sn25", true, 0xa0008},
    {"Dn2p", false, 0xc0008}, {"Dn25", true, 0xc0008}, {"9n2p", false, 0x140009}, {"9n25", true, 0x140009},
    {"xn2p", false, 0xd000a}, {"xn25", true, 0xd000a},
};

class AaxScan : public testing::Test {
protected:
    static AAX_CTypeID idOf(const std::string& text) {
        AAX_CTypeID id = 0;
        for (const char character : text) id = id << 8 | static_cast<unsigned char>(character);
        return id;
    }
    static void expectProperties(const AaxPropertyMap& properties,
                                 const std::map<std::int32_t, std::uint32_t>& expected) {
        std::map<std::int32_t, std::uint32_t> found;
        for (const auto& [number, value] : properties.all())
            found[number] = static_cast<std::uint32_t>(value);
        EXPECT_EQ(found, expected);
    }
    static void expectComponents(const AaxModule& module) {
        const auto all = module.components();
        ASSERT_EQ(all.size(), kComponents.size());
        for (std::size_t i = 0; i < all.size(); ++i) {
            const auto& [id, offline, stem] = kComponents[i];
            SCOPED_TRACE(id);
            expectProperties(all[i]->properties, {{51, stem}, {52, stem}, {offline ? 14 : 13, idOf(id)}});
        }
    }

    UserHome home_;
};

TEST_F(AaxScan, OneEffectHasAllComponents) {
    const AaxModule module(AaxFormatHost::path());
    const AaxCollection& described = module.description();
    EXPECT_EQ(described.manufacturer, "Quillmark");
    EXPECT_EQ(described.packageNames, (std::vector<std::string>{"Quillmark Vanta 2", "Vanta 2"}));
    EXPECT_EQ(described.packageVersion, 2u);
    ASSERT_EQ(described.effects.size(), 1u);
    EXPECT_EQ(described.effects[0].id, "com.quillmark.Vanta.2.AAX");
    const AaxEffect& effect = *described.effects[0].effect;
    EXPECT_EQ(effect.names, (std::vector<std::string>{"Quillmark Vanta 2", "Vanta 2", "Vn2p"}));
    EXPECT_EQ(effect.category, 0x2u);
    EXPECT_EQ(effect.pageTable, "DigiPageTable.xml");
    EXPECT_TRUE(effect.newEditor && effect.newHostProcessor);
    expectProperties(effect.properties,
                     {{11, idOf("Qmrk")}, {12, idOf("Vn2p")}, {60, 1}, {301, 1}, {58, 0x7fffffff}, {103, 1}});
    ASSERT_EQ(effect.meters.size(), 1u);
    EXPECT_EQ(effect.meters[0].id, idOf("mtGC"));
    EXPECT_EQ(effect.meters[0].name, "Gain Reduction");
    expectProperties(effect.meters[0].properties, {{200, 2}, {201, 0}, {202, 1}});
    expectComponents(module);
    constexpr Kind kFields[] = {Kind::DataIn,       Kind::DataIn,      Kind::AudioIn,    Kind::AudioOut,
                                Kind::BufferLength, Kind::SideChain,   Kind::SampleRate, Kind::MidiIn,
                                Kind::Transport,    Kind::PrivateData, Kind::Meters};
    for (const AaxComponent* component : module.components()) {
        ASSERT_EQ(component->fields.size(), std::size(kFields));
        for (const auto& [index, field] : component->fields) EXPECT_EQ(field.kind, kFields[index]) << index;
        EXPECT_EQ(component->fields.at(0).size, 4u);
        EXPECT_EQ(component->fields.at(1).size, sizeof(void*));
        EXPECT_EQ(component->fields.at(7).channels, 0xffffu);
        EXPECT_EQ(component->fields.at(7).name, "Vanta 2");
        EXPECT_EQ(component->fields.at(9).size, 4u);
        EXPECT_EQ(component->fields.at(10).meters, std::vector{idOf("mtGC")});
    }
}

TEST_F(AaxScan, WithoutCorrectIdsEachComponentIsDescribedByItself) {
    ASSERT_TRUE(SettingsStore(vantaProduct().key()).write("CorrectDigiProductIds", 0));
    const AaxModule module(AaxFormatHost::path());
    expectComponents(module);
    ASSERT_EQ(module.description().effects.size(), kComponents.size());
    for (std::size_t i = 0; i < kComponents.size(); ++i) {
        const auto& [id, offline, stem] = kComponents[i];
        SCOPED_TRACE(id);
        const bool isMono = stem == 0x1;
        const AaxCollection::Entry& entry = module.description().effects[i];
        EXPECT_EQ(entry.id, std::string("com.quillmark.Vanta.2.AAX") + (offline ? ".AS" : "") +
                                (isMono ? ".Mono" : ""));
        const std::string product = isMono ? (offline ? "Vn26" : "Vn22") : (offline ? "Vn25" : "Vn2p");
        EXPECT_EQ(entry.effect->properties.find(12), idOf(product));
        EXPECT_EQ(entry.effect->names.front(),
                  offline && isMono ? "Quillmark Vanta 2 (mono)" : "Quillmark Vanta 2");
    }
}

TEST_F(AaxScan, TheTableInTheDocumentsIsTheModules) {
    std::ifstream file(VANTA_AAX_TABLE);
    const std::string document{std::istreambuf_iterator<char>(file), {}};
    EXPECT_NE(document.find(scanTable(AaxModule(AaxFormatHost::path()))), std::string::npos)
        << "make aax-table writes it anew";
}

/// A host that gives up at one of its calls.
class TiredCollection final : public AAX_ICollection {
public:
    explicit TiredCollection(int calls) : left_(calls) {}
    AAX_IEffectDescriptor* NewDescriptor() override { return tires() ? nullptr : host_.NewDescriptor(); }
    AAX_Result AddEffect(const char* id, const AAX_IEffectDescriptor* effect) override {
        return tires() ? -7 : host_.AddEffect(id, effect);
    }
    AAX_Result SetManufacturerName(const char* name) override {
        return tires() ? -7 : host_.SetManufacturerName(name);
    }
    AAX_Result AddPackageName(const char* name) override { return tires() ? -7 : host_.AddPackageName(name); }
    AAX_Result SetPackageVersion(std::uint32_t v) override {
        return tires() ? -7 : host_.SetPackageVersion(v);
    }

private:
    bool tires() { return left_-- == 0; }

    int left_;
    AaxCollection host_;
};

TEST_F(AaxScan, AHostThatGivesUpIsToldItsError) {
    const AaxModule module(AaxFormatHost::path());
    const AAX_Result expected[] = {AAX_ERROR_NULL_OBJECT, -7, -7, -7, -7, -7, AAX_SUCCESS};
    for (int calls = 0; calls < 7; ++calls) {
        TiredCollection collection(calls);
        EXPECT_EQ(module.factory().GetEffectDescriptions(&collection), expected[calls]) << calls;
    }
    EXPECT_EQ(module.factory().GetEffectDescriptions(nullptr), AAX_ERROR_NULL_OBJECT);
    EXPECT_TRUE(module.canUnload());
    AaxInstance instance(*module.find(kStereoLayout, false), kAaxRate);
    ASSERT_EQ(instance.initialize(), AAX_SUCCESS);
    EXPECT_FALSE(module.canUnload());
}

}  // namespace
}  // namespace vanta::test
