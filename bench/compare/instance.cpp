#include "bench/compare/instance.hpp"

#include <stdexcept>

#include "limiter/parameters/parameter_table.hpp"

namespace vanta::bench {

namespace {

int indexOf(std::string_view name) {
    return static_cast<int>(&parameterRow(name) - kParameterTable.data());
}

}  // namespace

/// Listens, and has nothing to say.
class Instance::NoHost final : public HostCallbacks {
public:
    void parameterEdited(int, Edit, float) override {}
    void latencyChanged() override {}
    void pumpRequested() override {}
};

Instance::Instance(const InstanceSettings& settings, const Music& music)
    : host_(std::make_unique<NoHost>()),
      plugin_(*host_, settings.layout),
      music_(&music),
      blockFrames_(settings.blockFrames),
      output_(music.channels.size(), std::vector<float>(static_cast<std::size_t>(settings.blockFrames))),
      inputs_(music.channels.size()) {
    if (music.frames() % blockFrames_ != 0) throw std::invalid_argument("the music has no whole blocks");
    for (auto& channel : output_) outputs_.push_back(channel.data());
    plugin_.hostValueChanged(indexOf("Style"), static_cast<double>(settings.style));
    plugin_.hostValueChanged(indexOf("Oversampling"), settings.stages);
    plugin_.hostValueChanged(indexOf("Gain"), settings.gainDb);
    plugin_.hostValueChanged(indexOf("True Peak Limiting"), 1.0);
    plugin_.hostValueChanged(indexOf("True Peak Metering"), 1.0);
    plugin_.pump();
    if (!plugin_.activate(Music::kRate, blockFrames_)) throw std::runtime_error("the limiter does not start");
}

Instance::~Instance() = default;

void Instance::play(int blocks) {
    NoHostEvents events;
    for (int block = 0; block < blocks; ++block) {
        for (std::size_t c = 0; c < inputs_.size(); ++c) inputs_[c] = music_->channels[c].data() + position_;
        plugin_.process({.inputs = inputs_,
                         .sideChain = {},
                         .outputs = outputs_,
                         .samples = blockFrames_,
                         .transport = {}},
                        events);
        position_ = (position_ + blockFrames_) % music_->frames();
    }
}

void Instance::restart() {
    plugin_.reset();
    position_ = 0;
}

void Instance::change(const Music& music) {
    music_ = &music;
    position_ = 0;
}

}  // namespace vanta::bench
