#include "aax_effect_gui.hpp"

AAX_Result AAX_CEffectGUI::Initialize(AAX_IEffectParameters* parameters) {
    parameters_ = parameters;
    return parameters_ ? AAX_SUCCESS : AAX_ERROR_NULL_OBJECT;
}

AAX_Result AAX_CEffectGUI::SetViewContainer(AAX_IViewContainer* container) {
    if (container_) DeleteViewContents();
    container_ = container;
    return container_ ? CreateViewContents() : AAX_SUCCESS;
}
