#include "tests/host/vst3/vst3_host.hpp"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <stdexcept>

#ifdef __SANITIZE_ADDRESS__
/// The leak checker else reads thread storage of modules by sizes that it has guessed, and crashes.
extern "C" [[gnu::visibility("default")]] const char* __asan_default_options();
const char* __asan_default_options() {
    return "intercept_tls_get_addr=0";
}
#endif

namespace vanta::test {

// L 1, R 2, C 4, Lfe 8, Ls 0x10, Rs 0x20, Lc 0x40, Rc 0x80, S 0x100, Sl 0x200, Sr 0x400, M 0x80000,
// Tsl 0x1000000, Tsr 0x2000000. A bus has its channels in this order; ours begin with the pairs, from the
// front to the back, and end with centre, surround and LFE.
const std::array<Vst3Layout, kChannelLayoutCount> kVst3Layouts{{
    {0x80000, {0}},
    {0x3, {0, 1}},
    {0x7, {0, 1, 2}},
    {0x33, {0, 1, 2, 3}},
    {0x107, {0, 1, 2, 3}},
    {0x37, {0, 1, 3, 4, 2}},
    {0x3F, {0, 1, 4, 5, 2, 3}},
    {0x137, {0, 1, 3, 4, 2, 5}},
    {0x13F, {0, 1, 4, 5, 2, 6, 3}},
    {0xF7, {0, 1, 5, 6, 3, 4, 2}},
    {0x637, {0, 1, 5, 6, 3, 4, 2}},
    {0xFF, {0, 1, 6, 7, 4, 5, 2, 3}},
    {0x63F, {0, 1, 6, 7, 4, 5, 2, 3}},
    {0x3000637, {0, 1, 5, 6, 3, 4, 7, 8, 2}},
    {0x300063F, {0, 1, 6, 7, 4, 5, 8, 9, 2, 3}},
}};

std::string readText(const std::int16_t* text) {
    std::string read;
    for (; *text; ++text) read += static_cast<char>(*text);
    return read;
}

void writeText(const std::string& text, v3_str_128& out) {
    std::fill(std::begin(out), std::end(out), std::int16_t{0});
    for (std::size_t i = 0; i < std::min(text.size(), std::size_t{127}); ++i) {
        out[i] = static_cast<unsigned char>(text[i]);
    }
}

// The module

const char* Vst3Module::bundle() {
    return VANTA_VST3_BUNDLE;
}

const char* Vst3Module::path() {
    return VANTA_VST3_MODULE;
}

Vst3Module::Vst3Module() : library_(dlopen(path(), RTLD_NOW | RTLD_LOCAL)) {
    if (!library_) throw std::runtime_error(dlerror());
    const auto enter = reinterpret_cast<bool (*)(void*)>(dlsym(library_, "ModuleEntry"));
    const auto make = reinterpret_cast<void* (*)()>(dlsym(library_, "GetPluginFactory"));
    if (!enter || !make || !enter(library_)) throw std::runtime_error("the module does not let us in");
    auto** first = static_cast<v3_plugin_factory**>(make());
    v3_cpp_obj_query_interface(first, v3_plugin_factory_3_iid, &factory_);
    v3_cpp_obj_unref(first);
}

Vst3Module::~Vst3Module() {
    v3_cpp_obj_unref(factory_);
    reinterpret_cast<bool (*)()>(dlsym(library_, "ModuleExit"))();
    dlclose(library_);
}

void Vst3Module::setContext(HostUnknown* context) {
    v3_cpp_obj(factory_)->set_host_context(factory_, static_cast<v3_funknown**>(static_cast<void*>(context)));
}

// The instance

Vst3Instance::Vst3Instance(v3_plugin_factory** factory) {
    v3_class_info info{};
    v3_cpp_obj(factory)->get_class_info(factory, 0, &info);
    void* made = nullptr;
    if (v3_cpp_obj(factory)->create_instance(factory, info.class_id, v3_component_iid, &made) != V3_OK)
        return;
    component = static_cast<v3_component**>(made);
    v3_cpp_obj_query_interface(component, v3_audio_processor_iid, &processor);
    v3_cpp_obj_query_interface(component, v3_edit_controller_iid, &controller);
    v3_cpp_obj_query_interface(component, v3_unit_information_iid, &units);
    v3_cpp_obj_query_interface(component, v3_midi_mapping_iid, &midi);
}

Vst3Instance::~Vst3Instance() {
    v3_cpp_obj_unref(midi);
    v3_cpp_obj_unref(units);
    v3_cpp_obj_unref(controller);
    v3_cpp_obj_unref(processor);
    v3_cpp_obj_unref(component);
}

v3_result Vst3Instance::arrange(std::vector<v3_speaker_arrangement> inputs,
                                std::vector<v3_speaker_arrangement> outputs) {
    return v3_cpp_obj(processor)->set_bus_arrangements(
        processor, inputs.data(), static_cast<std::int32_t>(inputs.size()), outputs.data(),
        static_cast<std::int32_t>(outputs.size()));
}

v3_result Vst3Instance::setUp(double rate, int largestBlock, int mode, int sampleSize) {
    v3_process_setup setup{mode, sampleSize, largestBlock, rate};
    return v3_cpp_obj(processor)->setup_processing(processor, &setup);
}

// The host

const FormatHost::Traits& Vst3Host::traits() const {
    static const Traits traits{
        .name = "VST3", .module = Vst3Module::path(), .layouts = allLayouts(), .hasWindows = true};
    return traits;
}

Vst3Host::Vst3Host(Loop loop) : loop_(loop) {
    if (loop_ == Loop::Factory) module_.setContext(&runLoop);
    if (loop_ == Loop::Context) application.runLoop = &runLoop;
    if (loop_ == Loop::Handler) handler.runLoop = &runLoop;
}

Vst3Host::~Vst3Host() {
    // The module goes with the host, and must leave nothing that still runs.
    if (view_) closeWindow();
    letGo();
}

void Vst3Host::letGo() {
    if (!plugin_) return;
    v3_cpp_obj(plugin_->processor)->set_processing(plugin_->processor, 0);
    plugin_->setActive(false);
    v3_cpp_obj(plugin_->controller)->set_component_handler(plugin_->controller, nullptr);
    v3_cpp_obj_terminate(plugin_->component);
    // Without a run loop it has no other choice.
    EXPECT_TRUE(loop_ == Loop::None || handler.strayCalls == 0) << "not told on the main thread";
    plugin_.reset();
}

bool Vst3Host::open(ChannelLayout layout, double sampleRate, int largestBlock, bool sideChain) {
    layout_ = layout;
    plugin_ = std::make_unique<Vst3Instance>(module_.factory());
    if (!plugin_->component) return false;
    if (v3_cpp_obj_initialize(plugin_->component, application.as<v3_funknown>()) != V3_OK) return false;
    v3_cpp_obj(plugin_->controller)
        ->set_component_handler(plugin_->controller, handler.as<v3_component_handler>());
    const v3_speaker_arrangement speakers = kVst3Layouts[static_cast<std::size_t>(layout)].arrangement;
    if (plugin_->arrange({speakers, speakers}, {speakers}) != V3_TRUE) return false;
    v3_cpp_obj(plugin_->component)->activate_bus(plugin_->component, V3_AUDIO, V3_INPUT, 1, sideChain);
    rate_ = sampleRate;
    largestBlock_ = largestBlock;
    return activate();
}

bool Vst3Host::activate() {
    if (plugin_->setUp(rate_, largestBlock_, mode_) != V3_OK || plugin_->setActive(true) != V3_OK)
        return false;
    latency_ = plugin_->latency();
    return v3_cpp_obj(plugin_->processor)->set_processing(plugin_->processor, 1) == V3_OK;
}

bool Vst3Host::reactivate(double sampleRate, int largestBlock) {
    v3_cpp_obj(plugin_->processor)->set_processing(plugin_->processor, 0);
    plugin_->setActive(false);
    rate_ = sampleRate;
    largestBlock_ = largestBlock;
    return activate();
}

double Vst3Host::value(int index) const {
    const auto id = static_cast<v3_param_id>(index);
    auto** const controller = plugin_->controller;
    return v3_cpp_obj(controller)->normalised_parameter_to_plain(controller, id, plugin_->value(id));
}

void Vst3Host::setValue(int index, double value) {
    const auto id = static_cast<v3_param_id>(index);
    auto** const controller = plugin_->controller;
    const double position = v3_cpp_obj(controller)->plain_parameter_to_normalised(controller, id, value);
    plugin_->set(id, position);
    changes.add(id, 0, position);
}

std::vector<std::byte> Vst3Host::save(int chunk) {
    Stream stream({}, chunk);
    const bool saved =
        v3_cpp_obj(plugin_->component)->get_state(plugin_->component, stream.pointer()) == V3_OK;
    return saved ? stream.bytes : std::vector<std::byte>();
}

bool Vst3Host::restore(std::span<const std::byte> bytes, int chunk) {
    Stream stream(bytes, chunk);
    if (v3_cpp_obj(plugin_->component)->set_state(plugin_->component, stream.pointer()) != V3_OK)
        return false;
    Stream again(bytes, chunk);
    return v3_cpp_obj(plugin_->controller)->set_component_state(plugin_->controller, again.pointer()) ==
           V3_OK;
}

void Vst3Host::idle() {
    runLoop.run();
    while (granted_ < wantedSizes.size()) resizeWindow(wantedSizes[granted_++]);
    if (handler.takeRestart(V3_RESTART_LATENCY_CHANGED)) reactivate(rate_, largestBlock_);
}

void Vst3Host::process(const Block& block) {
    const Vst3Layout& layout = kVst3Layouts[static_cast<std::size_t>(layout_)];
    const std::size_t channels = layout.hostChannel.size();
    for (std::size_t i = 0; i < channels; ++i) {
        const std::size_t there = layout.hostChannel[i];
        // The format has no buffers that are only read.
        inputs_[there] = const_cast<float*>(block.inputs[i]);
        sideChain_[there] = block.sideChain.empty() ? nullptr : const_cast<float*>(block.sideChain[i]);
        outputs_[there] = block.outputs[i];
    }
    const auto count = static_cast<std::int32_t>(channels);
    v3_audio_bus_buffers in[2] = {{count, 0, {inputs_.data()}}, {count, 0, {sideChain_.data()}}};
    if (block.sideChain.empty()) in[1] = {0, 0, {nullptr}};
    v3_audio_bus_buffers out{count, ~std::uint64_t{0}, {outputs_.data()}};
    auto** const controller = plugin_->controller;
    for (const Change& change : block.changes) {
        const auto id = static_cast<v3_param_id>(change.index);
        changes.add(id, change.offset,
                    v3_cpp_obj(controller)->plain_parameter_to_normalised(controller, id, change.value));
    }
    for (const Midi& midi : block.midi) {
        v3_param_id id = 0;
        const auto channel = static_cast<std::int16_t>(midi.message.status & 0x0F);
        const bool isController = (midi.message.status & 0xF0) == 0xB0;
        if (isController && v3_cpp_obj(plugin_->midi)
                                    ->get_midi_controller_assignment(plugin_->midi, 0, channel,
                                                                     midi.message.data1, &id) == V3_TRUE) {
            changes.add(id, midi.offset, midi.message.data2 / 127.0);
        }
    }
    context_.state = V3_PROCESS_CTX_PLAYING | V3_PROCESS_CTX_TEMPO_VALID;
    context_.bpm = 120.0;
    context_.sample_rate = rate_;
    answers.clear();
    v3_process_data data{mode_, V3_SAMPLE_32,      block.samples,     2,       1,       in,
                         &out,  changes.pointer(), answers.pointer(), nullptr, nullptr, &context_};
    v3_cpp_obj(plugin_->processor)->process(plugin_->processor, &data);
    context_.project_time_in_samples += block.samples;
    changes.clear();
}

// The window

bool Vst3Host::openWindow(unsigned long parent) {
    auto** const controller = plugin_->controller;
    view_ = v3_cpp_obj(controller)->create_view(controller, "editor");
    if (!view_) return false;
    handler.onCall = [this](const Handler::Call& call) {
        if (call.kind == Handler::Call::Kind::Begin) onWindowCall();
    };
    frame_.onResize = [this](v3_plugin_view**, const v3_view_rect& wanted) -> v3_result {
        onWindowCall();
        if (refusesSizes) return V3_FALSE;
        wantedSizes.push_back({wanted.right - wanted.left, wanted.bottom - wanted.top});
        return V3_OK;
    };
    v3_cpp_obj(view_)->set_frame(view_, frame_.as<v3_plugin_frame>());
    return v3_cpp_obj(view_)->attached(view_, reinterpret_cast<void*>(parent), "X11EmbedWindowID") == V3_OK;
}

void Vst3Host::closeWindow() {
    EXPECT_EQ(v3_cpp_obj(view_)->removed(view_), V3_OK);
    v3_cpp_obj(view_)->set_frame(view_, nullptr);
    v3_cpp_obj_unref(std::exchange(view_, nullptr));
    EXPECT_TRUE(runLoop.descriptors.empty() && frame_.references == 0) << "left behind";
}

FormatHost::Size Vst3Host::windowSize() const {
    v3_view_rect rectangle{};
    v3_cpp_obj(view_)->get_size(view_, &rectangle);
    return {rectangle.right, rectangle.bottom};
}

void Vst3Host::resizeWindow(Size size) {
    v3_view_rect rectangle{0, 0, size.width, size.height};
    v3_cpp_obj(view_)->check_size_constraint(view_, &rectangle);
    EXPECT_EQ(v3_cpp_obj(view_)->on_size(view_, &rectangle), V3_OK);
}

void Vst3Host::dropWithWindow() {
    letGo();
    runLoop.run();
    closeWindow();
}

std::vector<FormatHost::Edit> Vst3Host::takeEdits() {
    using Kind = Handler::Call::Kind;
    std::vector<Edit> edits;
    for (; heard_ < handler.calls.size(); ++heard_) {
        const Handler::Call& call = handler.calls[heard_];
        const auto index = static_cast<int>(call.parameter);
        auto** const controller = plugin_->controller;
        if (call.kind == Kind::Begin) edits.push_back({Edit::Kind::Begin, index});
        if (call.kind == Kind::End) edits.push_back({Edit::Kind::End, index});
        if (call.kind == Kind::Perform)
            edits.push_back({Edit::Kind::Value, index,
                             v3_cpp_obj(controller)
                                 ->normalised_parameter_to_plain(controller, call.parameter, call.value)});
    }
    return edits;
}

std::unique_ptr<FormatHost> makeVst3Host() {
    return std::make_unique<Vst3Host>();
}

}  // namespace vanta::test
