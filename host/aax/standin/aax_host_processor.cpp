#include "aax_host_processor.hpp"

AAX_Result AAX_CHostProcessor::Initialize(AAX_IEffectParameters* parameters,
                                          AAX_IHostProcessorDelegate* delegate) {
    parameters_ = parameters;
    delegate_ = delegate;
    return parameters_ && delegate_ ? AAX_SUCCESS : AAX_ERROR_NULL_OBJECT;
}

AAX_Result AAX_CHostProcessor::SetLocation(std::int64_t location) {
    location_ = location;
    return AAX_SUCCESS;
}

AAX_Result AAX_CHostProcessor::GetAudio(float* const* buffers, std::int32_t channels, std::int64_t location,
                                        std::int32_t* samples) const {
    if (!delegate_) return AAX_ERROR_NULL_OBJECT;
    const std::int32_t wanted = *samples;
    const AAX_Result result = delegate_->GetAudio(buffers, channels, location, samples);
    if (result != AAX_SUCCESS) return result;
    return *samples > 0 && *samples <= wanted ? AAX_SUCCESS : AAX_ERROR_NO_AUDIO;
}
