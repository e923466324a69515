#pragma once

#include <cstdint>
#include <memory>

#include "foundation/realtime.hpp"
#include "wave/basic_block.hpp"
#include "wave/environment.hpp"

namespace vanta::wave {

/// Whatever lives in an environment.
class Component {
public:
    explicit Component(Environment& owner) : environment_(&owner) {}
    Component(const Component&) = delete;
    Component& operator=(const Component&) = delete;

    Environment& environment() const { return *environment_; }

protected:
    ~Component() = default;

private:
    Environment* environment_;
};

enum class OwnBlock { Yes, No };

/// A node of the block graph. It computes at most once a tick, whoever pulls it; a node that changes nothing
/// publishes the block of its source instead of a copy, so consumers read `current()` and nothing else.
///
/// A node rests, and is not computed, as long as that would change nothing: all that it read for its last
/// block rests itself, the node says that it has settled, and nobody has noted a change since. What it reads
/// are other nodes and FloatParameters. Where that is not all, at the sources of signals, a node does not
/// settle unless it notes its changes.
///
/// A gate is a node that is mostly silent though what it reads is not. While it is, it is closed: its readers
/// may rest, and only it is computed, before anybody relies on that.
class Producer : public Component {
public:
    /// Bit 0 of the block flags: every sample of the current block equals its first sample.
    static constexpr int kConstant = 1;
    /// Bit 1, set at rest: they are equal, though each was computed.
    static constexpr int kOneValue = 2;

    explicit Producer(Environment& owner, OwnBlock ownBlock = OwnBlock::Yes);
    virtual ~Producer();

    /// Computes `samples` samples unless that was done in this tick. The result is `current()`.
    VANTA_REALTIME const BasicBlock<float>& pull(int samples) {
        // Most of what is pulled are controls that stand still.
        if (restGates_ == 0 && mayRest(samples)) return *current_;
        if (stamp_ != environment().tick()) bringUpToDate(samples);
        noteRead();
        return *current_;
    }
    /// The same as a pointer to the first sample.
    VANTA_REALTIME const float* pullData(int samples) { return pull(samples).data(); }

    /// Sizes what the node holds for the sample rate, the largest block and the factors around it. May
    /// allocate. The environment calls it when one of them has changed, and then `reset`.
    virtual void prepare() {}
    /// Clears what the node remembers of the signal. Called between blocks; never allocates.
    VANTA_REALTIME virtual void reset() {}

    const BasicBlock<float>& current() const { return *current_; }
    int blockFlags() const { return blockFlags_; }
    bool isConstant() const { return (blockFlags_ & kConstant) != 0; }
    /// Whether all samples are known to be equal, if only because a resting node was looked at: a memory
    /// fills with that value. Who computes goes by `isConstant` alone, as one sample and many may round
    /// differently.
    bool holdsOneValue() const { return (blockFlags_ & (kConstant | kOneValue)) != 0; }

    /// Whether the current block stands until something changes, or a gate opens.
    bool isResting() const {
        return restEpoch_ == environment().epoch() && environment().stayedClosed(restGates_, restOpenings_);
    }
    bool isRestingForGood() const { return isResting() && restGates_ == 0; }
    /// Whether this block follows the last one, which ended at `expected`, or the node has rested in between.
    bool continues(std::int64_t expected) const {
        return expected == environment().position() ||
               (environment().restedSince(restEpoch_) &&
                environment().stayedClosedUntilNow(restGates_, restOpenings_));
    }

    /// Lets the node run every block by itself, in a group of Environment.
    void setScheduled(int group);
    /// A node that is not active is out of the process list and of most resets. Going active resets it.
    VANTA_REALTIME void setActive(bool active);
    bool active() const { return active_; }
    /// Enters the node in the environment's reset list, once: from then on it is prepared and reset.
    void makeResettable();
    /// For what outlives a restart of the signal path: from now on only ResetAll, another sample rate and the
    /// node's owner reset it. It is prepared as before.
    void keepThroughResets() { kept_ = true; }
    /// Makes the node a gate. Set-up; in a graph with very many the latest are none.
    void makeGate();

protected:
    /// Fills `block`, which is the node's own block or null, or publishes another.
    VANTA_REALTIME virtual void produce(BasicBlock<float>* block, int samples, int flags) = 0;

    /// Whether the same once more would neither change what the node remembers nor its block. Asked after a
    /// block for which all that was read rests. What remembers nothing has always settled.
    virtual bool settled() const { return false; }

