#include "tests/host/aax/aax_format_host.hpp"

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

#include "host/aax_host/stem_speakers.hpp"
#include "limiter/parameters/parameter_table.hpp"

namespace vanta::test {
namespace {

const ParameterValues& valuesOf(int index) {
    return kParameterTable[static_cast<std::size_t>(index)].values;
}

double rangeOf(int index) {
    return static_cast<double>(valuesOf(index).maximum) - static_cast<double>(valuesOf(index).minimum);
}

}  // namespace

const char* AaxFormatHost::path() {
    return VANTA_AAX_MODULE;
}

AaxFormatHost::AaxFormatHost() : module_(path()) {}

const FormatHost::Traits& AaxFormatHost::traits() const {
    static const Traits kTraits{.name = "Aax",
                                .module = path(),
                                .isSampleAccurate = false,
                                .layouts = allLayouts(),
                                .hasValuesInBlocks = false,
                                .hasOfflineMode = false,
                                .hasWindows = true,
                                .resizesWindows = false};
    return kTraits;
}

bool AaxFormatHost::open(ChannelLayout layout, double sampleRate, int, bool) {
    const AaxComponent* const component = module_.find(layout, false);
    if (!component) return false;
    hostChannel_ = stemChannels(layout);
    instance_ = std::make_unique<AaxInstance>(*component, static_cast<float>(sampleRate));
    return instance_->initialize() == AAX_SUCCESS;
}

bool AaxFormatHost::reactivate(double sampleRate, int) {
    instance_->setSampleRate(static_cast<float>(sampleRate));
    instance_->reset();
    // Takes up the rate, as hosts do before they start.
    const std::vector<float> silence(1);
    std::vector<float> ignored(hostChannel_.size());
    std::vector<const float*> inputs(hostChannel_.size(), silence.data());
    std::vector<float*> outputs;
    for (float& sample : ignored) outputs.push_back(&sample);
    instance_->render({inputs, nullptr, outputs, 0, {}});
    instance_->reset();
    instance_->idle();
    return true;
}

int AaxFormatHost::parameterCount() const {
    std::int32_t count = 0;
    EXPECT_EQ(instance_->parameters().GetNumberOfParameters(&count), AAX_SUCCESS);
    return count - 1;  // but for the Master Bypass
}

double AaxFormatHost::value(int index) const {
    double position = 0.0;
    EXPECT_EQ(instance_->parameters().GetParameterNormalizedValue(std::to_string(index).c_str(), &position),
              AAX_SUCCESS);
    return static_cast<double>(valuesOf(index).minimum) + position * rangeOf(index);
}

void AaxFormatHost::setValue(int index, double value) {
    const double position = (value - static_cast<double>(valuesOf(index).minimum)) / rangeOf(index);
    EXPECT_EQ(instance_->setValue(std::to_string(index), position), AAX_SUCCESS);
}

std::vector<std::byte> AaxFormatHost::save(int) {
    AaxInstance::Chunks chunks;
    EXPECT_EQ(instance_->save(chunks), AAX_SUCCESS);
    std::vector<std::byte> session;
    for (const auto& [id, chunk] : chunks) session.insert(session.end(), chunk.begin(), chunk.end());
    return session;
}

bool AaxFormatHost::restore(std::span<const std::byte> bytes, int) {
    AaxInstance::Chunks chunks;
    while (bytes.size() >= sizeof(AAX_SPlugInChunk)) {
        AAX_SPlugInChunk header{};
        std::memcpy(&header, bytes.data(), sizeof(header));
        const auto size = static_cast<std::size_t>(header.size);
        if (header.size < AAX_kChunkHeaderSize || size > bytes.size()) return false;
        chunks[header.chunkId].assign(bytes.begin(), bytes.begin() + header.size);
        bytes = bytes.subspan(size);
    }
    return bytes.empty() && chunks.size() == 2 && instance_->restore(chunks) == AAX_SUCCESS;
}

void AaxFormatHost::process(const Block& block) {
    for (const Change& change : block.changes) setValue(change.index, change.value);
    std::array<const float*, kMaxChannels> inputs{};
    std::array<float*, kMaxChannels> outputs{};
    for (std::size_t i = 0; i < hostChannel_.size(); ++i) {
        inputs[hostChannel_[i]] = block.inputs[i];
        outputs[hostChannel_[i]] = block.outputs[i];
    }
    const std::size_t count = std::min(block.midi.size(), midi_.size());
    for (std::size_t i = 0; i < count; ++i) {
        const MidiMessage& message = block.midi[i].message;
        midi_[i] = {static_cast<std::uint32_t>(block.midi[i].offset),
                    3,
                    {message.status, message.data1, message.data2, 0}};
    }
    instance_->render({.inputs = std::span(inputs).first(hostChannel_.size()),
                       .sideChain = block.sideChain.empty() ? nullptr : block.sideChain[0],
                       .outputs = std::span(outputs).first(hostChannel_.size()),
                       .samples = block.samples,
                       .midi = std::span(midi_).first(count)});
}

// The window

/// Called with every turn of the mouse.
AAX_Result AaxFormatHost::Container::GetModifiers(std::uint32_t* modifiers) {
    owner.onWindowCall();
    *modifiers = 0;
    return AAX_SUCCESS;
}

AAX_Result AaxFormatHost::Container::SetViewSize(AAX_Point* size) {
    owner.onWindowCall();
    if (owner.refusesSizes) return -1;
    owner.wantedSizes.push_back({static_cast<int>(size->horizontal), static_cast<int>(size->vertical)});
    return AAX_SUCCESS;
}

void AaxFormatHost::idle() {
    if (editor_) {
        EXPECT_EQ(editor_->TimerWakeup(), AAX_SUCCESS);
    }
    instance_->idle();
}

bool AaxFormatHost::openWindow(unsigned long parent) {
    editor_.reset(instance_->component().effect.newEditor());
    container_.window = parent;
    if (editor_->Initialize(&instance_->parameters()) != AAX_SUCCESS ||
        editor_->SetViewContainer(&container_) != AAX_SUCCESS)
        return false;
    return true;
}

void AaxFormatHost::closeWindow() {
    EXPECT_EQ(editor_->SetViewContainer(nullptr), AAX_SUCCESS);
    editor_.reset();
}

FormatHost::Size AaxFormatHost::windowSize() const {
    AAX_Point size{};
    EXPECT_EQ(editor_->GetViewSize(&size), AAX_SUCCESS);
    return {static_cast<int>(size.horizontal), static_cast<int>(size.vertical)};
}

void AaxFormatHost::dropWithWindow() {
    instance_.reset();
    editor_->TimerWakeup();
    editor_.reset();
}

/// The values between are not kept: where a gesture ends stands what it has led to.
std::vector<FormatHost::Edit> AaxFormatHost::takeEdits() {
    std::vector<Edit> edits;
    for (const AaxInstance::Gesture& gesture : instance_->takeGestures()) {
        const int index = std::stoi(gesture.id);
        if (!gesture.begins) edits.push_back({Edit::Kind::Value, index, value(index)});
        edits.push_back({gesture.begins ? Edit::Kind::Begin : Edit::Kind::End, index});
    }
    return edits;
}

std::unique_ptr<FormatHost> makeAaxHost() {
    return std::make_unique<AaxFormatHost>();
}

}  // namespace vanta::test
