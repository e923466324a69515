#include "bench/compare/lv2_runner.hpp"

#include <fmt/format.h>
#include <lv2/atom/atom.h>
#include <lv2/atom/util.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/core/lv2.h>
#include <lv2/parameters/parameters.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vanta::bench {

namespace {

constexpr std::size_t kEventBytes = 1 << 16;

struct Node {
    Node(LilvWorld* world, const char* uri) : node(lilv_new_uri(world, uri)) {}
    ~Node() { lilv_node_free(node); }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    LilvNode* node;
};

std::vector<std::byte> bytesOf(std::uint32_t size, const void* data) {
    const auto* bytes = static_cast<const std::byte*>(data);
    return {bytes, bytes + size};
}

}  // namespace

Lv2Runner::Lv2Runner(const std::string& uri, const Music& music, int blockFrames)
    : world_(lilv_world_new()), music_(music), blockFrames_(blockFrames) {
    if (music.frames() % blockFrames != 0) throw std::invalid_argument("the music has no whole blocks");
    lilv_world_load_all(world_.get());
    const Node name(world_.get(), uri.c_str());
    const LilvPlugin* plugin = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world_.get()), name.node);
    if (!plugin) throw std::runtime_error(fmt::format("{} is not installed: see `make bench-compare`", uri));
    readPorts(*plugin);
    instantiate(*plugin, blockFrames);
    connect();
    lilv_instance_activate(instance_.get());
}

Lv2Runner::~Lv2Runner() {
    if (instance_) lilv_instance_deactivate(instance_.get());
}

LV2_URID Lv2Runner::number(const char* uri) {
    return numbers_.try_emplace(uri, static_cast<LV2_URID>(numbers_.size() + 1)).first->second;
}

void Lv2Runner::readPorts(const LilvPlugin& plugin) {
    const Node isInput(world_.get(), LV2_CORE__InputPort), isAudio(world_.get(), LV2_CORE__AudioPort),
        isControl(world_.get(), LV2_CORE__ControlPort);
    const std::uint32_t count = lilv_plugin_get_num_ports(&plugin);
    std::vector<float> defaults(count);
    lilv_plugin_get_port_ranges_float(&plugin, nullptr, nullptr, defaults.data());
    for (std::uint32_t i = 0; i < count; ++i) {
        const LilvPort* described = lilv_plugin_get_port_by_index(&plugin, i);
        Port& port = ports_.emplace_back();
        port.symbol = lilv_node_as_string(lilv_port_get_symbol(&plugin, described));
        port.isInput = lilv_port_is_a(&plugin, described, isInput.node);
        port.isControl = lilv_port_is_a(&plugin, described, isControl.node);
        if (port.isControl) {
            port.value = std::isnan(defaults[i]) ? 0.0f : defaults[i];
            readLabels(plugin, *described, port);
        } else if (lilv_port_is_a(&plugin, described, isAudio.node)) {
            (port.isInput ? audioIn_ : audioOut_).push_back(i);
        } else {
            port.events.resize(kEventBytes / sizeof(std::uint64_t));
        }
    }
    if (audioIn_.size() != music_.channels.size()) throw std::runtime_error("a plug-in for other channels");
}

void Lv2Runner::readLabels(const LilvPlugin& plugin, const LilvPort& port, Port& to) const {
    LilvScalePoints* points = lilv_port_get_scale_points(&plugin, &port);
    if (!points) return;
    LILV_FOREACH(scale_points, i, points) {
        const LilvScalePoint* point = lilv_scale_points_get(points, i);
        to.labels[lilv_node_as_string(lilv_scale_point_get_label(point))] =
            lilv_node_as_float(lilv_scale_point_get_value(point));
    }
    lilv_scale_points_free(points);
}

void Lv2Runner::instantiate(const LilvPlugin& plugin, int blockFrames) {
    map_ = {this, [](LV2_URID_Map_Handle self, const char* uri) {
                return static_cast<Lv2Runner*>(self)->number(uri);
            }};
    schedule_ = {this, [](LV2_Worker_Schedule_Handle self, std::uint32_t size, const void* data) {
                     static_cast<Lv2Runner*>(self)->jobs_.push_back(bytesOf(size, data));
                     return LV2_WORKER_SUCCESS;
                 }};
    sequenceType_ = number(LV2_ATOM__Sequence);
    roomType_ = number(LV2_ATOM__Chunk);
    largestBlock_ = blockFrames;
    const LV2_URID anInt = number(LV2_ATOM__Int);
    const auto blockOption = [&](const char* uri) {
        return LV2_Options_Option{LV2_OPTIONS_INSTANCE, 0,     number(uri),
                                  sizeof largestBlock_, anInt, &largestBlock_};
    };
    options_ = {{blockOption(LV2_BUF_SIZE__minBlockLength),
                 blockOption(LV2_BUF_SIZE__maxBlockLength),
                 blockOption(LV2_BUF_SIZE__nominalBlockLength),
                 {LV2_OPTIONS_INSTANCE, 0, number(LV2_PARAMETERS__sampleRate), sizeof rate_,
                  number(LV2_ATOM__Float), &rate_},
                 {}}};
    const LV2_Feature map{LV2_URID__map, &map_}, options{LV2_OPTIONS__options, options_.data()},
        schedule{LV2_WORKER__schedule, &schedule_}, bounded{LV2_BUF_SIZE__boundedBlockLength, nullptr},
        fixed{LV2_BUF_SIZE__fixedBlockLength, nullptr};
    const LV2_Feature* features[] = {&map, &options, &schedule, &bounded, &fixed, nullptr};
    instance_.reset(lilv_plugin_instantiate(&plugin, Music::kRate, features));
    if (!instance_) {
        throw std::runtime_error(
            fmt::format("{} does not start", lilv_node_as_uri(lilv_plugin_get_uri(&plugin))));
    }
    worker_ = static_cast<const LV2_Worker_Interface*>(
        lilv_instance_get_extension_data(instance_.get(), LV2_WORKER__interface));
}