    /// Hands on a block that stays valid for this tick, and for as long as its owner rests.
    void publish(const BasicBlock<float>& block, int flags) {
        current_ = &block;
        blockFlags_ = flags;
    }
    void publish(const Producer& other) { publish(other.current(), other.blockFlags()); }
    void publishSilence() { publish(environment().silentBlock(), kConstant); }
    void setConstant(bool constant) { blockFlags_ = constant ? kConstant : 0; }
    /// Marks the node as computed for this tick, when another has computed it on its behalf.
    void markProduced() {
        stamp_ = environment().tick();
        restEpoch_ = 0;
    }
    /// The same of a node that rests if the other does, whose block has `samples`.
    void markProduced(int samples, const Environment::Reads& reads) {
        markProduced();
        if (reads.rest) beginRest(samples, reads.gates);
    }
    /// Whether the current block is this tick's.
    bool produced() const { return stamp_ == environment().tick() || isRestingForGood(); }
    BasicBlock<float>* ownBlock() const { return ownBlock_.get(); }

private:
    friend class Environment;

    /// Whether nothing but a gate could end the rest.
    bool mayRest(int samples) const { return restEpoch_ == environment().epoch() && samples <= restSamples_; }
    /// Tells the node that computes now what it reads here.
    VANTA_REALTIME void noteRead() const {
        const bool atRest = isResting();
        if (!atRest || restGates_ != 0) environment().noteRead(atRest, restGates_);
    }
    VANTA_REALTIME void bringUpToDate(int samples);
    VANTA_REALTIME void compute(int samples, int flags);
    VANTA_REALTIME bool rests(int samples);
    VANTA_REALTIME void beginRest(int samples, GateSet gates);
    VANTA_REALTIME void moveGate(int samples);

    std::unique_ptr<BasicBlock<float>> ownBlock_;
    const BasicBlock<float>* current_;
    std::uint32_t stamp_ = 0;
    std::uint32_t restEpoch_ = 0;     ///< in which the node came to rest; 0 for none
    int restSamples_ = 0;             ///< the block's length then
    GateSet restGates_ = 0;           ///< on which the rest depends; a closed gate depends on itself
    std::uint64_t restOpenings_ = 0;  ///< the environment's when it began
    GateSet gate_ = 0;                ///< the node itself, if it is a gate
    bool closed_ = false;
    int blockFlags_ = 0;
    int scheduleGroup_ = 0;
    bool active_ = true;
    bool scheduled_ = false;
    bool resettable_ = false;
    bool kept_ = false;
};

/// A producer without input.
class Source : public Producer {
public:
    using Producer::Producer;
};

/// Something that reads a producer. Wiring is complete before the first block; it may change between blocks.
class Consumer {
public:
    Producer* source = nullptr;

protected:
    ~Consumer() = default;
};

class FilterBase : public Producer, public Consumer {
public:
    using Producer::Producer;

protected:
    /// One output sample per input sample, or a publication of another block.
    VANTA_REALTIME virtual void process(const BasicBlock<float>& in, BasicBlock<float>* out, int samples,
                                        int flags) = 0;
};

class Filter : public FilterBase {
public:
    using FilterBase::FilterBase;

protected:
    VANTA_REALTIME void produce(BasicBlock<float>* block, int samples, int flags) override {
        process(source->pull(samples), block, samples, flags);
    }
    /// Hands on the input block with its flags.
    void publishInput() { publish(*source); }
};

/// Publishes the block of its source.
class Forwarder final : public Filter {
public:
    explicit Forwarder(Environment& owner) : Filter(owner, OwnBlock::No) {}

protected:
    bool settled() const override { return true; }
    void process(const BasicBlock<float>&, BasicBlock<float>*, int, int) override { publishInput(); }
};

/// Publishes what another consumer reads at the moment.
class InputForwarder final : public Producer {
public:
    InputForwarder(Environment& owner, const Consumer& consumer)
        : Producer(owner, OwnBlock::No), consumer_(consumer) {}

protected:
    bool settled() const override { return true; }
    void produce(BasicBlock<float>*, int samples, int) override {
        consumer_.source->pull(samples);
        publish(*consumer_.source);
    }

private:
    const Consumer& consumer_;
};

/// Reads samples from memory outside of the graph, those of the stream's position, whether the block before
/// was pulled or not. This is the door for what a host hands in: a sample that is not finite counts as 0, a
/// magnitude above 2^20 is limited to it.
class Input : public Producer {
public:
    explicit Input(Environment& owner) : Producer(owner) {}

    /// The next `samples` samples of the stream; null, or what is read beyond the end, counts as silence.
    VANTA_REALTIME void setBuffer(const float* data, int samples);

protected:
    /// Silence that is there from the first to the last sample lasts until another buffer comes.
    bool settled() const override { return silent_; }
    void produce(BasicBlock<float>* block, int samples, int flags) override;

private:
    const float* data_ = nullptr;
    int size_ = 0;
    std::int64_t start_ = 0;  ///< the position of the first sample
    bool silent_ = false;     ///< all of them are 0
};

}  // namespace vanta::wave
