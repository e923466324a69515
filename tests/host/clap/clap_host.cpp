#include "tests/host/clap/clap_host.hpp"

#include <clap/ext/thread-check.h>
#include <clap/ext/timer-support.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace vanta::test {
namespace {

const std::vector<std::vector<std::uint8_t>> kSpeakers = {
    {2},
    {0, 1},
    {0, 1, 2},
    {0, 1, 4, 5},
    {0, 1, 2, 8},
    {0, 1, 4, 5, 2},
    {0, 1, 4, 5, 2, 3},
    {0, 1, 4, 5, 2, 8},
    {0, 1, 4, 5, 2, 8, 3},
    {0, 1, 6, 7, 4, 5, 2},
    {0, 1, 9, 10, 4, 5, 2},
    {0, 1, 6, 7, 4, 5, 2, 3},
    {0, 1, 9, 10, 4, 5, 2, 3},
    {0, 1, 9, 10, 4, 5, 18, 19, 2},
    {0, 1, 9, 10, 4, 5, 18, 19, 2, 3},
};

/// A stream over bytes; it takes or gives at most `chunk` at a time.
struct Stream {
    std::uint64_t limited(std::uint64_t size) const {
        return chunk > 0 ? std::min<std::uint64_t>(size, chunk) : size;
    }

    std::vector<std::byte> bytes;
    std::size_t chunk;
    std::size_t position = 0;
};

std::int64_t write(const clap_ostream_t* to, const void* bytes, std::uint64_t size) {
    auto& stream = *static_cast<Stream*>(to->ctx);
    const auto* from = static_cast<const std::byte*>(bytes);
    stream.bytes.insert(stream.bytes.end(), from, from + stream.limited(size));
    return static_cast<std::int64_t>(stream.limited(size));
}

std::int64_t read(const clap_istream_t* from, void* to, std::uint64_t size) {
    auto& stream = *static_cast<Stream*>(from->ctx);
    const auto count = stream.limited(std::min<std::uint64_t>(size, stream.bytes.size() - stream.position));
    if (count > 0) std::memcpy(to, stream.bytes.data() + stream.position, count);
    stream.position += count;
    return static_cast<std::int64_t>(count);
}

}  // namespace

// The module

const char* ClapLibrary::path() {
    return VANTA_CLAP_FILE;
}

ClapLibrary::ClapLibrary() : handle_(::dlopen(path(), RTLD_NOW | RTLD_LOCAL)) {
    if (!handle_) throw std::runtime_error(::dlerror());
    entry_ = static_cast<const clap_plugin_entry_t*>(::dlsym(handle_, "clap_entry"));
    if (!entry_ || !entry_->init(path())) throw std::runtime_error("no entry");
}

ClapLibrary::~ClapLibrary() {
    entry_->deinit();
    ::dlclose(handle_);
}

const clap_plugin_factory_t& ClapLibrary::factory() const {
    return *static_cast<const clap_plugin_factory_t*>(entry_->get_factory(CLAP_PLUGIN_FACTORY_ID));
}

const std::vector<std::uint8_t>& clapSpeakersOf(ChannelLayout layout) {
    return kSpeakers.at(static_cast<std::size_t>(layout));
}

// Events

ClapEvent valueEvent(std::uint32_t time, clap_id id, double value) {
    ClapEvent event{};
    event.value.header = {sizeof(event.value), time, CLAP_CORE_EVENT_SPACE_ID, CLAP_EVENT_PARAM_VALUE, 0};
    event.value.param_id = id;
    event.value.note_id = event.value.port_index = event.value.channel = event.value.key = -1;
    event.value.value = value;
    return event;
}

ClapEvent midiEvent(std::uint32_t time, MidiMessage message) {
    ClapEvent event{};
    event.midi.header = {sizeof(event.midi), time, CLAP_CORE_EVENT_SPACE_ID, CLAP_EVENT_MIDI, 0};
    event.midi.data[0] = message.status;
    event.midi.data[1] = message.data1;
    event.midi.data[2] = message.data2;
    return event;
}

clap_input_events_t ClapInput::list() {
    return {this,
            [](const clap_input_events_t* list) {
                return static_cast<std::uint32_t>(static_cast<const ClapInput*>(list->ctx)->events.size());
            },
            [](const clap_input_events_t* list, std::uint32_t index) {
                return &static_cast<const ClapInput*>(list->ctx)->events[index].header;
            }};
}

