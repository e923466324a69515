#include "tests/host/in_process_host.hpp"

#include "host/unified/host_position.hpp"

namespace vanta::test {
namespace {

// Nothing plays but the block: a host without a transport.
constexpr float kTempo = 120.0f;

}  // namespace

/// Hands to this host what the plug-in reports.
class InProcessHost::Adapter final : public UnifiedPluginAdapter {
public:
    explicit Adapter(InProcessHost& owner) : UnifiedPluginAdapter(RoundTrip::ByHost), host_(owner) {}

    void reportLatency() override {
        host_.latency_.store(model().latency());
        host_.latencyReports_.fetch_add(1);
    }
    void reportParameter(int index, float value) override { host_.valueReported(index, value); }
    void presetNameChanged() override { host_.nameReports_.fetch_add(1); }

private:
    InProcessHost& host_;
};

InProcessHost::InProcessHost(ChannelLayout layout, float sampleRate, Answers when)
    : answers_(when), adapter_(std::make_unique<Adapter>(*this)) {
    adapter_->create(layout);
    positions_ = std::vector<std::atomic<double>>(static_cast<std::size_t>(model().parameterCount()));
    for (int i = 0; i < model().parameterCount(); ++i) {
        const AbstractPluginParameter& parameter = *model().parameterAt(i);
        positions_[static_cast<std::size_t>(i)].store(hostPosition(parameter, parameter.value()));
    }
    adapter_->prepare(sampleRate, kLargestBlock);
    latency_.store(model().latency());
}

InProcessHost::~InProcessHost() = default;

void InProcessHost::idle() {
    std::vector<std::pair<int, double>> due;
    {
        const std::lock_guard held(answerMutex_);
        due.swap(dueAnswers_);
    }
    for (const auto& [index, position] : due) adapter_->hostPositionChanged(index, position);
    adapter_->pumpEvents();
}

void InProcessHost::setPosition(int index, double position) {
    positions_[static_cast<std::size_t>(index)].store(position);
    adapter_->hostPositionChanged(index, position);
}

void InProcessHost::valueReported(int index, float value) {
    const double told = hostPosition(*model().parameterAt(index), value);
    positions_[static_cast<std::size_t>(index)].store(told);
    answer(index, told);
}

void InProcessHost::answer(int index, double position) {
    if (answers_ == Answers::AtOnce) return adapter_->hostPositionChanged(index, position);
    const std::lock_guard held(answerMutex_);
    dueAnswers_.emplace_back(index, position);
}

std::vector<std::byte> InProcessHost::saveState() {
    return adapter_->saveState();
}

bool InProcessHost::loadState(std::span<const std::byte> bytes) {
    return adapter_->restoreState(bytes);
}

bool InProcessHost::sendMidi(int offset, const MidiMessage& message) {
    return adapter_->queueMidi(offset, message);
}

void InProcessHost::automate(int index, double value) {
    adapter_->hostValueChangedInBlock(index, value);
}

void InProcessHost::process(std::span<const float* const> inputs, std::span<float* const> outputs,
                            int samples) {
    processor().updateTransport(kTempo, 0.0f);
    processor().processBlock(inputs.data(), static_cast<int>(inputs.size()), outputs.data(),
                             static_cast<int>(outputs.size()), samples);
}

}  // namespace vanta::test
