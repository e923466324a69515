#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "foundation/realtime.hpp"
#include "host/aax_host/aax_collection.hpp"

namespace vanta {

/// Where this host's transport stands. It rolls while blocks are rendered.
struct AaxTransportState {
    bool isThere = true;  ///< else the host has none
    double tempo = 120.0;
    std::int32_t numerator = 4;
    std::int32_t denominator = 4;
    std::int32_t bar = 0;   ///< from 0 on
    std::int32_t beat = 1;  ///< of the bar, from 1 on
    std::int64_t ticks = 0;
    std::int32_t ticksPerQuarter = 960;
    std::int32_t ticksPerBeat = 960;
};

/// One instance of a component, as a host keeps it: the fields of its context, copies of its parameters, its
/// latency and sessions.
///
/// Any host thread calls what is not said to be of another; one at a time is the audio thread.
class AaxInstance final : private AAX_IEffectHost, private AAX_IController, private AAX_IAutomationDelegate {
public:
    /// When the host answers a plug-in's request for a value.
    enum class Answers {
        AtOnce,  ///< within the call
        OnIdle,  ///< later, by `idle`
    };
    /// What a session holds of an instance, by the chunks' ids.
    using Chunks = std::map<AAX_CTypeID, std::vector<std::byte>>;
    struct Gesture {
        std::string id;
        bool begins;
        bool operator==(const Gesture&) const = default;
    };
    /// A block of audio, in the host's order of channels.
    struct Block {
        std::span<const float* const> inputs;
        const float* sideChain = nullptr;  ///< null: not connected
        std::span<float* const> outputs;
        int samples = 0;
        std::span<const AAX_CMidiPacket> midi;
    };

    /// `input` as the component says, unless the host gives it something else. Not initialised.
    AaxInstance(const AaxComponent& component, float sampleRate, Answers answers = Answers::AtOnce,
                AAX_EStemFormat input = 0);
    ~AaxInstance() override;
    AaxInstance(const AaxInstance&) = delete;
    AaxInstance& operator=(const AaxInstance&) = delete;

    /// The first call.
    AAX_Result initialize();
    const AaxComponent& component() const { return component_; }
    AAX_IEffectParameters& parameters() const { return *parameters_; }

    // Values, from 0 to 1.

    /// What a main loop does now and then: answers what waits, lets the instance post what has changed.
    void idle();
    /// Automation, a control surface, the host's own list of parameters.
    AAX_Result setValue(const std::string& id, double position);
    /// The host's copy.
    double value(const std::string& id) const { return values_.at(id).load(); }
    const std::map<std::string, std::atomic<double>>& values() const { return values_; }
    bool isAutomatable(const std::string& id) const { return automatable_.contains(id); }
    std::vector<Gesture> takeGestures();

    // Sessions.

    /// The error of the first chunk that is not handed out.
    AAX_Result save(Chunks& chunks);
    /// The same of the first that is not taken; the others are set all the same.
    AAX_Result restore(const Chunks& chunks);

    /// Samples, as the instance has told.
    int latency() const { return latency_.load(); }
    int latencyReports() const { return latencyReports_.load(); }

    // Audio thread.

    /// Before blocks of another rate, in Hz.
    VANTA_REALTIME void setSampleRate(float rate) { sampleRate_.store(rate); }
    /// The next block begins something new.
    VANTA_REALTIME void reset() { resetRequested_.store(true); }
    VANTA_REALTIME void render(const Block& block);
    /// The instance's first meter, 0 to 1.
    float meter() const { return meters_.front(); }
    AaxTransportState transport;

private:
    static constexpr std::size_t kFields = 64;
    static constexpr std::size_t kChannels = 64;

    class TransportView;
    class Node;
    struct Port {
        std::uint32_t size = 0;
        std::atomic<std::uint64_t> posted{0};
        std::uint64_t taken = 0;
    };

    AAX_IController* Controller() override { return this; }
    AAX_IAutomationDelegate* AutomationDelegate() override { return this; }
    AAX_ITransport* Transport() override;

    AAX_Result GetInputStemFormat(AAX_EStemFormat* format) const override;
    AAX_Result GetOutputStemFormat(AAX_EStemFormat* format) const override;
    AAX_Result GetSampleRate(AAX_CSampleRate* rate) const override;
    AAX_Result SetSignalLatency(std::int32_t samples) override;
    AAX_Result PostPacket(AAX_CFieldIndex field, const void* data, std::uint32_t size) override;

    AAX_Result RegisterParameter(AAX_CParamID id) override;
    AAX_Result UnregisterParameter(AAX_CParamID id) override;
    AAX_Result PostSetValueRequest(AAX_CParamID id, double normalized) override;
    AAX_Result PostTouchRequest(AAX_CParamID id) override;
    AAX_Result PostReleaseRequest(AAX_CParamID id) override;

    AAX_Result readParameters();
    void prepareFields();
    void resetPrivateData();
    void note(AAX_CParamID id, bool begins);

    const AaxComponent& component_;
    const Answers answers_;
    const AAX_EStemFormat inputStem_;
    std::atomic<float> sampleRate_;
    std::atomic<int> latency_{0};
    std::atomic<int> latencyReports_{0};
    std::atomic<bool> isOpen_{false};  ///< the list of parameters is complete
    std::map<std::string, std::atomic<double>> values_;
    std::map<std::string, bool> automatable_;
    std::mutex mutex_;  ///< for what follows; not held while the instance is called
    std::vector<std::pair<std::string, double>> dueAnswers_;
    std::vector<Gesture> gestures_;

    // The context.
    std::array<void*, kFields> context_{};
    std::array<Port, kFields> ports_;
    std::map<AAX_CFieldIndex, std::vector<std::byte>> privateData_;
    std::vector<float> meters_{0.0f};
    std::array<const float*, kChannels> inputs_{};
    std::array<float*, kChannels> outputs_{};
    std::int32_t samples_ = 0;
    std::int32_t sideChain_ = 0;
    float blockRate_ = 0.0f;
    std::atomic<bool> resetRequested_{true};
    std::unique_ptr<TransportView> transportView_;
    std::unique_ptr<Node> midiNode_;
    std::unique_ptr<Node> transportNode_;

    std::unique_ptr<AAX_IEffectParameters> parameters_;  ///< goes first
};

}  // namespace vanta