clap_output_events_t ClapOutput::list() {
    return {this, [](const clap_output_events_t* list, const clap_event_header_t* event) {
                auto& output = *static_cast<ClapOutput*>(list->ctx);
                if (output.events.size() >= output.capacity || event->size > sizeof(ClapEvent)) return false;
                std::memcpy(output.events.emplace_back().bytes, event, event->size);
                return true;
            }};
}

/// Holds what audio thread and flushes share. It never sleeps, as the audio thread may not.
class Turn {
public:
    explicit Turn(std::atomic_flag& flag) : flag_(flag) {
        while (flag_.test_and_set()) {
        }
    }
    ~Turn() { flag_.clear(); }

private:
    std::atomic_flag& flag_;
};

// What the plug-in may call

struct ClapHost::Extensions {
    static void rescanParams(const clap_host_t* host, clap_param_rescan_flags flags) {
        of(host).expectMainThread("params.rescan");
        EXPECT_EQ(flags & CLAP_PARAM_RESCAN_ALL, 0u);
        ++of(host).rescans;
    }
    static void requestFlush(const clap_host_t* host) {
        EXPECT_NE(of(host).audioThread_.load(), std::this_thread::get_id()) << "request_flush";
        of(host).flushRequested = true;
    }
    static void markDirty(const clap_host_t* host) {
        of(host).expectMainThread("state.mark_dirty");
        ++of(host).dirtyMarks;
    }
    static void latencyChanged(const clap_host_t* host) {
        of(host).expectMainThread("latency.changed");
        EXPECT_FALSE(of(host).isActive_) << "the latency is fixed while active";
        ++of(host).latencyChanges;
    }
    static bool isMainThread(const clap_host_t* host) {
        return of(host).mainThread_ == std::this_thread::get_id();
    }
    static bool isAudioThread(const clap_host_t* host) {
        return of(host).audioThread_.load() == std::this_thread::get_id();
    }
    static bool addTimer(const clap_host_t* host, std::uint32_t periodMs, clap_id* id) {
        of(host).expectMainThread("timer.register");
        EXPECT_LE(periodMs, 1000u / 30u);
        *id = static_cast<clap_id>(40 + ++of(host).timers);
        return true;
    }
    static bool addDescriptor(const clap_host_t* host, int fd, std::uint32_t flags) {
        of(host).expectMainThread("posix-fd.register");
        EXPECT_EQ(flags, kClapPosixFdRead);
        of(host).descriptors.push_back(fd);
        return true;
    }
    static bool removeDescriptor(const clap_host_t* host, int fd) {
        of(host).expectMainThread("posix-fd.unregister");
        return std::erase(of(host).descriptors, fd) == 1;
    }
    static bool resize(const clap_host_t* host, std::uint32_t width, std::uint32_t height) {
        ClapHost& self = of(host);
        self.onWindowCall();
        self.wantedSizes.push_back({static_cast<int>(width), static_cast<int>(height)});
        return !self.refusesSizes;
    }
    static bool removeTimer(const clap_host_t* host, clap_id id) {
        EXPECT_EQ(id, static_cast<clap_id>(40 + of(host).timers));
        return --of(host).timers >= 0;
    }

    static constexpr clap_host_params_t kParams{
        rescanParams, [](const clap_host_t*, clap_id, clap_param_clear_flags) {}, requestFlush};
    static constexpr clap_host_state_t kState{markDirty};
    static constexpr clap_host_latency_t kLatency{latencyChanged};
    static constexpr clap_host_audio_ports_t kAudioPorts{
        [](const clap_host_t*, std::uint32_t) { return true; },
        [](const clap_host_t* host, std::uint32_t) { of(host).expectMainThread("ports.rescan"); }};
    static constexpr clap_host_thread_check_t kThreadCheck{isMainThread, isAudioThread};
    static constexpr clap_host_timer_support_t kTimers{addTimer, removeTimer};
    static constexpr ClapHostPosixFdSupport kDescriptors{
        addDescriptor, [](const clap_host_t*, int, std::uint32_t) { return true; }, removeDescriptor};
    static constexpr clap_host_gui_t kGui{[](const clap_host_t*) {}, resize,
                                          [](const clap_host_t*) { return false; },
                                          [](const clap_host_t*) { return false; },
                                          [](const clap_host_t* host, bool) { of(host).wasClosed = true; }};
};

