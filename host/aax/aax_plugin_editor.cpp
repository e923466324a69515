#include "host/aax/aax_plugin_editor.hpp"

#include <algorithm>

#include "gui/tree/modifiers.hpp"
#include "host/aax/aax_plugin_adapter.hpp"
#include "host/aax/host_parameter.hpp"
#include "host/unified/host_position.hpp"

namespace vanta {
namespace {

using namespace gui;

/// A press with exactly these of them is the host's.
constexpr std::uint32_t kHostPress = AAX_eModifiers_Control | AAX_eModifiers_Command;
constexpr std::uint32_t kDistinguished = kHostPress | AAX_eModifiers_Shift;

/// No monitor is drawn at more.
constexpr double kLargestAutomaticScale = 2.0;

std::uint32_t hostModifiers(int modifiers) {
    std::uint32_t bits = 0;
    if (modifiers & modifier::kShift) bits |= AAX_eModifiers_Shift;
    if (modifiers & modifier::kSecondaryClick) bits |= AAX_eModifiers_Control;
    if (modifiers & modifier::kAlt) bits |= AAX_eModifiers_Option;
    if (modifiers & modifier::kCtrl) bits |= AAX_eModifiers_Command;
    return bits;
}

}  // namespace

AaxPluginEditor::~AaxPluginEditor() {
    DeleteViewContents();
}

AAX_Result AaxPluginEditor::CreateViewContents() {
    return guarded([this] {
        std::uint32_t written = 0;
        const AAX_IEffectParameters& parameters = present(GetEffectParameters());
        check(parameters.GetCustomData(AaxPluginAdapter::kModelBlock, sizeof(model_), &model_, &written));
        check(
            parameters.GetCustomData(AaxPluginAdapter::kViewersBlock, sizeof(viewers_), &viewers_, &written));
        present(viewers_).push_back(this);
        void* const window = present(GetViewContainer()).GetPtr();
        if (!window || !platform_.open) return AAX_SUCCESS;
        interface_ = platform_.open(*this, *this, present(model_), reinterpret_cast<NativeWindow>(window));
        // Without one the host shows controls of its own.
        return interface_ ? AAX_SUCCESS : AAX_ERROR_UNIMPLEMENTED;
    });
}

void AaxPluginEditor::DeleteViewContents() {
    interface_.reset();
    ModelViewer* const self = this;
    if (viewers_) std::erase(*std::exchange(viewers_, nullptr), self);
}

/// With the effect's parameters, which some hosts let go of first.
void AaxPluginEditor::modelGoes() {
    interface_.reset();
    viewers_ = nullptr;
    model_ = nullptr;
}

AAX_Result AaxPluginEditor::TimerWakeup() {
    return guarded([this] {
        if (!model_) return AAX_SUCCESS;
        if (interface_) interface_->idle();
        // While there is an interface its thread is the one that does what waits.
        return model_ ? GetEffectParameters()->GenerateCoefficients() : AAX_SUCCESS;
    });
}

AAX_Point AaxPluginEditor::pixels(int width, int height) const {
    const double scale = interfaceScale();
    return {.vertical = static_cast<float>(height * scale), .horizontal = static_cast<float>(width * scale)};
}

AAX_Result AaxPluginEditor::GetViewSize(AAX_Point* size) const {
    return guarded([&] {
        if (!size || !model_) return AAX_ERROR_NULL_OBJECT;
        *size = pixels(model_->interfaceWidth(), model_->interfaceHeight());
        return AAX_SUCCESS;
    });
}

bool AaxPluginEditor::resize(int width, int height) {
    AAX_IViewContainer* const container = GetViewContainer();
    AAX_Point size = pixels(width, height);
    return !container || container->SetViewSize(&size) == AAX_SUCCESS;
}

double AaxPluginEditor::interfaceScale() const {
    if (interface_) return interface_->scale();
    if (!model_) return 1.0;
    const auto shared = model_->statics().lock();
    const double wanted = readProcessGraphics(model_->statics().settings).scale;
    return wanted > 0.0 ? wanted : automaticScale();
}

/// What the window fits on wherever it is put.
double AaxPluginEditor::automaticScale() const {
    const auto scales = platform_.monitorScales ? platform_.monitorScales() : std::vector<double>();
    if (scales.empty()) return 1.0;
    return std::min(kLargestAutomaticScale, *std::ranges::min_element(scales));
}

void AaxPluginEditor::setParameter(int index, float value) {
    AbstractPluginParameter* const parameter = model_ ? model_->parameterAt(index) : nullptr;
    if (!parameter) return;
    parameter->setValue(value, kFromHost);
    const std::string id = aaxParameterId(index);
    const double position = hostPosition(*parameter, parameter->value());
    double known = 0.0;
    // The model may have told it already. The host's answer brings it to the processor.
    if (GetEffectParameters()->GetParameterNormalizedValue(id.c_str(), &known) != AAX_SUCCESS ||
        known != position)
        GetEffectParameters()->SetParameterNormalizedValue(id.c_str(), position);
}

void AaxPluginEditor::beginGesture(int index) {
    if (model_) GetEffectParameters()->TouchParameter(aaxParameterId(index).c_str());
}

void AaxPluginEditor::endGesture(int index) {
    if (model_) GetEffectParameters()->ReleaseParameter(aaxParameterId(index).c_str());
}

bool AaxPluginEditor::mousePressed(int, Point point, int modifiers) {
    AAX_IViewContainer* const container = GetViewContainer();
    const int parameter = interface_ ? interface_->parameterAt(point) : -1;
    const std::uint32_t bits = hostModifiers(modifiers);
    if (!container || parameter < 0 || (bits & kDistinguished) != kHostPress) return true;
    return container->HandleParameterMouseDown(aaxParameterId(parameter).c_str(), bits) != AAX_SUCCESS;
}

int AaxPluginEditor::withHostModifiers(int modifiers) const {
    AAX_IViewContainer* const container = GetViewContainer();
    std::uint32_t bits = 0;
    if (!container || container->GetModifiers(&bits) != AAX_SUCCESS) return modifiers;
    if (bits & AAX_eModifiers_Option) modifiers |= modifier::kAlt;
    if (bits & AAX_eModifiers_Control) modifiers |= modifier::kSecondaryClick;
    return modifiers;
}

}  // namespace vanta
