#include "tests/host/lv2/lv2_host.hpp"

#include <dlfcn.h>

#include <fmt/format.h>
#include <lv2/atom/util.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/options/options.h>
#include <lv2/port-groups/port-groups.h>

#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "tests/host/lv2/lv2_window.hpp"

// After all that its names get in the way of.
#include <X11/Xlib.h>

namespace vanta::test {
namespace {

constexpr const char* kProduct = "urn:quillmark:vanta2";
constexpr std::size_t kSequenceBytes = 1 << 16;
constexpr const char* kPg = LV2_PORT_GROUPS_PREFIX;

/// What listeners call the channels of each layout, in the order of the layout.
struct Roles {
    ChannelLayout layout;
    const char* suffix;
    std::vector<std::string> channels;
};
const std::vector<Roles>& allRoles() {
    static const std::vector<Roles> roles = [] {
        const std::string l = std::string(kPg) + "left", r = std::string(kPg) + "right",
                          c = std::string(kPg) + "center", lfe = std::string(kPg) + "lowFrequencyEffects",
                          rl = std::string(kPg) + "rearLeft", rr = std::string(kPg) + "rearRight",
                          sl = std::string(kPg) + "sideLeft", sr = std::string(kPg) + "sideRight",
                          tl = std::string(kProduct) + "#topLeft", tr = std::string(kProduct) + "#topRight";
        return std::vector<Roles>{{0, "mono", {c}},
                                  {1, "stereo", {l, r}},
                                  {5, "5.0", {l, r, rl, rr, c}},
                                  {6, "5.1", {l, r, rl, rr, c, lfe}},
                                  {12, "7.1", {l, r, sl, sr, rl, rr, c, lfe}},
                                  {14, "7.1.2", {l, r, sl, sr, rl, rr, tl, tr, c, lfe}}};
    }();
    return roles;
}
const Roles& rolesOf(ChannelLayout layout) {
    for (const Roles& roles : allRoles()) {
        if (roles.layout == layout) return roles;
    }
    throw std::invalid_argument("LV2 has no such layout");
}

struct Uris {
    std::mutex mutex;
    std::map<std::string, LV2_URID> numbers;
};
Uris& uris() {
    static Uris all;
    return all;
}

struct Node {
    explicit Node(const std::string& uri) : node(lilv_new_uri(Lv2Host::world(), uri.c_str())) {}
    explicit Node(LilvNode* taken) : node(taken) {}
    ~Node() { lilv_node_free(node); }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    std::string uri() const { return node && lilv_node_is_uri(node) ? lilv_node_as_uri(node) : ""; }
    LilvNode* node;
};

/// What a session keeps. The bytes of the state come last, so that a file cut short is a state cut short.
struct SessionHead {
    static constexpr std::uint32_t kMagic = 0x564c5632;
    std::uint32_t magic;
    std::uint32_t ports;       ///< floats that follow
    std::uint32_t portValues;  ///< bytes that follow these
};

}  // namespace

/// A state as the properties that a plug-in stores, kept as bytes.
struct Lv2Host::Stored {
    const LV2_URID stateKey = urid("urn:quillmark:vanta2#state");
    const LV2_URID vector = urid(LV2_ATOM__Vector);
    LV2_URID stateType = urid(LV2_ATOM__Chunk);
    std::vector<std::byte> state{};
    std::vector<std::byte> portValues{};