void Lv2Runner::connect() {
    for (std::uint32_t i = 0; i < ports_.size(); ++i) {
        Port& port = ports_[i];
        if (port.isControl) lilv_instance_connect_port(instance_.get(), i, &port.value);
        if (!port.events.empty()) lilv_instance_connect_port(instance_.get(), i, port.events.data());
    }
    output_.assign(audioOut_.size(), std::vector<float>(static_cast<std::size_t>(blockFrames_)));
    for (std::size_t c = 0; c < audioOut_.size(); ++c) {
        lilv_instance_connect_port(instance_.get(), audioOut_[c], output_[c].data());
    }
}

/// An empty sequence for what the plug-in reads, an empty room for what it writes.
void Lv2Runner::clearEvents() {
    for (Port& port : ports_) {
        if (port.events.empty()) continue;
        auto& sequence = *reinterpret_cast<LV2_Atom_Sequence*>(port.events.data());
        sequence = {};
        sequence.atom.type = port.isInput ? sequenceType_ : roomType_;
        sequence.atom.size = port.isInput ? sizeof(LV2_Atom_Sequence_Body) : kEventBytes - sizeof(LV2_Atom);
    }
}

void Lv2Runner::work() {
    for (const auto& job : jobs_) {
        const auto answer = [](LV2_Worker_Respond_Handle self, std::uint32_t size, const void* data) {
            static_cast<Lv2Runner*>(self)->answers_.push_back(bytesOf(size, data));
            return LV2_WORKER_SUCCESS;
        };
        worker_->work(instance_->lv2_handle, answer, this, static_cast<std::uint32_t>(job.size()),
                      job.data());
    }
    jobs_.clear();
    for (const auto& answer : answers_) {
        worker_->work_response(instance_->lv2_handle, static_cast<std::uint32_t>(answer.size()),
                               answer.data());
    }
    answers_.clear();
    if (worker_->end_run) worker_->end_run(instance_->lv2_handle);
}

Lv2Runner::Port& Lv2Runner::input(std::string_view symbol) {
    const auto port = std::ranges::find_if(
        ports_, [&](const Port& each) { return each.isInput && each.isControl && each.symbol == symbol; });
    if (port == ports_.end()) throw std::invalid_argument(fmt::format("no input {}", symbol));
    return *port;
}

void Lv2Runner::set(std::string_view symbol, float value) {
    input(symbol).value = value;
}

void Lv2Runner::set(std::string_view symbol, std::string_view label) {
    Port& port = input(symbol);
    const auto found = port.labels.find(std::string(label));
    if (found == port.labels.end()) throw std::invalid_argument(fmt::format("{} knows no {}", symbol, label));
    port.value = found->second;
}

std::string Lv2Runner::symbolOf(std::string_view label) const {
    for (const Port& port : ports_) {
        if (port.isInput && port.labels.contains(std::string(label))) return port.symbol;
    }
    return {};
}

float Lv2Runner::peak() const {
    float largest = 0.0f;
    for (const auto& channel : output_) {
        for (const float sample : channel) largest = std::max(largest, std::abs(sample));
    }
    return largest;
}

void Lv2Runner::play(int blocks) {
    for (int block = 0; block < blocks; ++block) {
        clearEvents();
        for (std::size_t c = 0; c < audioIn_.size(); ++c) {
            // Whoever runs a plug-in may not write to its input; the interface predates const.
            lilv_instance_connect_port(instance_.get(), audioIn_[c],
                                       const_cast<float*>(music_.channels[c].data() + position_));
        }
        lilv_instance_run(instance_.get(), static_cast<std::uint32_t>(blockFrames_));
        if (worker_ && !jobs_.empty()) work();
        position_ = (position_ + blockFrames_) % music_.frames();
    }
}

}  // namespace vanta::bench
