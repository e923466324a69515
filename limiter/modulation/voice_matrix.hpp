#pragma once

#include <memory>
#include <vector>

#include "limiter/modulation/modulation_matrix.hpp"

namespace vanta {

/// Adds weighted signals to a running result. As long as all of them are constant, one sample is computed.
class ModulationMatrix::TargetSum {
public:
    TargetSum(float* block, int samples) : out_(block), count_(samples) {}

    /// Starts from a block, or with null from nothing.
    void start(const float* block, bool isConstant);
    void add(const float* source, bool sourceConstant, const float* level, bool levelConstant);
    void clamp(float low, float high);
    /// Takes what is not finite for silence, and limits the rest.
    void sanitize();
    /// Fills the block. Whether it holds one value throughout.
    bool finish();

private:
    void expand();

    float* out_;
    int count_;
    bool constant_ = true;
    bool empty_ = true;
    float value_ = 0.0f;            ///< the result while it is constant
    const float* first_ = nullptr;  ///< the start block while nothing was added
};

/// What all voices share of one target: its own value and the slots in the global mode.
class ModulationMatrix::GlobalModulationProducer final : public wave::Source {
public:
    GlobalModulationProducer(ModulationMatrix& matrix, TargetState& state);

protected:
    bool settled() const override { return true; }
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;

private:
    ModulationMatrix& matrix_;
    TargetState& state_;
};

/// One voice's side of the matrix: its sources, and per target the signal that its elements read.
class ModulationMatrix::VoiceMatrix {
public:
    class TargetController;

    explicit VoiceMatrix(ModulationMatrix& matrix);
    ~VoiceMatrix();

    /// Set-up: enters a producer in the table of this voice.
    void setSource(int source, wave::Producer& producer) {
        sources_[static_cast<std::size_t>(source)] = &producer;
    }
    wave::Producer* source(int index) const { return sources_[static_cast<std::size_t>(index)]; }
    /// Set-up: the signal of a target, made at the first call.
    TargetController& controller(int target);

private:
    friend class ModulationMatrix;
    ModulationMatrix& matrix_;
    std::vector<wave::Producer*> sources_;
    std::vector<std::unique_ptr<TargetController>> targetControllers_;
};

class ModulationMatrix::VoiceMatrix::TargetController final : public wave::Source {
public:
    TargetController(VoiceMatrix& voice, int target);

protected:
    bool settled() const override { return true; }
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;

private:
    VANTA_REALTIME bool publishSingleSlot(int samples);

    VoiceMatrix& voice_;
    TargetState& state_;
    GlobalModulationProducer& global_;
    wave::Producer* plain_ = nullptr;  ///< the signal that alone is handed on until something changes
    std::uint32_t plainEpoch_ = 0;     ///< for as long as this counts
};

/// The value of a target for a reader outside the voices: the first voice's, where they
/// differ.
class ModulationMatrix::GlobalTargetController final : public wave::Source {
public:
    GlobalTargetController(ModulationMatrix& matrix, int target);

protected:
    bool settled() const override { return true; }
    void produce(wave::BasicBlock<float>* block, int samples, int flags) override;

private:
    ModulationMatrix& matrix_;
    int target_;
};

}  // namespace vanta