    static LV2_State_Status store(LV2_State_Handle handle, std::uint32_t key, const void* value,
                                  std::size_t size, std::uint32_t, std::uint32_t) {
        auto& stored = *static_cast<Stored*>(handle);
        const auto* bytes = static_cast<const std::byte*>(value);
        (key == stored.stateKey ? stored.state : stored.portValues).assign(bytes, bytes + size);
        return LV2_STATE_SUCCESS;
    }
    static const void* retrieve(LV2_State_Handle handle, std::uint32_t key, std::size_t* size,
                                std::uint32_t* type, std::uint32_t*) {
        auto& stored = *static_cast<Stored*>(handle);
        const bool isState = key == stored.stateKey;
        const auto& bytes = isState ? stored.state : stored.portValues;
        static constexpr std::byte kNone{};
        if (!isState && bytes.empty()) return nullptr;
        *size = bytes.size();
        *type = isState ? stored.stateType : stored.vector;
        return bytes.empty() ? &kNone : bytes.data();
    }
};

// The world

LilvWorld* Lv2Host::world() {
    static const std::unique_ptr<LilvWorld, void (*)(LilvWorld*)> loaded = [] {
        std::unique_ptr<LilvWorld, void (*)(LilvWorld*)> made(lilv_world_new(), lilv_world_free);
        const std::unique_ptr<LilvNode, void (*)(LilvNode*)> path(
            lilv_new_string(made.get(), VANTA_PLUGINS_DIR ":/usr/lib/lv2"), lilv_node_free);
        lilv_world_set_option(made.get(), LILV_OPTION_LV2_PATH, path.get());
        lilv_world_load_all(made.get());
        return made;
    }();
    return loaded.get();
}

std::string Lv2Host::uriOf(ChannelLayout layout) {
    return fmt::format("{}:{}", kProduct, rolesOf(layout).suffix);
}

const LilvPlugin* Lv2Host::pluginOf(ChannelLayout layout) {
    return lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world()), Node(uriOf(layout)).node);
}

// An instance

const FormatHost::Traits& Lv2Host::traits() const {
    return traits_;
}

/// Neither side sleeps, as the audio thread may not.
class Lv2Host::Turn {
public:
    explicit Turn(std::atomic_flag& flag) : flag_(flag) {
        while (flag_.test_and_set()) {
        }
    }
    ~Turn() { flag_.clear(); }

private:
    std::atomic_flag& flag_;
};

Lv2Host::Lv2Host(Lv2Offers offers) : offers_(offers), room_(kSequenceBytes - sizeof(LV2_Atom)) {
    traits_ = {.name = offers.instance ? "LV2" : "LV2Bridge",
               .module = VANTA_PLUGINS_DIR "/vanta.lv2/vanta.so",
               .isSampleAccurate = false,
               .layouts = {},
               .hasCallsBesideBlocks = false,
               .hasWindows = true};
    for (const Roles& roles : allRoles()) traits_.layouts.push_back(roles.layout);
    map_ = {nullptr, [](LV2_URID_Map_Handle, const char* uri) { return urid(uri); }};
    unmap_ = {nullptr, [](LV2_URID_Unmap_Handle, LV2_URID number) -> const char* {
                  const std::lock_guard held(uris().mutex);
                  for (const auto& [uri, each] : uris().numbers) {
                      if (each == number) return uri.c_str();
                  }
                  return nullptr;
              }};
    portRequest_ = {this, [](void* host, std::uint32_t index, float value) {
                        auto& ports = static_cast<Lv2Host*>(host)->ports_;
                        if (index >= ports.size() || !ports[index].isControl) return 2;
                        ports[index].value = value;
                        return 0;
                    }};
    events_.resize(kSequenceBytes / 8);
    notified_.resize(kSequenceBytes / 8);
    auto* events = reinterpret_cast<LV2_Atom_Sequence*>(events_.data());
    events->atom.type = sequenceType_;
    lv2_atom_sequence_clear(events);
}

Lv2Host::~Lv2Host() {
    window_.reset();
    close();
}

LV2_URID Lv2Host::urid(const char* uri) {
    const std::lock_guard held(uris().mutex);
    return uris().numbers.try_emplace(uri, static_cast<LV2_URID>(uris().numbers.size() + 1)).first->second;
}

void Lv2Host::close() {
    if (!instance_) return;
    lilv_instance_deactivate(instance_);
    LilvInstance* closed = std::exchange(instance_, nullptr);
    if (!offers_.module) return lilv_instance_free(closed);
    closed->lv2_descriptor->cleanup(closed->lv2_handle);
    delete closed;
}

