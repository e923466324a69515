#include "dsp/saturator/saturator.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace vanta {

namespace {

constexpr float kDriveSpanDb = 36.0f;

/// Where Drive 0 puts the signal on each curve, in dB.
constexpr std::array<float, WaveShaper::kCurveCount> kCentresDb{-3, 6, -8, 0, 0,   0, 0,
                                                                -6, 0, 0,  0, -20, 0, 0};

using Styles = std::array<FunctionTableClipper::Style, WaveShaper::kCurveCount>;

template <std::size_t... functions>
Styles makeStyles(std::index_sequence<functions...>) {
    return {FunctionTableClipper::Style(static_cast<int>(functions), kCentresDb[functions] - kDriveSpanDb,
                                        kCentresDb[functions] + kDriveSpanDb)...};
}

/// One set serves all saturators: neither rate nor block size changes it.
const Styles& styles() {
    static const Styles all = makeStyles(std::make_index_sequence<WaveShaper::kCurveCount>());
    return all;
}

}  // namespace

Saturator::Saturator(wave::Environment& owner)
    : Filter(owner, wave::OwnBlock::No),
      transferFunction(this, WaveShaper::DivAbs),
      drive(owner, 0.0f, -kDriveSpanDb, kDriveSpanDb),
      converterStyle(owner),
      driveForwarder_(owner, drive),
      offset_(owner, kDriveSpanDb),
      normalised_(owner,
                  {{1.0f / (2 * kDriveSpanDb), &driveForwarder_}, {1.0f / (2 * kDriveSpanDb), &offset_}}),
      inputForwarder_(owner, *this),
      clipper_(owner, converterStyle) {
    clipper_.source = &inputForwarder_;
    clipper_.drive.setSource(&normalised_);
    chooseStyle();
}

void Saturator::process(const wave::BasicBlock<float>&, wave::BasicBlock<float>*, int samples, int) {
    clipper_.pull(samples);
    publish(clipper_);
}

void Saturator::propertyChanged(AbstractProperty&) {
    chooseStyle();
}

void Saturator::chooseStyle() {
    const int index = std::clamp<int>(transferFunction, 0, WaveShaper::kCurveCount - 1);
    clipper_.style = &styles()[static_cast<std::size_t>(index)];
}

}  // namespace vanta
