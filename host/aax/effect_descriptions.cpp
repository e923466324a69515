#include "host/aax/effect_descriptions.hpp"

#include "gui/controls/modifier_map.hpp"
#include "host/aax/aax_identity.hpp"
#include "host/aax/aax_offline_processor.hpp"
#include "host/aax/aax_plugin_adapter.hpp"
#include "host/aax/aax_plugin_editor.hpp"
#include "host/aax/stem_formats.hpp"
#include "host/common/product_identity.hpp"
#include "limiter/factory/factory_archive.hpp"
#include "limiter/model/vanta_plugin.hpp"
#include "plugin/settings/product_settings.hpp"

namespace vanta {
namespace {

using Stem = std::optional<ChannelLayout>;

EditorPlatform& editorPlatform() {
    static EditorPlatform platform;
    return platform;
}

AAX_IEffectParameters* newAdapter() {
    try {
        return new AaxPluginAdapter;
    } catch (...) {
        return nullptr;
    }
}

AAX_IEffectGUI* newEditor() {
    try {
        return new AaxPluginEditor(editorPlatform());
    } catch (...) {
        return nullptr;
    }
}

AAX_IHostProcessor* newOfflineProcessor() {
    try {
        return new AaxOfflineProcessor;
    } catch (...) {
        return nullptr;
    }
}

/// What the host knows each `category()` of a model as.
std::uint32_t hostCategory(int category) {
    constexpr std::uint32_t kCategories[] = {0, 0x800, 0x2000, 0x10, 0x2, 0x1, 0x40, 0, 0x8};
    const auto row = static_cast<std::size_t>(category);
    return row < std::size(kCategories) ? kCategories[row] : 0;
}

void add(AAX_IPropertyMap& map, std::int32_t property, std::uint32_t value) {
    check(map.AddProperty(property, static_cast<std::int32_t>(value)));
}

class EffectDescriber {
public:
    EffectDescriber(AAX_ICollection& collection, GenericPlugin& plugin)
        : collection_(collection), plugin_(plugin), product_(plugin.statics().product) {}

    void describe() {
        if (isShared()) {
            shared_ = &newEffect(0);
            addComponents();
            addEffect(*shared_, 0);
        } else {
            addComponents();
        }
        check(collection_.SetManufacturerName(productIdentity().vendor));
        for (const std::string& name : aaxPackageNames()) check(collection_.AddPackageName(name.c_str()));
        check(collection_.SetPackageVersion(static_cast<std::uint32_t>(product_.majorVersion)));
    }

private:
    bool hasInput() const { return plugin_.processingMode == 1; }
    bool isShared() const {
        const auto held = plugin_.statics().lock();
        return plugin_.statics().settings.correctDigiProductIds;
    }

    void addComponents() {
        addComponent(0, {});
        if (hasInput()) addComponent(kAaxAudioSuite, {});
        if (plugin_.supportsMono) {
            addComponent(kAaxMono, {});
            if (hasInput()) addComponent(kAaxMono | kAaxAudioSuite, {});
        }
        if (!plugin_.supportsMono || plugin_.monoToStereo) addComponent(kAaxMonoToStereo, {});
        if (!plugin_.supportsSurround) return;
        for (ChannelLayout layout = kStereoLayout + 1; layout < kChannelLayoutCount; ++layout) {
            addComponent(0, layout);
            addComponent(kAaxAudioSuite, layout);
        }
    }

    void addEffect(const AAX_IEffectDescriptor& effect, int flags) {
        check(collection_.AddEffect(aaxEffectId(product_, flags).c_str(), &effect));
    }

    AAX_IEffectDescriptor& newEffect(int flags) {
        AAX_IEffectDescriptor& effect = present(collection_.NewDescriptor());
        for (const std::string& name : aaxEffectNames(flags)) check(effect.AddName(name.c_str()));
        check(effect.AddCategory(hostCategory(plugin_.category())));
        // It lies beside the module; whoever wants one writes it.
        if (plugin_.hasPageTable()) check(effect.AddPageTable("DigiPageTable.xml"));
        check(effect.AddEffectParameters(&newAdapter));
        check(effect.AddEffectGUI(&newEditor));
        if (plugin_.hasOfflineProcessor) check(effect.AddHostProcessor(&newOfflineProcessor));

        AAX_IPropertyMap& properties = present(effect.NewPropertyMap());
        add(properties, AAX_eProperty_ManufacturerID, aaxManufacturerId());
        add(properties, AAX_eProperty_ProductID, aaxPluginId(flags));
        // These numbers say something to the host alone.
        add(properties, 60, 1);
        add(properties, 301, 1);
        add(properties, 58, 0x7fffffff);
        if (plugin_.hasOfflineProcessor) add(properties, 103, 1);
        check(effect.SetProperties(&properties));
        if (plugin_.gainReductionSource >= 0) addMeter(effect);
        return effect;
    }