bool Lv2Host::open(ChannelLayout layout, double sampleRate, int largestBlock, bool) {
    close();
    const LilvPlugin* plugin = pluginOf(layout);
    if (!plugin) throw std::runtime_error("lilv does not find " + uriOf(layout));
    layout_ = layout;
    sampleRate_ = sampleRate;
    readPorts(layout);
    const LV2_URID intType = urid(LV2_ATOM__Int);
    const LV2_Options_Option options[] = {
        {LV2_OPTIONS_INSTANCE, 0, urid(LV2_BUF_SIZE__maxBlockLength), sizeof(int), intType, &largestBlock},
        {LV2_OPTIONS_INSTANCE, 0, urid(LV2_BUF_SIZE__nominalBlockLength), sizeof(int), intType,
         &largestBlock},
        {}};
    const LV2_Feature mapFeature{LV2_URID__map, &map_};
    const LV2_Feature unmapFeature{LV2_URID__unmap, &unmap_};
    const LV2_Feature optionsFeature{LV2_OPTIONS__options, const_cast<LV2_Options_Option*>(options)};
    const LV2_Feature requestFeature{"http://kx.studio/ns/lv2ext/control-input-port-change-request",
                                     &portRequest_};
    std::vector<const LV2_Feature*> features{&mapFeature, &unmapFeature};
    if (offers_.options) features.push_back(&optionsFeature);
    if (offers_.portRequests) features.push_back(&requestFeature);
    features.push_back(nullptr);
    instance_ = instantiate(plugin, features.data());
    if (!instance_) return false;
    connectControls();
    lilv_instance_activate(instance_);
    isStale_ = true;
    return true;
}

LilvInstance* Lv2Host::instantiate(const LilvPlugin* plugin, const LV2_Feature* const* features) const {
    if (!offers_.module) return lilv_plugin_instantiate(plugin, sampleRate_, features);
    std::uint32_t index = 0;
    while (uriOf(layout_) != offers_.module(index)->URI) ++index;
    const LV2_Descriptor* descriptor = offers_.module(index);
    return new LilvInstance{descriptor, descriptor->instantiate(descriptor, sampleRate_, "", features),
                            nullptr};
}

bool Lv2Host::reactivate(double sampleRate, int largestBlock) {
    if (sampleRate == sampleRate_) {
        lilv_instance_deactivate(instance_);
        lilv_instance_activate(instance_);
        isStale_ = true;
        return true;
    }
    // An instance has one sample rate: another one needs another instance, with the state of the first.
    const std::vector<std::byte> session = save(0);
    return open(layout_, sampleRate, largestBlock, false) && restore(session, 0);
}

void Lv2Host::readPorts(ChannelLayout layout) {
    const LilvPlugin* plugin = pluginOf(layout);
    const Node control(LV2_CORE__ControlPort), audio(LV2_CORE__AudioPort), input(LV2_CORE__InputPort),
        designation(LV2_CORE__designation), group(LV2_PORT_GROUPS__group);
    ports_.clear();
    for (std::uint32_t i = 0; i < lilv_plugin_get_num_ports(plugin); ++i) {
        const LilvPort* described = lilv_plugin_get_port_by_index(plugin, i);
        Port& port = ports_.emplace_back();
        port.symbol = lilv_node_as_string(lilv_port_get_symbol(plugin, described));
        port.designation = Node(lilv_port_get(plugin, described, designation.node)).uri();
        port.group = Node(lilv_port_get(plugin, described, group.node)).uri();
        port.isInput = lilv_port_is_a(plugin, described, input.node);
        port.isAudio = lilv_port_is_a(plugin, described, audio.node);
        port.isControl = lilv_port_is_a(plugin, described, control.node);
        port.isMain = port.group == uriOf(layout) + "#main_in";
        const auto& roles = rolesOf(layout).channels;
        for (std::size_t c = 0; port.isAudio && c < roles.size(); ++c) {
            if (roles[c] == port.designation) port.channel = static_cast<int>(c);
        }
        LilvNode* initial = nullptr;
        lilv_port_get_range(plugin, described, &initial, nullptr, nullptr);
        if (initial && port.isControl) port.value = lilv_node_as_float(initial);
        lilv_node_free(initial);
    }
}