const void* ClapHost::offer(const clap_host_t*, const char* id) {
    const std::pair<const char*, const void*> all[] = {
        {CLAP_EXT_PARAMS, &Extensions::kParams},
        {CLAP_EXT_STATE, &Extensions::kState},
        {CLAP_EXT_LATENCY, &Extensions::kLatency},
        {CLAP_EXT_AUDIO_PORTS, &Extensions::kAudioPorts},
        {CLAP_EXT_THREAD_CHECK, &Extensions::kThreadCheck},
        {CLAP_EXT_TIMER_SUPPORT, &Extensions::kTimers},
        {kClapPosixFdSupport, &Extensions::kDescriptors},
        {CLAP_EXT_GUI, &Extensions::kGui},
    };
    for (const auto& [name, table] : all) {
        if (!std::strcmp(id, name)) return table;
    }
    return nullptr;
}

void ClapHost::expectMainThread(const char* call) const {
    EXPECT_EQ(std::this_thread::get_id(), mainThread_) << call;
    EXPECT_NE(std::this_thread::get_id(), audioThread_.load())
        << call << " within a call of the audio thread";
}

// The life of an instance

ClapHost::ClapHost() : library_(std::make_unique<ClapLibrary>()) {
    create(library_->factory());
}

ClapHost::ClapHost(const clap_plugin_factory_t& factory) {
    create(factory);
}

void ClapHost::create(const clap_plugin_factory_t& factory) {
    edits_.reserve(4096);
    host_.clap_version = CLAP_VERSION_INIT;
    host_.host_data = this;
    host_.name = host_.vendor = host_.url = host_.version = "test";
    host_.get_extension = &ClapHost::offer;
    host_.request_restart = [](const clap_host_t* host) { of(host).restartRequested = true; };
    host_.request_process = [](const clap_host_t*) {};
    host_.request_callback = [](const clap_host_t* host) { of(host).callbackRequested = true; };
    plugin_ = factory.create_plugin(&factory, &host_, factory.get_plugin_descriptor(&factory, 0)->id);
    if (!plugin_ || !plugin_->init(plugin_)) throw std::runtime_error("no instance");
}

ClapHost::~ClapHost() {
    if (!plugin_) return;
    deactivate();
    plugin_->destroy(plugin_);
    EXPECT_EQ(timers, 0);
}

void ClapHost::asAudioThread(const std::function<void()>& calls) {
    audioThread_ = std::this_thread::get_id();
    calls();
    audioThread_ = std::thread::id();
}

bool ClapHost::activate(double sampleRate, std::uint32_t largestBlock) {
    sampleRate_ = sampleRate;
    largestBlock_ = largestBlock;
    if (!plugin_->activate(plugin_, sampleRate, 1, largestBlock)) return false;
    isActive_ = true;
    asAudioThread([this] { EXPECT_TRUE(plugin_->start_processing(plugin_)); });
    return true;
}

void ClapHost::deactivate() {
    if (!isActive_) return;
    asAudioThread([this] { plugin_->stop_processing(plugin_); });
    isActive_ = false;
    plugin_->deactivate(plugin_);
}

void ClapHost::flush(std::vector<ClapEvent> events) {
    ClapInput input(std::move(events));
    const clap_input_events_t in = input.list();
    const clap_output_events_t out = output.list();
    const Turn turn(audioRuns_);
    const std::size_t former = output.events.size();
    const auto call = [&] { params().flush(plugin_, &in, &out); };
    isActive_ ? asAudioThread(call) : call();
    noteEdits(former);
}

// FormatHost

const FormatHost::Traits& ClapHost::traits() const {
    static const Traits traits{.name = "Clap",
                               .module = ClapLibrary::path(),
                               .layouts = allLayouts(),
                               .hasWindows = true,
                               .callsForGestures = false};
    return traits;
}

