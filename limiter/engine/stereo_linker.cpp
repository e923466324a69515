#include "limiter/engine/stereo_linker.hpp"

#include <algorithm>

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"

namespace vanta {

namespace {

/// As fast as any change may be heard.
constexpr float kGlideMs = 20.0f;

float moved(float from, float to, float share) {
    return from + (to - from) * share;
}

}  // namespace

DefaultStereoLinker::DefaultStereoLinker(wave::Environment& environment, ChannelLayout layout)
    : AbstractStereoLinker(environment, channelCount(layout)),
      amount(environment, 1.0f),
      linkCenter(this, false),
      linkLfe(this, false),
      stereo_(0),
      center_(linkedCenterCount(layout)),
      lfe_(linkedLfeCount(layout)),
      centerShare_(environment, 0.0f),
      lfeShare_(environment, 0.0f),
      scratch_(environment),
      sources_(static_cast<std::size_t>(channelCount(layout)), nullptr) {
    if (layout != kMonoLayout) stereo_ = channelCount(layout) - center_ - lfe_;
    for (wave::FloatParameter* control : {&amount, &centerShare_, &lfeShare_}) control->slowTime = kGlideMs;
}

void DefaultStereoLinker::propertyChanged(AbstractProperty& property) {
    if (&property == &linkCenter) centerShare_.setValue(linkCenter ? 1.0f : 0.0f, -1.0f);
    if (&property == &linkLfe) lfeShare_.setValue(linkLfe ? 1.0f : 0.0f, -1.0f);
}

void DefaultStereoLinker::produce(Blocks blocks, int samples, int) {
    const auto count = static_cast<std::size_t>(samples);
    for (std::size_t c = 0; c < blocks.size(); ++c) {
        kernel::magnitude(sources_[c]->pullData(samples), blocks[c]->data(), count);
    }
    bool atRest = true;
    const auto read = [&](wave::FloatParameter& control) {
        bool constant = false;
        const float* values = control.readInStream(samples, &constant).data();
        atRest = atRest && constant;
        return values;
    };
    const Controls controls{read(amount), read(centerShare_), read(lfeShare_)};
    if (atRest) {
        link(blocks, controls, count);
    } else {
        glide(blocks, controls, samples);
    }
}

void DefaultStereoLinker::link(Blocks blocks, const Controls& controls, std::size_t count) {
    const float share = controls.amount[0];
    if (nearlyEqual(share, 0.0f)) return;
    if (share > 0.5f) collectCommonEnvelope(blocks, controls, count);
    for (int left = 0; left + 1 < stereo_; left += 2) linkPair(blocks, left, controls, count);
    if (controls.lfe[0] > 0.0f && lfe_ >= 1 && share > 0.5f) {
        float* last = blocks.back()->data();
        kernel::moveToward(last, scratch_.data(), 2.0f * share - 1.0f, last, count);
    }
}

void DefaultStereoLinker::collectCommonEnvelope(Blocks blocks, const Controls& controls, std::size_t count) {
    std::copy(blocks[0]->data(), blocks[0]->data() + count, scratch_.data());
    const int channels = static_cast<int>(blocks.size());
    for (int c = 1; c < channels; ++c) {
        const bool isCenter = c >= stereo_ && c < stereo_ + center_;
        const bool isLfe = c >= stereo_ + center_;
        if ((isCenter && controls.center[0] == 0.0f) || (isLfe && controls.lfe[0] == 0.0f)) continue;
        kernel::maximum(scratch_.data(), blocks[static_cast<std::size_t>(c)]->data(), scratch_.data(), count);
    }
}

// The first pair takes the first centre, the last pair the second one, if there are two.
int DefaultStereoLinker::centerOfPair(int left) const {
    if (center_ == 0) return -1;
    if (left == 0) return stereo_;
    return center_ == 2 && left + 3 >= stereo_ ? stereo_ + center_ - 1 : -1;
}

void DefaultStereoLinker::linkPair(Blocks blocks, int left, const Controls& controls, std::size_t count) {
    const int right = left + 1;
    const float share = controls.amount[0];
    const int linkedCenter = controls.center[0] > 0.0f ? centerOfPair(left) : -1;
    float* l = blocks[static_cast<std::size_t>(left)]->data();
    float* r = blocks[static_cast<std::size_t>(right)]->data();
    float* c = linkedCenter >= 0 ? blocks[static_cast<std::size_t>(linkedCenter)]->data() : nullptr;
    const bool linkAll = share > 0.5f;
    float* peak = linkAll ? l : scratch_.data();
    kernel::maximum(l, r, peak, count);
    if (c) kernel::maximum(c, peak, peak, count);
    if (linkAll) {
        // The channels of the pair detect the same from here on and share one block.
        kernel::moveToward(peak, scratch_.data(), 2.0f * share - 1.0f, l, count);
        publishOutput(right, *blocks[static_cast<std::size_t>(left)], 0);
        if (c) publishOutput(linkedCenter, *blocks[static_cast<std::size_t>(left)], 0);
        return;
    }
    const float pairAmount = std::min(2.0f * share, 1.0f);
    for (float* channel : {l, r, c}) {
        if (channel) kernel::moveToward(channel, peak, pairAmount, channel, count);
    }
}

// The same sample by sample. What takes part with a share raises the peaks of the others by that share, and
// is itself drawn by it towards peaks that hold it wholly: no channel is ever detected below its own level.
void DefaultStereoLinker::glide(Blocks blocks, const Controls& controls, int samples) {
    const int channels = static_cast<int>(blocks.size());
    for (int i = 0; i < samples; ++i) {
        const auto at = [&](int c) -> float& { return blocks[static_cast<std::size_t>(c)]->data()[i]; };
        const auto raised = [](float peak, float other, float share) {
            return moved(peak, std::max(peak, other), share);
        };
        const float center = controls.center[i];
        const float lfe = controls.lfe[i];
        float common = 0.0f;
        for (int c = 0; c < stereo_; ++c) common = std::max(common, at(c));
        for (int c = stereo_; c < stereo_ + center_; ++c) common = raised(common, at(c), center);
        for (int c = stereo_ + center_; c < channels; ++c) common = raised(common, at(c), lfe);

        const float pairAmount = std::min(2.0f * controls.amount[i], 1.0f);
        const float allAmount = std::max(2.0f * controls.amount[i] - 1.0f, 0.0f);
        const auto linked = [&](float x, float peak) {
            return moved(moved(x, peak, pairAmount), std::max(common, x), allAmount);
        };
        for (int left = 0; left + 1 < stereo_; left += 2) {
            const int c = centerOfPair(left);
            float peak = std::max(at(left), at(left + 1));
            if (c >= 0) peak = raised(peak, at(c), center);
            at(left) = linked(at(left), peak);
            at(left + 1) = linked(at(left + 1), peak);
            if (c >= 0) at(c) = moved(at(c), linked(at(c), std::max(peak, at(c))), center);
        }
        if (lfe_ >= 1) {
            float& last = at(channels - 1);
            last = moved(last, std::max(common, last), lfe * allAmount);
        }
    }
}

}  // namespace vanta
