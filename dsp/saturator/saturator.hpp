#pragma once

#include "dsp/mixer/static_mixer.hpp"
#include "dsp/saturator/function_table_clipper.hpp"
#include "dsp/sr/iir_converter_style.hpp"
#include "foundation/property.hpp"

namespace vanta {

/// Saturation whose drive changes the character and not the level: a signal of -60 dB comes out as it went
/// in, at every drive. Drive 0 puts the signal where its curve begins to be heard.
///
/// By itself it adds no latency and remembers nothing. It aliases as every curve does; `converterStyle`
/// raises the rate around the curve, for `converterStyle.latency` samples.
class Saturator final : public wave::Filter, public PropertyOwner {
public:
    explicit Saturator(wave::Environment& owner);

    Property<int> transferFunction;        ///< a WaveShaper::TransferFunction; takes effect at once
    wave::FloatParameterBus drive;         ///< dB, -36 to 36
    sr::IIRConverterStyle converterStyle;  ///< of factor 1 unless told otherwise

protected:
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;
    void propertyChanged(AbstractProperty& property) override;

private:
    void chooseStyle();

    wave::FloatParameterBusForwarder driveForwarder_;
    wave::FloatParameterSource offset_;
    StaticMixer normalised_;  ///< the drive from 0 to 1
    wave::InputForwarder inputForwarder_;
    FunctionTableClipper clipper_;
};

}  // namespace vanta