void Lv2Host::connectControls() {
    for (std::uint32_t i = 0; i < ports_.size(); ++i) {
        Port& port = ports_[i];
        if (port.isAudio) continue;
        void* atoms = port.isInput ? events_.data() : notified_.data();
        lilv_instance_connect_port(instance_, i, port.isControl ? &port.value : atoms);
    }
}

float& Lv2Host::control(std::string_view symbol) {
    for (Port& port : ports_) {
        if (port.symbol == symbol) return port.value;
    }
    throw std::invalid_argument("no such port: " + std::string(symbol));
}

// Parameters

int Lv2Host::parameterCount() const {
    int count = 0;
    while (ports_[static_cast<std::size_t>(count)].isControl &&
           ports_[static_cast<std::size_t>(count)].isInput) {
        ++count;
    }
    return count;
}

float Lv2Host::shown(int index, double own) const {
    const AbstractPluginParameter& parameter = *table_.parameterAt(index);
    const auto value = static_cast<float>(own);
    if (&parameter == table_.bypassParameter) return 1.0f - value;
    return parameter.kind() == AbstractPluginParameter::Kind::Float ? parameter.toDisplay(value) : value;
}

double Lv2Host::value(int index) const {
    const AbstractPluginParameter& parameter = *table_.parameterAt(index);
    const float value = ports_[static_cast<std::size_t>(index)].value;
    if (&parameter == table_.bypassParameter) return static_cast<double>(1.0f - value);
    const bool isNumber = parameter.kind() == AbstractPluginParameter::Kind::Float;
    return static_cast<double>(isNumber ? parameter.fromDisplay(value) : value);
}

void Lv2Host::setValue(int index, double value) {
    ports_[static_cast<std::size_t>(index)].value = shown(index, value);
    isStale_ = true;
}

int Lv2Host::latency() const {
    // The port says what holds when something has run.
    if (isStale_) const_cast<Lv2Host*>(this)->run(0);
    for (const Port& port : ports_) {
        if (port.symbol == "latency") return static_cast<int>(port.value);
    }
    return -1;
}

// Blocks

void Lv2Host::addMidi(const Midi& midi) {
    struct {
        LV2_Atom_Event event;
        std::array<std::uint8_t, 8> bytes;
    } atom{};
    atom.event.time.frames = midi.offset;
    atom.event.body = {3, midiType_};
    atom.bytes = {midi.message.status, midi.message.data1, midi.message.data2};
    auto* sequence = reinterpret_cast<LV2_Atom_Sequence*>(events_.data());
    lv2_atom_sequence_append_event(sequence, kSequenceBytes - sizeof(LV2_Atom_Sequence), &atom.event);
}

bool Lv2Host::addEvent(const LV2_Atom& atom) {
    std::vector<std::uint64_t> event(2 + (sizeof atom + atom.size + 7) / 8);
    std::memcpy(event.data() + 1, &atom, sizeof atom + atom.size);
    auto* sequence = reinterpret_cast<LV2_Atom_Sequence*>(events_.data());
    return lv2_atom_sequence_append_event(sequence, kSequenceBytes - sizeof(LV2_Atom_Sequence),
                                          reinterpret_cast<const LV2_Atom_Event*>(event.data())) != nullptr;
}

void Lv2Host::process(const Block& block) {
    const Turn turn(audioRuns_);
    for (const Change& change : block.changes) setValue(change.index, change.value);
    for (const Midi& midi : block.midi) addMidi(midi);
    for (std::uint32_t i = 0; i < ports_.size(); ++i) {
        const Port& port = ports_[i];
        if (!port.isAudio) continue;
        const auto from = port.isMain ? block.inputs : block.sideChain;
        const auto c = static_cast<std::size_t>(port.channel);
        const void* buffer = nullptr;
        if (!port.isInput) buffer = block.outputs[c];
        if (port.isInput && c < from.size()) buffer = from[c];
        lilv_instance_connect_port(instance_, i, const_cast<void*>(buffer));
    }
    run(block.samples);
}

