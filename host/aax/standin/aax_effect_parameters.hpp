#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "aax_packet_dispatcher.hpp"
#include "aax_parameter.hpp"
#include "aax_plugin_interfaces.hpp"

/// The identifier of the parameter by which a host bypasses an effect.
inline constexpr const char* AAX_kMasterBypassID = "MasterBypassID";

/// What effects have in common: their parameters, as the host knows them. An effect overrides EffectInit and
/// what it has beyond that.
class AAX_CEffectParameters : public AAX_IEffectParameters {
public:
    AAX_Result Initialize(AAX_IEffectHost* host) override;

    AAX_Result GetNumberOfParameters(std::int32_t* count) const override;
    AAX_Result GetParameterIDFromIndex(std::int32_t index, AAX_CParamID* id) const override;
    AAX_Result GetParameterName(AAX_CParamID id, char* name, std::int32_t capacity) const override;
    AAX_Result GetParameterNumberOfSteps(AAX_CParamID id, std::int32_t* steps) const override;
    AAX_Result GetParameterIsAutomatable(AAX_CParamID id, bool* automatable) const override;
    AAX_Result GetParameterIsContinuous(AAX_CParamID id, bool* continuous) const override;
    AAX_Result GetParameterDefaultNormalizedValue(AAX_CParamID id, double* value) const override;
    AAX_Result GetParameterNormalizedValue(AAX_CParamID id, double* value) const override;
    AAX_Result GetParameterValueFromString(AAX_CParamID id, const char* text, double* value) const override;
    AAX_Result GetParameterStringFromValue(AAX_CParamID id, double value, char* text, std::int32_t capacity,
                                           std::int32_t maxLength) const override;
    AAX_Result SetParameterNormalizedValue(AAX_CParamID id, double value) override;
    AAX_Result TouchParameter(AAX_CParamID id) override;
    AAX_Result ReleaseParameter(AAX_CParamID id) override;
    AAX_Result UpdateParameterNormalizedValue(AAX_CParamID id, double value, std::int32_t source) override;
    AAX_Result GetNumberOfChanges(std::int32_t* changes) const override;
    AAX_Result GenerateCoefficients() override;

    // None of these unless an effect has them.

    AAX_Result GetNumberOfChunks(std::int32_t* count) const override;
    AAX_Result GetChunkIDFromIndex(std::int32_t index, AAX_CTypeID* id) const override;
    AAX_Result GetChunkSize(AAX_CTypeID id, std::uint32_t* size) override;
    AAX_Result GetChunk(AAX_CTypeID id, AAX_SPlugInChunk* chunk) override;
    AAX_Result SetChunk(AAX_CTypeID id, const AAX_SPlugInChunk* chunk) override;
    AAX_Result CompareActiveChunk(const AAX_SPlugInChunk* chunk, bool* equal) override;
    AAX_Result ResetFieldData(AAX_CFieldIndex field, void* data, std::uint32_t size) const override;
    AAX_Result GetCurveData(AAX_CTypeID type, const float* values, std::uint32_t count,
                            float* out) const override;
    AAX_Result GetCurveDataDisplayRange(AAX_CTypeID type, float* xMin, float* xMax, float* yMin,
                                        float* yMax) const override;
    AAX_Result GetCustomData(AAX_CTypeID block, std::uint32_t size, void* data,
                             std::uint32_t* written) const override;

protected:
    /// Called once, when Controller, AutomationDelegate and Transport are there.
    virtual AAX_Result EffectInit() = 0;

    AAX_IController* Controller() const { return host_ ? host_->Controller() : nullptr; }
    AAX_ITransport* Transport() const { return host_ ? host_->Transport() : nullptr; }
    /// In EffectInit: the order of the calls is that of the host's list.
    AAX_IParameter& AddParameter(std::unique_ptr<AAX_IParameter> parameter);
    /// In EffectInit: chunks do not hold this parameter.
    void FilterParameterIDOnSave(AAX_CParamID id) { filter_.emplace_back(id); }
    bool IsFiltered(AAX_CParamID id) const;
    /// Null if there is none.
    AAX_IParameter* GetParameter(AAX_CParamID id) const;
    AAX_CPacketDispatcher& PacketDispatcher() { return dispatcher_; }

private:
    AAX_IEffectHost* host_ = nullptr;
    std::vector<std::unique_ptr<AAX_IParameter>> parameters_;
    std::vector<std::string> filter_;
    AAX_CPacketDispatcher dispatcher_;
    std::atomic<std::int32_t> changes_{0};
};
