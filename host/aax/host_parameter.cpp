#include "host/aax/host_parameter.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "host/unified/host_position.hpp"

namespace vanta {
namespace {

constexpr int kContinuousSteps = 720;

bool isContinuous(const AbstractPluginParameter& parameter) {
    return parameter.kind() == AbstractPluginParameter::Kind::Float;
}

template <typename T>
class ParamTaperDelegate;

/// In double precision, so that neighbouring values stay apart on their way through the host.
template <>
class ParamTaperDelegate<float> final : public AAX_ITaperDelegate<float> {
public:
    explicit ParamTaperDelegate(const AbstractPluginParameter& parameter) : parameter_(parameter) {}
    float GetMinimumValue() const override { return parameter_.minimum(); }
    float GetMaximumValue() const override { return parameter_.maximum(); }
    float ConstrainRealValue(float value) const override {
        return std::clamp(value, parameter_.minimum(), parameter_.maximum());
    }
    float NormalizedToReal(double normalized) const override { return valueAt(parameter_, normalized); }
    double RealToNormalized(float value) const override { return hostPosition(parameter_, value); }

private:
    const AbstractPluginParameter& parameter_;
};

template <typename T>
class ParamDisplayDelegate final : public AAX_IDisplayDelegate<T> {
public:
    explicit ParamDisplayDelegate(const AbstractPluginParameter& parameter) : parameter_(parameter) {}
    bool ValueToString(T value, std::int32_t maxLength, std::string* text) const override {
        *text = parameter_.text(ownNumber(parameter_, static_cast<double>(value)), std::max(maxLength, 0));
        return true;
    }
    bool StringToValue(const std::string& text, T* value) const override {
        float own = 0.0f;
        if (!parameter_.parseText(text, &own)) return false;
        *value = static_cast<T>(hostNumber(parameter_, own));
        return true;
    }

private:
    const AbstractPluginParameter& parameter_;
};

std::unique_ptr<AAX_IParameter> makeContinuous(const AbstractPluginParameter& parameter) {
    auto made = std::make_unique<AAX_CParameter<float>>(
        aaxParameterId(parameter.index()), parameter.displayName, parameter.defaultValue(),
        std::make_unique<ParamTaperDelegate<float>>(parameter),
        std::make_unique<ParamDisplayDelegate<float>>(parameter), parameter.automatable);
    made->SetNumberOfSteps(kContinuousSteps);
    made->SetType(AAX_IParameter::EType::Continuous);
    return made;
}

std::unique_ptr<AAX_IParameter> makeDiscrete(const AbstractPluginParameter& parameter) {
    const int last = static_cast<int>(parameter.maximum() - parameter.minimum());
    auto made = std::make_unique<AAX_CParameter<int>>(
        aaxParameterId(parameter.index()), parameter.displayName,
        static_cast<int>(hostNumber(parameter, parameter.defaultValue())),
        std::make_unique<AAX_CStateTaperDelegate<int>>(0, last),
        std::make_unique<ParamDisplayDelegate<int>>(parameter), parameter.automatable);
    made->SetNumberOfSteps(last + 1);
    made->SetType(AAX_IParameter::EType::Discrete);
    return made;
}

}  // namespace

std::string aaxParameterId(int index) {
    return std::to_string(index);
}

int aaxParameterIndex(AAX_CParamID id) {
    int index = -1;
    const char* const end = id + std::strlen(id);
    const auto read = std::from_chars(id, end, index);
    return read.ec == std::errc() && read.ptr == end ? index : -1;
}

double hostNumber(const AbstractPluginParameter& parameter, float value) {
    const auto own = static_cast<double>(value);
    return isContinuous(parameter) ? own : own - static_cast<double>(parameter.minimum());
}

float ownNumber(const AbstractPluginParameter& parameter, double hostNumber) {
    const double first = isContinuous(parameter) ? 0.0 : static_cast<double>(parameter.minimum());
    return fromHostValue(parameter, hostNumber + first);
}

std::unique_ptr<AAX_IParameter> makeHostParameter(const AbstractPluginParameter& parameter) {
    return isContinuous(parameter) ? makeContinuous(parameter) : makeDiscrete(parameter);
}

}  // namespace vanta
