#include "aax_effect_parameters.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace {

/// As much of a text as fits, and a final zero.
AAX_Result copyText(const std::string& text, char* to, std::int32_t capacity) {
    if (!to || capacity < 1) return AAX_ERROR_NULL_OBJECT;
    const std::size_t length = std::min(text.size(), static_cast<std::size_t>(capacity) - 1);
    std::memcpy(to, text.data(), length);
    to[length] = '\0';
    return AAX_SUCCESS;
}

}  // namespace

AAX_Result AAX_CEffectParameters::Initialize(AAX_IEffectHost* host) {
    if (!host || !host->Controller()) return AAX_ERROR_NULL_OBJECT;
    if (host_) return AAX_ERROR_INVALID_ARGUMENT;
    host_ = host;
    dispatcher_.Initialize(host_->Controller());
    return EffectInit();
}

AAX_IParameter& AAX_CEffectParameters::AddParameter(std::unique_ptr<AAX_IParameter> parameter) {
    AAX_IParameter& added = *parameters_.emplace_back(std::move(parameter));
    added.SetAutomationDelegate(host_->AutomationDelegate());
    return added;
}

bool AAX_CEffectParameters::IsFiltered(AAX_CParamID id) const {
    return std::find(filter_.begin(), filter_.end(), id) != filter_.end();
}

AAX_IParameter* AAX_CEffectParameters::GetParameter(AAX_CParamID id) const {
    if (!id) return nullptr;
    for (const auto& parameter : parameters_) {
        if (std::strcmp(parameter->Identifier(), id) == 0) return parameter.get();
    }
    return nullptr;
}

AAX_Result AAX_CEffectParameters::GetNumberOfParameters(std::int32_t* count) const {
    *count = static_cast<std::int32_t>(parameters_.size());
    return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetParameterIDFromIndex(std::int32_t index, AAX_CParamID* id) const {
    if (index < 0 || static_cast<std::size_t>(index) >= parameters_.size())
        return AAX_ERROR_INVALID_PARAMETER_ID;
    *id = parameters_[static_cast<std::size_t>(index)]->Identifier();
    return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetParameterName(AAX_CParamID id, char* name, std::int32_t capacity) const {
    const AAX_IParameter* parameter = GetParameter(id);
    return parameter ? copyText(parameter->Name(), name, capacity) : AAX_ERROR_INVALID_PARAMETER_ID;
}

AAX_Result AAX_CEffectParameters::GetParameterNumberOfSteps(AAX_CParamID id, std::int32_t* steps) const {
    const AAX_IParameter* parameter = GetParameter(id);
    if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
    *steps = parameter->GetNumberOfSteps();
    return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetParameterIsAutomatable(AAX_CParamID id, bool* automatable) const {
    const AAX_IParameter* parameter = GetParameter(id);
    if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
    *automatable = parameter->Automatable();
    return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetParameterIsContinuous(AAX_CParamID id, bool* continuous) const {
    const AAX_IParameter* parameter = GetParameter(id);
    if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
    *continuous = parameter->Type() == AAX_IParameter::EType::Continuous;
    return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetParameterDefaultNormalizedValue(AAX_CParamID id, double* value) const {
    const AAX_IParameter* parameter = GetParameter(id);
    if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
    *value = parameter->GetNormalizedDefaultValue();
    return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetParameterNormalizedValue(AAX_CParamID id, double* value) const {
    const AAX_IParameter* parameter = GetParameter(id);
    if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
    *value = parameter->GetNormalizedValue();
    return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetParameterValueFromString(AAX_CParamID id, const char* text,
                                                              double* value) const try {
    const AAX_IParameter* parameter = GetParameter(id);
    if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
    if (!text) return AAX_ERROR_NULL_OBJECT;
    return parameter->GetNormalizedValueFromString(text, value) ? AAX_SUCCESS : AAX_ERROR_INVALID_ARGUMENT;
} catch (...) {
    return AAX_ERROR_EXCEPTION;
}

AAX_Result AAX_CEffectParameters::GetParameterStringFromValue(AAX_CParamID id, double value, char* text,
                                                              std::int32_t capacity,
                                                              std::int32_t maxLength) const try {
    const AAX_IParameter* parameter = GetParameter(id);
    if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
    std::string shown;
    if (std::isnan(value) || !parameter->GetStringFromNormalizedValue(value, maxLength, &shown))
        return AAX_ERROR_INVALID_ARGUMENT;
    return copyText(shown, text, capacity);
} catch (...) {
    return AAX_ERROR_EXCEPTION;
}

AAX_Result AAX_CEffectParameters::SetParameterNormalizedValue(AAX_CParamID id, double value) {
    AAX_IParameter* parameter = GetParameter(id);
    return parameter ? parameter->SetNormalizedValue(value) : AAX_ERROR_INVALID_PARAMETER_ID;
}

AAX_Result AAX_CEffectParameters::TouchParameter(AAX_CParamID id) {
    AAX_IParameter* parameter = GetParameter(id);
    return parameter ? parameter->Touch() : AAX_ERROR_INVALID_PARAMETER_ID;
}

AAX_Result AAX_CEffectParameters::ReleaseParameter(AAX_CParamID id) {
    AAX_IParameter* parameter = GetParameter(id);
    return parameter ? parameter->Release() : AAX_ERROR_INVALID_PARAMETER_ID;
}

AAX_Result AAX_CEffectParameters::UpdateParameterNormalizedValue(AAX_CParamID id, double value,
                                                                 std::int32_t /*source*/) {
    AAX_IParameter* parameter = GetParameter(id);
    if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
    const double before = parameter->GetNormalizedValue();
    parameter->UpdateNormalizedValue(value);
    dispatcher_.SetDirty(id);
    if (before != value) ++changes_;
    return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetNumberOfChanges(std::int32_t* changes) const {
    *changes = changes_.load();
    return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GenerateCoefficients() {
    return dispatcher_.Dispatch();
}

AAX_Result AAX_CEffectParameters::GetNumberOfChunks(std::int32_t* count) const {
    *count = 0;
    return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetChunkIDFromIndex(std::int32_t, AAX_CTypeID*) const {
    return AAX_ERROR_INVALID_CHUNK_INDEX;
}

AAX_Result AAX_CEffectParameters::GetChunkSize(AAX_CTypeID, std::uint32_t*) {
    return AAX_ERROR_INVALID_CHUNK_ID;
}

AAX_Result AAX_CEffectParameters::GetChunk(AAX_CTypeID, AAX_SPlugInChunk*) {
    return AAX_ERROR_INVALID_CHUNK_ID;
}

AAX_Result AAX_CEffectParameters::SetChunk(AAX_CTypeID, const AAX_SPlugInChunk*) {
    return AAX_ERROR_INVALID_CHUNK_ID;
}

AAX_Result AAX_CEffectParameters::CompareActiveChunk(const AAX_SPlugInChunk*, bool* equal) {
    *equal = true;
    return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::ResetFieldData(AAX_CFieldIndex, void*, std::uint32_t) const {
    return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetCurveData(AAX_CTypeID, const float*, std::uint32_t, float*) const {
    return AAX_ERROR_UNIMPLEMENTED;
}

AAX_Result AAX_CEffectParameters::GetCurveDataDisplayRange(AAX_CTypeID, float*, float*, float*,
                                                           float*) const {
    return AAX_ERROR_UNIMPLEMENTED;
}

AAX_Result AAX_CEffectParameters::GetCustomData(AAX_CTypeID, std::uint32_t, void*, std::uint32_t*) const {
    return AAX_ERROR_UNIMPLEMENTED;
}
