#pragma once

#include "aax_plugin_interfaces.hpp"

/// What offline processors have in common: where they are and where audio comes from.
class AAX_CHostProcessor : public AAX_IHostProcessor {
public:
    AAX_Result Initialize(AAX_IEffectParameters* parameters, AAX_IHostProcessorDelegate* delegate) override;
    AAX_Result SetLocation(std::int64_t location) override;

protected:
    AAX_IEffectParameters* GetEffectParameters() const { return parameters_; }
    /// Of the window that is rendered, in samples from the start of the selection.
    std::int64_t GetLocation() const { return location_; }
    /// As the delegate's, whose errors it passes on. One that delivers nothing, or more than was asked for,
    /// has AAX_ERROR_NO_AUDIO.
    AAX_Result GetAudio(float* const* buffers, std::int32_t channels, std::int64_t location,
                        std::int32_t* samples) const;
    /// Null for none.
    AAX_ITransport* GetTransport() const { return delegate_ ? delegate_->GetTransport() : nullptr; }

private:
    AAX_IEffectParameters* parameters_ = nullptr;
    AAX_IHostProcessorDelegate* delegate_ = nullptr;
    std::int64_t location_ = 0;
};
