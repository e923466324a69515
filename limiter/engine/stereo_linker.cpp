#include "limiter/engine/stereo_linker.hpp"

#include <algorithm>

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"

namespace vanta {

DefaultStereoLinker::DefaultStereoLinker(wave::Environment& environment, ChannelLayout layout)
    : AbstractStereoLinker(environment, channelCount(layout)),
      amount(nullptr, 0.0f, 1.0f, 1.0f),
      linkCenter(nullptr, false),
      linkLfe(nullptr, false),
      stereo_(0),
      center_(linkedCenterCount(layout)),
      lfe_(linkedLfeCount(layout)),
      scratch_(environment),
      sources_(static_cast<std::size_t>(channelCount(layout)), nullptr) {
    if (layout != kMonoLayout) stereo_ = channelCount(layout) - center_ - lfe_;
}

void DefaultStereoLinker::produce(Blocks blocks, int samples, int) {
    const auto count = static_cast<std::size_t>(samples);
    for (std::size_t c = 0; c < blocks.size(); ++c) {
        kernel::magnitude(sources_[c]->pullData(samples), blocks[c]->data(), count);
    }
    if (nearlyEqual(amount, 0.0f)) return;
    if (amount > 0.5f) collectCommonEnvelope(blocks, count);
    for (int left = 0; left + 1 < stereo_; left += 2) linkPair(blocks, left, count);
    if (linkLfe && lfe_ >= 1 && amount > 0.5f) {
        float* last = blocks.back()->data();
        kernel::moveToward(last, scratch_.data(), 2.0f * amount - 1.0f, last, count);
    }
}

void DefaultStereoLinker::collectCommonEnvelope(Blocks blocks, std::size_t count) {
    std::copy(blocks[0]->data(), blocks[0]->data() + count, scratch_.data());
    const int channels = static_cast<int>(blocks.size());
    for (int c = 1; c < channels; ++c) {
        const bool isCenter = c >= stereo_ && c < stereo_ + center_;
        const bool isLfe = c >= stereo_ + center_;
        if ((isCenter && !linkCenter) || (isLfe && !linkLfe)) continue;
        kernel::maximum(scratch_.data(), blocks[static_cast<std::size_t>(c)]->data(), scratch_.data(), count);
    }
}

// The first pair takes the first centre, the last pair the second one, if there are two.
int DefaultStereoLinker::centerOfPair(int left) const {
    if (!linkCenter || center_ == 0) return -1;
    if (left == 0) return stereo_;
    return center_ == 2 && left + 3 >= stereo_ ? stereo_ + center_ - 1 : -1;
}

void DefaultStereoLinker::linkPair(Blocks blocks, int left, std::size_t count) {
    const int right = left + 1;
    const int linkedCenter = centerOfPair(left);
    float* l = blocks[static_cast<std::size_t>(left)]->data();
    float* r = blocks[static_cast<std::size_t>(right)]->data();
    float* c = linkedCenter >= 0 ? blocks[static_cast<std::size_t>(linkedCenter)]->data() : nullptr;
    const bool linkAll = amount > 0.5f;
    float* peak = linkAll ? l : scratch_.data();
    kernel::maximum(l, r, peak, count);
    if (c) kernel::maximum(c, peak, peak, count);
    if (linkAll) {
        // The channels of the pair detect the same from here on and share one block.
        kernel::moveToward(peak, scratch_.data(), 2.0f * amount - 1.0f, l, count);
        publishOutput(right, *blocks[static_cast<std::size_t>(left)], 0);
        if (c) publishOutput(linkedCenter, *blocks[static_cast<std::size_t>(left)], 0);
        return;
    }
    const float pairAmount = std::min(2.0f * amount, 1.0f);
    for (float* channel : {l, r, c}) {
        if (channel) kernel::moveToward(channel, peak, pairAmount, channel, count);
    }
}

}  // namespace vanta
