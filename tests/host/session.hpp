#pragma once

#include <vector>

#include "tests/host/in_process_host.hpp"

namespace vanta::test {

/// A host, its buffers, and handles on both sides of the plug-in.
class Session {
public:
    static constexpr int kBlock = 64;

    explicit Session(InProcessHost::Answers answers = InProcessHost::Answers::AtOnce)
        : host(kStereoLayout, 48000.0f, answers), samples(2 * kBlock) {}

    void process(int count = kBlock) {
        float* outputs[] = {samples.data(), samples.data() + kBlock};
        const float* inputs[] = {outputs[0], outputs[1]};
        host.process(inputs, outputs, count);
    }
    AbstractPluginParameter& model(int index) { return *host.model().parameterAt(index); }
    AbstractPluginParameter& audio(int index) { return *host.processor().parameterAt(index); }
    int count() { return host.model().parameterCount(); }

    InProcessHost host;
    std::vector<float> samples;
};

}  // namespace vanta::test
