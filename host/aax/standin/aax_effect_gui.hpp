#pragma once

#include "aax_plugin_interfaces.hpp"

/// What editors have in common. An editor overrides what is to be shown.
class AAX_CEffectGUI : public AAX_IEffectGUI {
public:
    AAX_Result Initialize(AAX_IEffectParameters* parameters) override;
    AAX_Result SetViewContainer(AAX_IViewContainer* container) override;
    AAX_Result TimerWakeup() override { return AAX_SUCCESS; }

protected:
    /// The container is there.
    virtual AAX_Result CreateViewContents() = 0;
    /// It is about to go.
    virtual void DeleteViewContents() = 0;

    AAX_IEffectParameters* GetEffectParameters() const { return parameters_; }
    /// Null for none.
    AAX_IViewContainer* GetViewContainer() const { return container_; }

private:
    AAX_IEffectParameters* parameters_ = nullptr;
    AAX_IViewContainer* container_ = nullptr;
};
