#pragma once

namespace vanta {

/// Whoever shows the model of an instance, which the instance replaces at times. On the main thread.
class ModelViewer {
public:
    virtual ~ModelViewer() = default;
    /// The model is about to go: nothing of it may be held on to.
    virtual void modelGoes() = 0;
    /// There is another, or still the same.
    virtual void modelCame() = 0;
    /// After `modelGoes`: the instance goes itself.
    virtual void pluginGoes() = 0;
};

}  // namespace vanta