bool ClapHost::open(ChannelLayout layout, double sampleRate, int largestBlock, bool sideChain) {
    const auto* configs = extension<ClapPluginAudioPortsConfig>(kClapAudioPortsConfig);
    if (!configs->select(plugin_, static_cast<clap_id>(layout))) return false;
    std::vector<std::uint8_t> map(16);
    map.resize(
        extension<ClapPluginSurround>(kClapSurround)->get_channel_map(plugin_, true, 0, map.data(), 16));
    hostChannels_.clear();
    for (const std::uint8_t speaker : clapSpeakersOf(layout)) {
        hostChannels_.push_back(static_cast<int>(std::ranges::find(map, speaker) - map.begin()));
    }
    hasSideChain_ = sideChain;
    return activate(sampleRate, static_cast<std::uint32_t>(largestBlock));
}

bool ClapHost::reactivate(double sampleRate, int largestBlock) {
    deactivate();
    return activate(sampleRate, static_cast<std::uint32_t>(largestBlock));
}

void ClapHost::setOffline(bool offline) {
    const auto* render = extension<ClapPluginRender>(kClapRender);
    EXPECT_TRUE(render->set(plugin_, offline ? kClapRenderOffline : kClapRenderRealtime));
}

int ClapHost::parameterCount() const {
    return static_cast<int>(params().count(plugin_));
}

double ClapHost::value(int index) const {
    double value = 0.0;
    EXPECT_TRUE(params().get_value(plugin_, static_cast<clap_id>(index), &value));
    return value;
}

std::string ClapHost::text(int index, double value) const {
    char text[CLAP_NAME_SIZE];
    EXPECT_TRUE(params().value_to_text(plugin_, static_cast<clap_id>(index), value, text, sizeof(text)));
    return text;
}

void ClapHost::setValue(int index, double value) {
    flush({valueEvent(0, static_cast<clap_id>(index), value)});
}

int ClapHost::latency() const {
    return static_cast<int>(extension<clap_plugin_latency_t>(CLAP_EXT_LATENCY)->get(plugin_));
}

std::vector<std::byte> ClapHost::save(int chunk) {
    Stream stream{{}, static_cast<std::size_t>(chunk)};
    const clap_ostream_t out{&stream, write};
    EXPECT_TRUE(extension<clap_plugin_state_t>(CLAP_EXT_STATE)->save(plugin_, &out));
    return stream.bytes;
}

bool ClapHost::restore(std::span<const std::byte> bytes, int chunk) {
    Stream stream{{bytes.begin(), bytes.end()}, static_cast<std::size_t>(chunk)};
    const clap_istream_t in{&stream, read};
    return extension<clap_plugin_state_t>(CLAP_EXT_STATE)->load(plugin_, &in);
}

void ClapHost::callBack() {
    if (callbackRequested.exchange(false)) plugin_->on_main_thread(plugin_);
}

void ClapHost::idle() {
    serveWindow();
    for (int round = 0; round < 4; ++round) {
        callBack();
        if (flushRequested.exchange(false)) flush();
        if (restartRequested.exchange(false) && isActive_) {
            EXPECT_TRUE(reactivate(sampleRate_, static_cast<int>(largestBlock_)));
        }
    }
}

void ClapHost::collect(const Block& block) {
    input_.events.clear();
    for (const Change& change : block.changes) {
        input_.events.push_back(valueEvent(static_cast<std::uint32_t>(change.offset),
                                           static_cast<clap_id>(change.index), change.value));
    }
    for (const Midi& midi : block.midi) {
        input_.events.push_back(midiEvent(static_cast<std::uint32_t>(midi.offset), midi.message));
    }
    // Not stable_sort, which allocates; what comes at one time keeps its order all the same.
    for (auto end = input_.events.begin(); end != input_.events.end(); ++end) {
        const auto at = std::upper_bound(input_.events.begin(), end, *end, [](const auto& a, const auto& b) {
            return a.header.time < b.header.time;
        });
        std::rotate(at, end, end + 1);
    }
}