void Lv2Host::run(int samples) {
    auto* notified = reinterpret_cast<LV2_Atom_Sequence*>(notified_.data());
    notified->atom = {static_cast<std::uint32_t>(room_), chunkType_};
    lilv_instance_run(instance_, static_cast<std::uint32_t>(samples));
    lv2_atom_sequence_clear(reinterpret_cast<LV2_Atom_Sequence*>(events_.data()));
    isStale_ = false;
}

std::vector<std::string> Lv2Host::notifications() const {
    std::vector<std::string> types;
    LV2_ATOM_SEQUENCE_FOREACH(reinterpret_cast<const LV2_Atom_Sequence*>(notified_.data()), event) {
        const auto& object = reinterpret_cast<const LV2_Atom_Object&>(event->body);
        types.emplace_back(unmap_.unmap(unmap_.handle, object.body.otype));
    }
    return types;
}

// States

const LV2_State_Interface& Lv2Host::states() const {
    return *static_cast<const LV2_State_Interface*>(
        lilv_instance_get_extension_data(instance_, LV2_STATE__interface));
}

std::vector<std::byte> Lv2Host::state() const {
    Stored stored;
    states().save(lilv_instance_get_handle(instance_), Stored::store, &stored, 0, nullptr);
    return stored.state;
}

LV2_State_Status Lv2Host::restore(Stored& stored) {
    return states().restore(lilv_instance_get_handle(instance_), Stored::retrieve, &stored, 0, nullptr);
}

LV2_State_Status Lv2Host::restoreState(std::span<const std::byte> bytes, const char* type) {
    Stored stored;
    stored.stateType = urid(type);
    stored.state.assign(bytes.begin(), bytes.end());
    return restore(stored);
}

std::vector<std::byte> Lv2Host::save(int) {
    Stored stored;
    states().save(lilv_instance_get_handle(instance_), Stored::store, &stored, 0, nullptr);
    std::vector<float> values;
    for (const Port& port : ports_) values.push_back(port.value);
    const SessionHead head{SessionHead::kMagic, static_cast<std::uint32_t>(values.size()),
                           static_cast<std::uint32_t>(stored.portValues.size())};
    std::vector<std::byte> bytes;
    for (const std::span<const std::byte> part :
         {std::as_bytes(std::span(&head, 1)), std::as_bytes(std::span(values)),
          std::as_bytes(std::span(stored.portValues)), std::as_bytes(std::span(stored.state))}) {
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}

bool Lv2Host::restore(std::span<const std::byte> bytes, int) {
    Stored stored;
    SessionHead head{};
    if (bytes.size() >= sizeof head) std::memcpy(&head, bytes.data(), sizeof head);
    std::vector<float> values;
    if (head.magic == SessionHead::kMagic && head.ports == ports_.size()) {
        auto rest = bytes.subspan(sizeof head);
        values.resize(std::min<std::size_t>(head.ports, rest.size() / sizeof(float)));
        if (!values.empty()) std::memcpy(values.data(), rest.data(), values.size() * sizeof(float));
        rest = rest.subspan(values.size() * sizeof(float));
        const auto said = rest.first(std::min<std::size_t>(head.portValues, rest.size()));
        stored.portValues.assign(said.begin(), said.end());
        bytes = rest.subspan(said.size());
    }
    stored.state.assign(bytes.begin(), bytes.end());
    if (restore(stored) != LV2_STATE_SUCCESS) return false;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (ports_[i].isControl && ports_[i].isInput) ports_[i].value = values[i];
    }
    isStale_ = true;
    return true;
}

