#include "host/aax/aax_plugin_adapter.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "foundation/numbers.hpp"
#include "host/aax/host_parameter.hpp"
#include "host/aax/stem_formats.hpp"
#include "host/common/hosted_plugin.hpp"
#include "host/unified/host_position.hpp"

namespace vanta {
namespace {

constexpr AAX_CTypeID kDynamicsCurve = AAX_FourChars("AXdy");
constexpr AAX_CTypeID kEqualizerCurve = AAX_FourChars("AXeq");

}  // namespace

bool AaxPluginAdapter::isSupportedRate(float rate) {
    const auto hertz = static_cast<double>(rate);
    return hertz >= HostedPlugin::kLowestRate && hertz <= HostedPlugin::kHighestRate;
}

AaxPluginAdapter::~AaxPluginAdapter() {
    for (ModelViewer* const viewer : std::exchange(viewers_, {})) {
        viewer->modelGoes();
        viewer->pluginGoes();
    }
    pump_.reset();
}

// The start

AAX_Result AaxPluginAdapter::EffectInit() {
    return guarded([this] {
        readStemFormats();
        AAX_CSampleRate rate = 0.0f;
        check(Controller()->GetSampleRate(&rate));
        if (!isSupportedRate(rate)) return AAX_ERROR_INVALID_ARGUMENT;
        create(layout_);
        prepare(rate);
        addMasterBypass();
        addParameters();
        AaxPluginAdapter* const self = this;
        check(Controller()->PostPacket(indexOf(AaxField::Adapter), &self, sizeof(self)));
        check(Controller()->SetSignalLatency(model().latency()));
        transport_ = Transport();
        ready_ = true;
        pump_.emplace(*this);
        return AAX_SUCCESS;
    });
}

void AaxPluginAdapter::readStemFormats() {
    AAX_EStemFormat input = 0;
    AAX_EStemFormat output = 0;
    check(Controller()->GetInputStemFormat(&input));
    check(Controller()->GetOutputStemFormat(&output));
    monoToStereo_ = input == AAX_eStemFormat_Mono && output == AAX_eStemFormat_Stereo;
    const auto layout = layoutOfStem(output);
    if (!layout || (input != output && !monoToStereo_)) throw AaxError{AAX_ERROR_INVALID_ARGUMENT};
    layout_ = *layout;
}

void AaxPluginAdapter::addMasterBypass() {
    auto bypass = std::make_unique<AAX_CParameter<bool>>(
        AAX_kMasterBypassID, "Master Bypass", false, std::make_unique<AAX_CBinaryTaperDelegate<bool>>(),
        std::make_unique<AAX_CBinaryDisplayDelegate<bool>>("bypass", "on"), true);
    bypass->SetNumberOfSteps(2);
    bypass->SetType(AAX_IParameter::EType::Discrete);
    const AAX_IParameter& added = AddParameter(std::move(bypass));
    // The host keeps it with the track.
    FilterParameterIDOnSave(AAX_kMasterBypassID);
    check(PacketDispatcher().RegisterPacket(added, indexOf(AaxField::MasterBypass), sizeof(std::int32_t),
                                            [](const AAX_IParameter& parameter, void* packet) {
                                                const std::int32_t bypassed =
                                                    parameter.GetNormalizedValue() >= 0.5 ? 1 : 0;
                                                std::memcpy(packet, &bypassed, sizeof(bypassed));
                                            }));
}

void AaxPluginAdapter::addParameters() {
    for (int i = 0; i < model().parameterCount(); ++i) {
        const AbstractPluginParameter& parameter = *model().parameterAt(i);
        AddParameter(makeHostParameter(parameter))
            .UpdateNormalizedValue(hostPosition(parameter, parameter.value()));
    }
}

// Values

AAX_Result AaxPluginAdapter::UpdateParameterNormalizedValue(AAX_CParamID id, double value,
                                                            std::int32_t source) {
    return guarded([&] {
        if (!isReady()) return AAX_ERROR_NULL_OBJECT;
        if (std::isnan(value)) return AAX_ERROR_INVALID_ARGUMENT;
        if (!GetParameter(id)) return AAX_ERROR_INVALID_PARAMETER_ID;
        const double position = std::clamp(value, 0.0, 1.0);
        hostPositionChanged(aaxParameterIndex(id), position);
        return AAX_CEffectParameters::UpdateParameterNormalizedValue(id, position, source);
    });
}

AAX_Result AaxPluginAdapter::GenerateCoefficients() {
    return guarded([this] {
        if (!isReady()) return AAX_ERROR_NULL_OBJECT;
        claimAndPump();
        return AAX_CEffectParameters::GenerateCoefficients();
    });
}

void AaxPluginAdapter::reportParameter(int index, float value) {
    const double position = hostPosition(*model().parameterAt(index), value);
    const std::string id = aaxParameterId(index);
    double known = 0.0;
    const bool isKnown = GetParameterNormalizedValue(id.c_str(), &known) == AAX_SUCCESS &&
                         std::abs(known - position) <= static_cast<double>(kEqualWithin);
    if (!isKnown) SetParameterNormalizedValue(id.c_str(), position);
}

void AaxPluginAdapter::reportLatency() {
    Controller()->SetSignalLatency(model().latency());
}

// What else hosts ask for

AAX_Result AaxPluginAdapter::ResetFieldData(AAX_CFieldIndex field, void* data, std::uint32_t size) const {
    constexpr std::int32_t kRequest = 1;
    if (data && field == indexOf(AaxField::ResetRequest) && size == sizeof(kRequest))
        std::memcpy(data, &kRequest, sizeof(kRequest));
    return AAX_SUCCESS;
}

AAX_Result AaxPluginAdapter::GetCurveData(AAX_CTypeID type, const float* values, std::uint32_t count,
                                          float* out) const {
    if (type != kDynamicsCurve && type != kEqualizerCurve) return AAX_ERROR_UNIMPLEMENTED;
    if (!isReady() || !values || !out) return AAX_ERROR_NULL_OBJECT;
    const int kind = type == kDynamicsCurve ? 0 : 1;
    return model().curveData(kind, {values, count}, {out, count}) ? AAX_SUCCESS : AAX_ERROR_UNIMPLEMENTED;
}

AAX_Result AaxPluginAdapter::GetCurveDataDisplayRange(AAX_CTypeID type, float* xMin, float* xMax, float* yMin,
                                                      float* yMax) const {
    if (type != kDynamicsCurve && type != kEqualizerCurve) return AAX_ERROR_UNIMPLEMENTED;
    if (!xMin || !xMax || !yMin || !yMax) return AAX_ERROR_NULL_OBJECT;
    const bool isDynamics = type == kDynamicsCurve;
    *xMin = isDynamics ? -60.0f : 10.0f;
    *xMax = isDynamics ? 0.0f : 20000.0f;
    *yMin = isDynamics ? -60.0f : -30.0f;
    *yMax = isDynamics ? 0.0f : 30.0f;
    return AAX_SUCCESS;
}

AAX_Result AaxPluginAdapter::GetCustomData(AAX_CTypeID block, std::uint32_t size, void* data,
                                           std::uint32_t* written) const {
    if ((block != kModelBlock && block != kViewersBlock) || size != sizeof(void*))
        return AAX_ERROR_UNIMPLEMENTED;
    if (!isReady() || !data || !written) return AAX_ERROR_NULL_OBJECT;
    GenericPlugin* const shown = &model();
    std::vector<ModelViewer*>* const viewers = &viewers_;
    if (block == kModelBlock) {
        std::memcpy(data, &shown, sizeof(shown));
    } else {
        std::memcpy(data, &viewers, sizeof(viewers));
    }
    *written = sizeof(void*);
    return AAX_SUCCESS;
}

}  // namespace vanta
