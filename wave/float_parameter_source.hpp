#pragma once

#include "wave/float_parameter.hpp"
#include "wave/producer.hpp"

namespace vanta::wave {

/// Reads a smoothed value that it does not own.
class FloatParameterForwarder : public Source {
public:
    explicit FloatParameterForwarder(FloatParameter& parameter)
        : Source(parameter.environment(), OwnBlock::No), parameter_(parameter) {}

protected:
    bool settled() const override { return true; }
    void produce(BasicBlock<float>*, int samples, int) override;

private:
    FloatParameter& parameter_;
};

/// A smoothed value as a producer.
class FloatParameterSource final : public Source, public ValueAssignable<float> {
public:
    FloatParameterSource(Environment& owner, float initial)
        : Source(owner, OwnBlock::No), parameter_(owner, initial) {}

    void assign(float value, void*) override { parameter_.setValue(value, -1.0f); }
    FloatParameter& parameter() { return parameter_; }
    const FloatParameter& parameter() const { return parameter_; }

protected:
    bool settled() const override { return true; }
    void produce(BasicBlock<float>*, int samples, int) override;

private:
    FloatParameter parameter_;
};

/// A control input of an element: driven by its own smoothed value, or by any producer of the graph. The
/// range belongs to the own value; what a producer delivers passes as it is.
class FloatParameterBus final : public ValueAssignable<float> {
public:
    FloatParameterBus(Environment& owner, float initial) : ownSource_(owner, initial) {}
    FloatParameterBus(Environment& owner, float initial, float minimum, float maximum)
        : FloatParameterBus(owner, initial) {
        parameter().setRange(minimum, maximum);
    }
    FloatParameterBus(const FloatParameterBus&) = delete;
    FloatParameterBus& operator=(const FloatParameterBus&) = delete;

    /// Null goes back to the own value.
    void setSource(Producer* producer) {
        source_ = producer ? producer : &ownSource_;
        ownSource_.environment().noteChange();
    }
    Producer& source() const { return *source_; }

    /// Goes to the own value, whichever source is in use.
    void assign(float value, void* sender) override { ownSource_.assign(value, sender); }
    FloatParameter& parameter() { return ownSource_.parameter(); }

    VANTA_REALTIME const float* pullData(int samples) { return source_->pullData(samples); }
    bool isConstant() const { return source_->isConstant(); }

private:
    FloatParameterSource ownSource_;
    Producer* source_ = &ownSource_;
};

/// Presents a bus as a producer.
class FloatParameterBusForwarder final : public Source {
public:
    FloatParameterBusForwarder(Environment& owner, FloatParameterBus& bus)
        : Source(owner, OwnBlock::No), bus_(bus) {}

protected:
    bool settled() const override { return true; }
    void produce(BasicBlock<float>*, int samples, int) override {
        bus_.source().pull(samples);
        publish(bus_.source());
    }

private:
    FloatParameterBus& bus_;
};

}  // namespace vanta::wave