std::string Lv2Host::saveTurtle() {
    const auto valueOf = [](const char* symbol, void* host, std::uint32_t* size,
                            std::uint32_t* type) -> const void* {
        *size = sizeof(float);
        *type = static_cast<Lv2Host*>(host)->urid(LV2_ATOM__Float);
        return &static_cast<Lv2Host*>(host)->control(symbol);
    };
    const std::unique_ptr<LilvState, void (*)(LilvState*)> state(
        lilv_state_new_from_instance(pluginOf(layout_), instance_, &map_, nullptr, nullptr, nullptr, nullptr,
                                     valueOf, this, 0, nullptr),
        lilv_state_free);
    const std::unique_ptr<char, void (*)(void*)> text(
        lilv_state_to_string(world(), &map_, &unmap_, state.get(), "urn:session", nullptr), lilv_free);
    return text.get();
}

void Lv2Host::restore(const LilvState* state) {
    const auto set = [](const char* symbol, void* handle, const void* value, std::uint32_t,
                        std::uint32_t type) {
        auto& host = *static_cast<Lv2Host*>(handle);
        if (type == host.urid(LV2_ATOM__Float)) std::memcpy(&host.control(symbol), value, sizeof(float));
    };
    lilv_state_restore(state, instance_, set, this, 0, nullptr);
    isStale_ = true;
}

// The window

bool Lv2Host::openWindow(unsigned long parent) {
    using Find = const LV2UI_Descriptor* (*)(std::uint32_t);
    // Nobody unloads it, as lilv has it as well.
    static void* const module = dlopen(traits().module.c_str(), RTLD_NOW | RTLD_LOCAL);
    static const auto find = reinterpret_cast<Find>(dlsym(module, "lv2ui_descriptor"));
    window_ = std::make_unique<Lv2Window>(
        *this, *find(0),
        Lv2WindowOffers{.instance = offers_.instance, .parent = reinterpret_cast<void*>(parent)});
    // The first size is that of the window to come.
    wantedSizes.clear();
    granted_ = 0;
    if (!window_->isOpen()) window_.reset();
    return window_ != nullptr;
}

void Lv2Host::closeWindow() {
    if (window_) window_->close();
    const Turn turn(audioRuns_);
    window_.reset();
}

FormatHost::Size Lv2Host::windowSize() const {
    // There is nobody else to ask.
    Display* display = XOpenDisplay(nullptr);
    XWindowAttributes attributes{};
    XGetWindowAttributes(display, reinterpret_cast<::Window>(window_->widget()), &attributes);
    XCloseDisplay(display);
    return {attributes.width, attributes.height};
}

void Lv2Host::resizeWindow(Size size) {
    const auto& sizes = *window_->extension<LV2UI_Resize>(LV2_UI__resize);
    sizes.ui_resize(window_->handle(), size.width, size.height);
}

void Lv2Host::dropWithWindow() {
    close();
    for (int n = 0; n < 3; ++n) window_->idle();
    window_.reset();
}

std::vector<FormatHost::Edit> Lv2Host::takeEdits() {
    idle();
    for (Edit& edit : edits_) {
        if (edit.kind == Edit::Kind::Value) {
            const AbstractPluginParameter& parameter = *table_.parameterAt(edit.index);
            const bool isNumber = parameter.kind() == AbstractPluginParameter::Kind::Float;
            const auto shown = static_cast<float>(edit.value);
            edit.value = static_cast<double>(isNumber ? parameter.fromDisplay(shown) : shown);
        }
    }
    return std::exchange(edits_, {});
}

void Lv2Host::idle() {
    if (!window_) return;
    {
        const Turn turn(audioRuns_);
        window_->deliver();
        // Audio always runs, with or without samples.
        run(0);
        window_->collect();
    }
    window_->follow();
    while (granted_ < wantedSizes.size()) {
        const Size size = wantedSizes[granted_++];
        if (!refusesSizes) resizeWindow(size);
    }
}

std::unique_ptr<FormatHost> makeLv2Host() {
    return std::make_unique<Lv2Host>();
}

std::unique_ptr<FormatHost> makeLv2BridgeHost() {
    return std::make_unique<Lv2Host>(Lv2Offers{.instance = false});
}

}  // namespace vanta::test
