#include "host/aax_host/aax_instance.hpp"

#include <algorithm>
#include <cstring>

namespace vanta {

/// Reads what the instance's user has set.
class AaxInstance::TransportView final : public AAX_ITransport {
public:
    explicit TransportView(const AaxTransportState& state) : state_(state) {}
    AAX_Result GetCurrentTempo(double* tempo) const override { return answer(tempo, state_.tempo); }
    AAX_Result GetCurrentMeter(std::int32_t* numerator, std::int32_t* denominator) const override {
        *denominator = state_.denominator;
        return answer(numerator, state_.numerator);
    }
    AAX_Result GetCurrentSampleLocation(std::int64_t* location) const override {
        return answer(location, std::int64_t{0});
    }
    AAX_Result GetBarBeatPosition(std::int32_t* bar, std::int32_t* beat, std::int64_t* ticks,
                                  std::int64_t) const override {
        *beat = state_.beat;
        *ticks = state_.ticks;
        return answer(bar, state_.bar);
    }
    AAX_Result GetTicksPerQuarter(std::int32_t* ticks) const override {
        return answer(ticks, state_.ticksPerQuarter);
    }
    AAX_Result GetTicksPerBeat(std::int32_t* ticks) const override {
        return answer(ticks, state_.ticksPerBeat);
    }

private:
    template <typename T>
    AAX_Result answer(T* to, T value) const {
        *to = value;
        return AAX_SUCCESS;
    }

    const AaxTransportState& state_;
};

class AaxInstance::Node final : public AAX_IMIDINode {
public:
    const AAX_CMidiStream* GetNodeBuffer() override { return &stream; }
    AAX_ITransport* GetTransport() override { return transport; }

    AAX_CMidiStream stream{};
    AAX_ITransport* transport = nullptr;
};

AaxInstance::AaxInstance(const AaxComponent& component, float sampleRate, Answers answers,
                         AAX_EStemFormat input)
    : component_(component),
      answers_(answers),
      inputStem_(input ? input : component.inputStem()),
      sampleRate_(sampleRate),
      transportView_(std::make_unique<TransportView>(transport)),
      midiNode_(std::make_unique<Node>()),
      transportNode_(std::make_unique<Node>()),
      parameters_(component.effect.newParameters()) {
    if (!parameters_) throw std::bad_alloc();
    prepareFields();
}

AaxInstance::~AaxInstance() {
    parameters_.reset();
}

AAX_Result AaxInstance::initialize() {
    const AAX_Result result = parameters_->Initialize(this);
    return result == AAX_SUCCESS ? readParameters() : result;
}

AAX_Result AaxInstance::readParameters() {
    std::int32_t count = 0;
    AAX_Result result = parameters_->GetNumberOfParameters(&count);
    for (std::int32_t i = 0; i < count && result == AAX_SUCCESS; ++i) {
        AAX_CParamID id = nullptr;
        double value = 0.0;
        result = parameters_->GetParameterIDFromIndex(i, &id);
        if (result == AAX_SUCCESS) result = parameters_->GetParameterNormalizedValue(id, &value);
        if (result == AAX_SUCCESS) values_[id].store(value);
    }
    if (result != AAX_SUCCESS) return result;
    isOpen_ = true;
    return parameters_->GenerateCoefficients();
}

void AaxInstance::prepareFields() {
    using Kind = AaxComponent::Kind;
    for (const auto& [index, field] : component_.fields) {
        const auto at = static_cast<std::size_t>(index);
        void*& place = context_[at];
        switch (field.kind) {
            case Kind::DataIn:
                ports_[at].size = field.size;
                place = &ports_[at].taken;
                break;
            case Kind::AudioIn:
                place = inputs_.data();
                break;
            case Kind::AudioOut:
                place = outputs_.data();
                break;
            case Kind::BufferLength:
                place = &samples_;
                break;
            case Kind::SideChain:
                place = &sideChain_;
                break;
            case Kind::SampleRate:
                place = &blockRate_;
                break;
            case Kind::MidiIn:
                place = midiNode_.get();
                break;
            case Kind::Transport:
                place = transportNode_.get();
                break;
            case Kind::PrivateData:
                privateData_[index].resize(field.size);
                place = privateData_[index].data();
                break;
            case Kind::Meters:
                meters_.resize(std::max<std::size_t>(field.meters.size(), 1));
                place = meters_.data();
                break;
        }
    }
}

// What the instance asks of its host

AAX_ITransport* AaxInstance::Transport() {
    return transport.isThere ? transportView_.get() : nullptr;
}

AAX_Result AaxInstance::GetInputStemFormat(AAX_EStemFormat* format) const {
    *format = inputStem_;
    return AAX_SUCCESS;
}

AAX_Result AaxInstance::GetOutputStemFormat(AAX_EStemFormat* format) const {
    *format = component_.outputStem();
    return AAX_SUCCESS;
}

AAX_Result AaxInstance::GetSampleRate(AAX_CSampleRate* rate) const {
    *rate = sampleRate_.load();
    return AAX_SUCCESS;
}

AAX_Result AaxInstance::SetSignalLatency(std::int32_t samples) {
    latency_.store(samples);
    latencyReports_.fetch_add(1);
    return AAX_SUCCESS;
}

AAX_Result AaxInstance::PostPacket(AAX_CFieldIndex field, const void* data, std::uint32_t size) {
    const auto at = static_cast<std::size_t>(field);
    if (!data) return AAX_ERROR_NULL_OBJECT;
    if (field < 0 || at >= kFields || size == 0 || ports_[at].size != size) return AAX_ERROR_INVALID_ARGUMENT;
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, data, size);
    ports_[at].posted.store(bytes);
    return AAX_SUCCESS;
}

