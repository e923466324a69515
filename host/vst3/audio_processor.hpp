#pragma once

#include <array>

#include "host/vst3/block_events.hpp"
#include "host/vst3/com.hpp"
#include "host/vst3/instance.hpp"

namespace vanta::vst3 {

/// The instance as a processor of audio. The host's main thread, but for `setProcessing` and `process`.
class AudioProcessor final : public ComInterface {
public:
    AudioProcessor(ComObject& object, Instance& instance);

    v3_result setBusArrangements(v3_speaker_arrangement* inputs, std::int32_t inputCount,
                                 v3_speaker_arrangement* outputs, std::int32_t outputCount);
    v3_result busArrangement(std::int32_t direction, std::int32_t index, v3_speaker_arrangement* arrangement);
    v3_result canProcessSampleSize(std::int32_t size) noexcept;
    std::uint32_t latency() noexcept;
    v3_result setupProcessing(v3_process_setup* setup);
    VANTA_REALTIME v3_result setProcessing(v3_bool processing);
    VANTA_REALTIME v3_result process(v3_process_data* data);
    std::uint32_t tail() noexcept;

private:
    static const v3_audio_processor_cpp kTable;

    void point(const v3_process_data& data);
    int pointSideChain(const v3_process_data& data);
    void finish(const v3_process_data& data) const;

    Instance& instance_;
    BlockEvents events_;

    // Of the block that runs, in the order of our channels.
    std::array<const float*, kMaxChannels> inputs_{};
    std::array<const float*, kMaxChannels> sideChain_{};
    std::array<float*, kMaxChannels> outputs_{};
};

/// What of the transport it wants to know.
class ContextRequirements final : public ComInterface {
public:
    explicit ContextRequirements(ComObject& object);
    std::uint32_t requirements() noexcept;

private:
    static const v3_process_context_requirements_cpp kTable;
};

}  // namespace vanta::vst3