void ClapHost::process(const Block& block) {
    const Turn turn(audioRuns_);
    collect(block);
    float* pointers[3][kMaxChannels]{};
    const auto place = [&](float** port, auto buffers) {
        for (std::size_t i = 0; i < buffers.size(); ++i) {
            // Inputs are not const in CLAP, and are not written to.
            port[hostChannels_[i]] = const_cast<float*>(buffers[i]);
        }
    };
    place(pointers[0], block.inputs);
    place(pointers[1], block.sideChain);
    place(pointers[2], block.outputs);
    const auto channels = static_cast<std::uint32_t>(hostChannels_.size());
    const bool keyed = hasSideChain_ && !block.sideChain.empty();
    const clap_audio_buffer_t inputs[2] = {{pointers[0], nullptr, channels, 0, 0},
                                           {keyed ? pointers[1] : nullptr, nullptr, channels, 0, 0}};
    clap_audio_buffer_t outputs = {pointers[2], nullptr, channels, 0, 0};
    const clap_input_events_t in = input_.list();
    const clap_output_events_t out = output.list();
    output.events.clear();
    clap_process_t process{};
    process.steady_time = -1;
    process.frames_count = static_cast<std::uint32_t>(block.samples);
    process.audio_inputs = inputs;
    process.audio_inputs_count = 2;
    process.audio_outputs = &outputs;
    process.audio_outputs_count = 1;
    process.in_events = &in;
    process.out_events = &out;
    audioThread_ = std::this_thread::get_id();
    EXPECT_EQ(plugin_->process(plugin_, &process), CLAP_PROCESS_CONTINUE);
    audioThread_ = std::thread::id();
    noteEdits(0);
}

/// Without room for more the rest is lost: whoever counts edits takes them in time.
void ClapHost::noteEdits(std::size_t first) {
    for (const ClapEvent& event : std::span(output.events).subspan(first)) {
        if (edits_.size() == edits_.capacity()) return;
        const auto id = static_cast<int>(event.gesture.param_id);
        if (event.header.type == CLAP_EVENT_PARAM_GESTURE_BEGIN) {
            edits_.push_back({Edit::Kind::Begin, id});
        } else if (event.header.type == CLAP_EVENT_PARAM_GESTURE_END) {
            edits_.push_back({Edit::Kind::End, id});
        } else if (event.header.type == CLAP_EVENT_PARAM_VALUE) {
            edits_.push_back({Edit::Kind::Value, static_cast<int>(event.value.param_id), event.value.value});
        }
    }
}

// The window

bool ClapHost::openWindow(unsigned long parent) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    clap_window_t window{};
    window.api = CLAP_WINDOW_API_X11;
    window.x11 = parent;
    return gui().create(plugin_, CLAP_WINDOW_API_X11, false) && gui().get_size(plugin_, &width, &height) &&
           gui().set_parent(plugin_, &window) && gui().show(plugin_);
}

void ClapHost::closeWindow() {
    gui().hide(plugin_);
    gui().destroy(plugin_);
    EXPECT_TRUE(timers == 0 && descriptors.empty()) << "left behind";
}

FormatHost::Size ClapHost::windowSize() const {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    gui().get_size(plugin_, &width, &height);
    return {static_cast<int>(width), static_cast<int>(height)};
}

void ClapHost::resizeWindow(Size size) {
    auto width = static_cast<std::uint32_t>(size.width);
    auto height = static_cast<std::uint32_t>(size.height);
    gui().adjust_size(plugin_, &width, &height);
    EXPECT_TRUE(gui().set_size(plugin_, width, height));
}

void ClapHost::dropWithWindow() {
    if (isActive_) deactivate();
    plugin_->destroy(plugin_);
    plugin_ = nullptr;
    EXPECT_TRUE(timers == 0 && descriptors.empty()) << "left behind";
}

std::vector<FormatHost::Edit> ClapHost::takeEdits() {
    flush();
    const Turn turn(audioRuns_);
    std::vector<Edit> taken = edits_;
    edits_.clear();
    return taken;
}

void ClapHost::serveWindow() {
    if (timers == 0) return;
    const auto& loop = *extension<ClapPluginPosixFdSupport>(kClapPosixFdSupport);
    for (const int fd : std::vector<int>(descriptors)) {
        pollfd ready{fd, POLLIN, 0};
        if (poll(&ready, 1, 0) == 1) loop.on_fd(plugin_, fd, kClapPosixFdRead);
    }
    const auto& clock = *extension<clap_plugin_timer_support_t>(CLAP_EXT_TIMER_SUPPORT);
    for (int timer = timers; timer > 0; --timer) clock.on_timer(plugin_, static_cast<clap_id>(40 + timer));
    while (granted_ < wantedSizes.size()) {
        const Size size = wantedSizes[granted_++];
        if (!refusesSizes) resizeWindow(size);
    }
}

std::unique_ptr<FormatHost> makeClapHost() {
    return std::make_unique<ClapHost>();
}

}  // namespace vanta::test