AAX_Result AaxInstance::RegisterParameter(AAX_CParamID id) {
    automatable_[id] = true;
    return AAX_SUCCESS;
}

AAX_Result AaxInstance::UnregisterParameter(AAX_CParamID id) {
    automatable_.erase(id);
    return AAX_SUCCESS;
}

AAX_Result AaxInstance::PostSetValueRequest(AAX_CParamID id, double normalized) {
    if (isOpen_ && answers_ == Answers::AtOnce) return setValue(id, normalized);
    const std::lock_guard held(mutex_);
    dueAnswers_.emplace_back(id, normalized);
    return AAX_SUCCESS;
}

void AaxInstance::note(AAX_CParamID id, bool begins) {
    const std::lock_guard held(mutex_);
    gestures_.push_back({id, begins});
}

AAX_Result AaxInstance::PostTouchRequest(AAX_CParamID id) {
    note(id, true);
    return AAX_SUCCESS;
}

AAX_Result AaxInstance::PostReleaseRequest(AAX_CParamID id) {
    note(id, false);
    return AAX_SUCCESS;
}

// What the host does

void AaxInstance::idle() {
    std::vector<std::pair<std::string, double>> due;
    {
        const std::lock_guard held(mutex_);
        due.swap(dueAnswers_);
    }
    for (const auto& [id, position] : due) setValue(id, position);
    parameters_->GenerateCoefficients();
}

AAX_Result AaxInstance::setValue(const std::string& id, double position) {
    const AAX_Result result = parameters_->UpdateParameterNormalizedValue(id.c_str(), position, 0);
    // What was refused is not the value.
    if (const auto known = values_.find(id); known != values_.end() && result == AAX_SUCCESS)
        known->second.store(std::clamp(position, 0.0, 1.0));
    return result;
}

std::vector<AaxInstance::Gesture> AaxInstance::takeGestures() {
    const std::lock_guard held(mutex_);
    return std::exchange(gestures_, {});
}

AAX_Result AaxInstance::save(Chunks& chunks) {
    std::int32_t count = 0;
    AAX_Result result = parameters_->GetNumberOfChunks(&count);
    for (std::int32_t i = 0; i < count && result == AAX_SUCCESS; ++i) {
        AAX_CTypeID id = 0;
        std::uint32_t size = 0;
        result = parameters_->GetChunkIDFromIndex(i, &id);
        if (result == AAX_SUCCESS) result = parameters_->GetChunkSize(id, &size);
        if (result != AAX_SUCCESS) break;
        if (size < AAX_kChunkHeaderSize) return AAX_ERROR_INCORRECT_CHUNK_SIZE;
        AAX_SPlugInChunk header{};
        header.manufacturerId = component_.effect.properties.find(AAX_eProperty_ManufacturerID).value_or(0);
        header.productId = component_.effect.properties.find(AAX_eProperty_ProductID).value_or(0);
        header.plugInId = component_.pluginId();
        std::vector<std::byte> bytes(size);
        std::memcpy(bytes.data(), &header, sizeof(header));
        result = parameters_->GetChunk(id, reinterpret_cast<AAX_SPlugInChunk*>(bytes.data()));
        if (result == AAX_SUCCESS) chunks[id] = std::move(bytes);
    }
    return result;
}

AAX_Result AaxInstance::restore(const Chunks& chunks) {
    AAX_Result first = AAX_SUCCESS;
    for (const auto& [id, bytes] : chunks) {
        AAX_Result result = AAX_ERROR_INCORRECT_CHUNK_SIZE;
        const auto* const chunk = reinterpret_cast<const AAX_SPlugInChunk*>(bytes.data());
        if (bytes.size() >= AAX_kChunkHeaderSize && chunk->size == static_cast<std::int32_t>(bytes.size()))
            result = parameters_->SetChunk(id, chunk);
        if (first == AAX_SUCCESS) first = result;
    }
    return first;
}

// Audio

void AaxInstance::resetPrivateData() {
    for (auto& [field, bytes] : privateData_)
        parameters_->ResetFieldData(field, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

void AaxInstance::render(const Block& block) {
    if (resetRequested_.exchange(false)) resetPrivateData();
    for (Port& port : ports_) port.taken = port.posted.load();
    const std::size_t inputs = std::min(block.inputs.size(), kChannels - 1);
    std::copy_n(block.inputs.begin(), inputs, inputs_.begin());
    std::copy_n(block.outputs.begin(), std::min(block.outputs.size(), kChannels), outputs_.begin());
    inputs_[inputs] = block.sideChain;
    sideChain_ = block.sideChain ? static_cast<std::int32_t>(inputs) : 0;
    samples_ = block.samples;
    blockRate_ = sampleRate_.load();
    midiNode_->stream = {static_cast<std::uint32_t>(block.midi.size()), block.midi.data()};
    transportNode_->transport = transport.isThere ? transportView_.get() : nullptr;
    void* const* const contexts[] = {context_.data()};
    component_.proc(contexts, 1);
}

}  // namespace vanta
