#pragma once

#include <travesty/component.h>
#include <travesty/factory.h>
#include <travesty/unit.h>

#include <array>
#include <map>
#include <memory>
#include <vector>

#include "foundation/channel_layout.hpp"
#include "tests/host/formats/format_host.hpp"
#include "tests/host/vst3/vst3_objects.hpp"

namespace vanta::test {

/// How a host knows a layout: its speakers, and which of its channels is which of ours.
struct Vst3Layout {
    v3_speaker_arrangement arrangement;
    std::vector<std::size_t> hostChannel;
};
extern const std::array<Vst3Layout, kChannelLayoutCount> kVst3Layouts;

/// The built module, loaded.
class Vst3Module {
public:
    Vst3Module();
    ~Vst3Module();
    Vst3Module(const Vst3Module&) = delete;
    Vst3Module& operator=(const Vst3Module&) = delete;

    static const char* bundle();
    static const char* path();
    v3_plugin_factory** factory() const {
        return static_cast<v3_plugin_factory**>(static_cast<void*>(factory_));
    }
    v3_plugin_factory_3** latestFactory() const { return factory_; }
    void setContext(HostUnknown* context);

private:
    void* library_;
    v3_plugin_factory_3** factory_ = nullptr;
};

/// An instance of the only class, with all of its interfaces.
struct Vst3Instance {
    explicit Vst3Instance(v3_plugin_factory** factory);
    ~Vst3Instance();
    Vst3Instance(const Vst3Instance&) = delete;
    Vst3Instance& operator=(const Vst3Instance&) = delete;

    v3_result arrange(std::vector<v3_speaker_arrangement> inputs,
                      std::vector<v3_speaker_arrangement> outputs);
    v3_result setUp(double rate, int largestBlock, int mode = V3_REALTIME, int sampleSize = V3_SAMPLE_32);
    double value(v3_param_id id) const {
        return v3_cpp_obj(controller)->get_parameter_normalised(controller, id);
    }
    v3_result set(v3_param_id id, double position) const {
        return v3_cpp_obj(controller)->set_parameter_normalised(controller, id, position);
    }
    int latency() const { return static_cast<int>(v3_cpp_obj(processor)->get_latency_samples(processor)); }
    v3_result setActive(bool active) const { return v3_cpp_obj(component)->set_active(component, active); }

    v3_component** component = nullptr;
    v3_audio_processor** processor = nullptr;
    v3_edit_controller** controller = nullptr;
    v3_unit_information** units = nullptr;
    v3_midi_mapping** midi = nullptr;
};

class Vst3Host final : public FormatHost {
public:
    /// Where it has a run loop, if anywhere.
    enum class Loop { None, Factory, Context, Handler };

    explicit Vst3Host(Loop loop = Loop::Context);
    ~Vst3Host() override;

    const Traits& traits() const override;
    bool open(ChannelLayout layout, double sampleRate, int largestBlock, bool sideChain) override;
    bool reactivate(double sampleRate, int largestBlock) override;
    void setOffline(bool offline) override { mode_ = offline ? V3_OFFLINE : V3_REALTIME; }
    int parameterCount() const override { return kParameters; }
    double value(int index) const override;
    void setValue(int index, double value) override;
    int latency() const override { return latency_; }
    std::vector<std::byte> save(int chunk) override;
    bool restore(std::span<const std::byte> bytes, int chunk) override;
    void idle() override;
    void callBack() override { runLoop.run(); }
    void touch(int index, double position) override {
        plugin_->set(static_cast<v3_param_id>(index), position);
    }
    void process(const Block& block) override;
    bool openWindow(unsigned long parent) override;
    void closeWindow() override;
    Size windowSize() const override;
    void resizeWindow(Size size) override;
    void dropWithWindow() override;
    std::vector<Edit> takeEdits() override;
    /// Null while no window is open.
    v3_plugin_view** view() const { return view_; }

    Vst3Instance& plugin() { return *plugin_; }
    /// Changes of the block to come; what the last one brought back; what the handler was told.
    Changes changes;
    Changes answers;
    Handler handler;
    Application application;
    RunLoop runLoop;

private:
    /// Of ours. Those of MIDI and programs come after.
    static constexpr int kParameters = 31;

    bool activate();
    void letGo();

    const Loop loop_;
    Vst3Module module_;
    std::unique_ptr<Vst3Instance> plugin_;
    ChannelLayout layout_ = kStereoLayout;
    double rate_ = 44100.0;
    int largestBlock_ = 0;
    int mode_ = V3_REALTIME;
    int latency_ = 0;
    std::array<float*, kMaxChannels> inputs_{};
    std::array<float*, kMaxChannels> sideChain_{};
    std::array<float*, kMaxChannels> outputs_{};
    v3_process_context context_{};
    Frame frame_;
    v3_plugin_view** view_ = nullptr;
    std::size_t granted_ = 0;  ///< of the sizes that were wanted
    std::size_t heard_ = 0;    ///< of the handler's calls
};

std::string readText(const std::int16_t* text);
void writeText(const std::string& text, v3_str_128& out);

}  // namespace vanta::test