    static void addMeter(AAX_IEffectDescriptor& effect) {
        AAX_IPropertyMap& properties = present(effect.NewPropertyMap());
        // The same.
        add(properties, 200, 2);
        add(properties, 201, 0);
        add(properties, 202, 1);
        check(effect.AddMeterDescription(AaxPluginAdapter::kGainMeter, "Gain Reduction", &properties));
    }

    void addComponent(int flags, Stem layout) {
        AAX_IEffectDescriptor& effect = shared_ ? *shared_ : newEffect(flags);
        AAX_IComponentDescriptor& component = present(effect.NewComponentDescriptor());
        addFields(component);
        AAX_IPropertyMap& properties = present(component.NewPropertyMap());
        const AAX_EStemFormat stem = layout ? stemOf(*layout) : AAX_eStemFormat_Stereo;
        const bool monoIn = flags & (kAaxMono | kAaxMonoToStereo);
        add(properties, AAX_eProperty_InputStemFormat, monoIn ? AAX_eStemFormat_Mono : stem);
        add(properties, AAX_eProperty_OutputStemFormat, flags & kAaxMono ? AAX_eStemFormat_Mono : stem);
        const bool isOffline = flags & kAaxAudioSuite;
        add(properties, isOffline ? AAX_eProperty_PlugInID_AudioSuite : AAX_eProperty_PlugInID_Native,
            aaxPluginId(flags, layout));
        if (plugin_.sideChainAvailable) check(component.AddSideChainIn(indexOf(AaxField::SideChain)));
        check(component.AddProcessProc(&aaxRender, &properties));
        check(effect.AddComponent(&component));
        if (!shared_) addEffect(effect, flags);
    }

    static void addFields(AAX_IComponentDescriptor& component) {
        constexpr std::uint32_t kAllChannels = 0xffff;
        const char* const name = productIdentity().name;
        check(component.AddDataInPort(indexOf(AaxField::MasterBypass), sizeof(std::int32_t)));
        check(component.AddDataInPort(indexOf(AaxField::Adapter), sizeof(AaxPluginAdapter*)));
        check(component.AddAudioIn(indexOf(AaxField::AudioIn)));
        check(component.AddAudioOut(indexOf(AaxField::AudioOut)));
        check(component.AddAudioBufferLength(indexOf(AaxField::BufferLength)));
        check(component.AddSampleRate(indexOf(AaxField::SampleRate)));
        check(component.AddMIDINode(indexOf(AaxField::MidiIn), AAX_EMIDINodeType::LocalInput, name,
                                    kAllChannels));
        check(component.AddMIDINode(indexOf(AaxField::Transport), AAX_EMIDINodeType::Transport, name,
                                    kAllChannels));
        check(component.AddPrivateData(indexOf(AaxField::ResetRequest), sizeof(std::int32_t)));
        check(component.AddMeters(indexOf(AaxField::Meters), &AaxPluginAdapter::kGainMeter, 1));
    }

    AAX_ICollection& collection_;
    GenericPlugin& plugin_;
    const Product& product_;
    AAX_IEffectDescriptor* shared_ = nullptr;  ///< holds all components, if they share one
};

/// As users of this host know the modifier keys.
void followHostShortcuts() {
    using gui::ModifierMap;
    using namespace gui::modifier;
    ModifierMap& map = ModifierMap::shared();
    map.set(kAlt, ModifierMap::kReset);
    map.set(kCtrl, ModifierMap::kFine);
    map.set(kShift, ModifierMap::kLinked);
    map.set(kShift | kCtrl, ModifierMap::kFine | ModifierMap::kLinked);
    map.set(kShift | kAlt, 0);
}

}  // namespace

AAX_Result describeEffects(AAX_ICollection* collection) {
    return guarded([collection] {
        if (!collection) return AAX_ERROR_NULL_OBJECT;
        registerFactoryArchive();
        VantaPlugin plugin(kStereoLayout);
        EffectDescriber(*collection, plugin).describe();
        if (useProToolsShortcuts(plugin.statics().product)) followHostShortcuts();
        return AAX_SUCCESS;
    });
}

void setEditorPlatform(EditorPlatform platform) {
    editorPlatform() = std::move(platform);
}

}  // namespace vanta
