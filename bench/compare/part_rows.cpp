#include <ebur128.h>
#include <fftw3.h>
#include <fmt/format.h>
#include <soxr.h>
#include <zita-resampler/resampler.h>

#include <cmath>
#include <memory>
#include <vector>

#include "bench/compare/instance.hpp"
#include "bench/compare/rows.hpp"
#include "bench/meter_rig.hpp"
#include "dsp/convolver/fft.hpp"
#include "dsp/sr/converter_style.hpp"
#include "tests/support/signals.hpp"

namespace vanta::bench {

namespace {

// Transforms

/// So many stops that a block of the convolver could make in one.
constexpr int kPieces = 8;
constexpr int kSamplesInRound = 1 << 19;

struct OwnTransform {
    explicit OwnTransform(int size)
        : fft(size),
          work(size),
          samples(size),
          spectrum(size),
          signal(test::pinkNoise(1, static_cast<std::size_t>(size))) {}

    void forward(int pieces) {
        for (int piece = 0; piece < pieces; ++piece) {
            const int begin = fft.grains() * piece / pieces, end = fft.grains() * (piece + 1) / pieces;
            fft.forward(signal.data(), signal.data() + fft.size() / 2, spectrum.data(), work, begin,
                        end - begin);
        }
    }
    void inverse() { fft.inverse(spectrum.data(), samples.data(), work, 0, fft.grains()); }

    FFT fft;
    FFT::Work work;
    wave::AlignedBuffer<float> samples, spectrum;
    test::Signal signal;
};

/// In single precision, planned as carefully as FFTW can.
class Fftw {
public:
    explicit Fftw(int size)
        : samples_(fftwf_alloc_real(static_cast<std::size_t>(size))),
          spectrum_(fftwf_alloc_complex(static_cast<std::size_t>(size / 2 + 1))),
          forward_(fftwf_plan_dft_r2c_1d(size, samples_, spectrum_, FFTW_PATIENT)),
          inverse_(fftwf_plan_dft_c2r_1d(size, spectrum_, samples_, FFTW_PATIENT)) {
        const auto signal = test::pinkNoise(1, static_cast<std::size_t>(size));
        std::copy(signal.begin(), signal.end(), samples_);
    }
    ~Fftw() {
        fftwf_destroy_plan(forward_);
        fftwf_destroy_plan(inverse_);
        fftwf_free(samples_);
        fftwf_free(spectrum_);
    }
    Fftw(const Fftw&) = delete;
    Fftw& operator=(const Fftw&) = delete;

    void forward() { fftwf_execute(forward_); }
    /// Of silence: it overwrites the spectrum, and what it is run on again must not grow.
    void inverse() { fftwf_execute(inverse_); }
    void silence(int size) {
        std::fill_n(samples_, size, 0.0f);
        fftwf_execute(forward_);
    }

private:
    float* samples_;
    fftwf_complex* spectrum_;
    fftwf_plan forward_, inverse_;
};

template <typename Work>
Race::Play repeat(Work work) {
    return [work](int blocks) mutable {
        for (int i = 0; i < blocks; ++i) work();
    };
}

void addTransformsOf(int size, Report& report, const Options& options) {
    OwnTransform own(size);
    Fftw forward(size), inverse(size);
    inverse.silence(size);
    Race race({.passes = 20 * options.passes, .blocks = kSamplesInRound / size});
    race.enter("FFTW", repeat([&] { forward.forward(); }));
    race.enter("FFTW, inverse", repeat([&] { inverse.inverse(); }));
    race.enter("forward", repeat([&] { own.forward(1); }));
    race.enter("forward in pieces", repeat([&] { own.forward(kPieces); }));
    race.enter("inverse", repeat([&] { own.inverse(); }));
    race.run();
    const auto add = [&](std::size_t contender, std::size_t to, Reach reach, const std::string& what) {
        report.add({fmt::format("{} points, {}", size, what), race.nanoseconds(contender),
                    race.nanoseconds(to), race.ratio(contender, to), reach});
    };
    add(2, 0, Reach::both(1.2), "forward");
    add(4, 1, Reach::both(1.2), "inverse");
    add(3, 0, {}, fmt::format("forward, stopped {} times", kPieces - 1));
}

// Rates

constexpr int kBlock = 256;

/// Mono, up by a factor and down again: what each of its samples costs at the lower rate.
class Converting {
public:
    virtual ~Converting() = default;
    virtual void block() = 0;
};

class OwnConverters final : public Converting {
public:
    OwnConverters(int factor, const test::Signal& signal)
        : signal_(signal),
          style_(environment_, factor),
          up_(style_.createInterpolator()),
          down_(style_.createDecimator()),
          high_(kBlock * factor),
          out_(kBlock) {
        up_->update();
        down_->update();
    }
    void block() override {
        up_->convert(signal_.data(), high_.data(), kBlock);
        down_->convert(high_.data(), out_.data(), kBlock);
    }

private:
    const test::Signal& signal_;
    wave::Environment environment_{kBlock};
    sr::ConverterStyle style_;
    std::unique_ptr<sr::ConverterBase> up_, down_;
    wave::AlignedBuffer<float> high_, out_;
};

/// Half the filter's length in samples of the lower rate: its longest, for the band that ours keeps.
constexpr unsigned kZitaLength = 96;

class ZitaConverters final : public Converting {
public:
    ZitaConverters(int factor, const test::Signal& signal)
        : signal_(signal), high_(static_cast<std::size_t>(kBlock * factor)), out_(kBlock) {
        const auto low = static_cast<unsigned>(Music::kRate), high = low * static_cast<unsigned>(factor);
        up_.setup(low, high, 1, kZitaLength);
        down_.setup(high, low, 1, kZitaLength);
    }
    void block() override {
        convert(up_, signal_, high_);
        convert(down_, high_, out_);
    }

private:
    static void convert(Resampler& resampler, const std::vector<float>& in, std::vector<float>& out) {
        resampler.inp_count = static_cast<unsigned>(in.size());
        // It does not write to what it reads; its interface predates const.
        resampler.inp_data = const_cast<float*>(in.data());
        resampler.out_count = static_cast<unsigned>(out.size());
        resampler.out_data = out.data();
        resampler.process();
    }
    const test::Signal& signal_;
    Resampler up_, down_;
    std::vector<float> high_, out_;
};

class SoxrConverters final : public Converting {
public:
    SoxrConverters(int factor, const test::Signal& signal)
        : signal_(signal), high_(static_cast<std::size_t>(2 * kBlock * factor)), out_(2 * kBlock) {
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
        up_.reset(soxr_create(Music::kRate, Music::kRate * factor, 1, nullptr, nullptr, &quality, nullptr));
        down_.reset(soxr_create(Music::kRate * factor, Music::kRate, 1, nullptr, nullptr, &quality, nullptr));
    }
    void block() override {
        std::size_t raised = 0, lowered = 0;
        soxr_process(up_.get(), signal_.data(), kBlock, nullptr, high_.data(), high_.size(), &raised);
        soxr_process(down_.get(), high_.data(), raised, nullptr, out_.data(), out_.size(), &lowered);
    }

private:
    struct Delete {
        void operator()(soxr_t converter) const { soxr_delete(converter); }
    };
    const test::Signal& signal_;
    std::unique_ptr<std::remove_pointer_t<soxr_t>, Delete> up_, down_;
    std::vector<float> high_, out_;
};

// Meters

/// From one look at the figures to the next, about 100 ms.
constexpr int kLook = 17;

class Ebur128 {
public:
    Ebur128(const Music& music, int mode)
        : meter_(ebur128_init(2, static_cast<unsigned long>(Music::kRate), mode)), frames_(music.frames()) {
        for (int i = 0; i < frames_; ++i) {
            for (const auto& channel : music.channels)
                interleaved_.push_back(channel[static_cast<std::size_t>(i)]);
        }
    }
    void block() {
        ebur128_add_frames_float(meter_.get(), interleaved_.data() + 2 * at_, kBlock);
        at_ = (at_ + kBlock) % frames_;
        if (++blocks_ % kLook != 0) return;
        ebur128_loudness_momentary(meter_.get(), &figure_);
        ebur128_loudness_shortterm(meter_.get(), &figure_);
        ebur128_loudness_global(meter_.get(), &figure_);
        ebur128_loudness_range(meter_.get(), &figure_);
    }

private:
    struct Destroy {
        void operator()(ebur128_state* meter) const { ebur128_destroy(&meter); }
    };
    std::unique_ptr<ebur128_state, Destroy> meter_;
    int frames_, at_ = 0, blocks_ = 0;
    double figure_ = 0.0;
    std::vector<float> interleaved_;
};

}  // namespace

void addTransforms(Report& report, const Target& target, const Options& options) {
    report.begin(target, "Real transforms beside FFTW", "ns", "FFTW");
    for (const int size : {256, 2048}) addTransformsOf(size, report, options);
}

void addConverters(Report& report, const Target& target, const Options& options) {
    report.begin(target, "A channel raised in rate and lowered again", "ns a sample", "peer");
    const auto signal = test::pinkNoise(1, kBlock);
    for (const int factor : {2, 4, 8}) {
        OwnConverters own(factor, signal);
        ZitaConverters zita(factor, signal);
        SoxrConverters soxr(factor, signal);
        Race race({.passes = 20 * options.passes, .blocks = 128, .itemsPerBlock = kBlock});
        for (Converting* each : {static_cast<Converting*>(&own), static_cast<Converting*>(&zita),
                                 static_cast<Converting*>(&soxr)}) {
            race.enter("", repeat([each] { each->block(); }));
        }
        race.run();
        for (const auto& [peer, name] :
             {std::pair{1, "zita-resampler"}, std::pair{2, "soxr, high quality"}}) {
            const auto to = static_cast<std::size_t>(peer);
            report.add({fmt::format("{}x, beside {}", factor, name), race.nanoseconds(0),
                        race.nanoseconds(to), race.ratio(0, to)});
        }
    }
}

void addMeters(Report& report, const Target& target, const Options& options) {
    report.begin(target, "All meters of a stereo instance", "ns a frame", "peer");
    Options round = options;
    round.blockFrames = kBlock;
    const Music music = song(options.seconds / 2).cut(round.framesOfRound());
    MeterRig plain(music.channels, Music::kRate, false), truePeak(music.channels, Music::kRate, true);
    constexpr int kLoudness =
        EBUR128_MODE_M | EBUR128_MODE_S | EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_HISTOGRAM;
    Ebur128 peer(music, kLoudness), peerTruePeak(music, kLoudness | EBUR128_MODE_TRUE_PEAK);

    Race race({.passages = music.frames() / round.framesOfRound(),
               .passes = options.passes,
               .blocks = round.blocksInRound(),
               .itemsPerBlock = kBlock});
    float seen = 0.0f;
    auto own = [&seen, looks = 0](MeterRig& rig) mutable {
        rig.run();
        if (++looks % kLook == 0) seen += rig.look();
    };
    race.enter("plain", repeat([&, own]() mutable { own(plain); }));
    race.enter("true peak", repeat([&, own]() mutable { own(truePeak); }));
    race.enter("libebur128", repeat([&] { peer.block(); }));
    race.enter("libebur128, true peak", repeat([&] { peerTruePeak.block(); }));
    std::vector<std::unique_ptr<Instance>> instances;
    for (const StyleRow& style : kStyleTable) {
        instances.push_back(std::make_unique<Instance>(
            InstanceSettings{.style = style.style, .gainDb = options.gainDb}, music));
        race.enter(std::string(style.name),
                   [&, i = instances.size() - 1](int blocks) { instances[i]->play(blocks); });
    }
    race.run();
    std::size_t cheapest = 4;
    for (std::size_t i = 4; i < 4 + kStyleTable.size(); ++i) {
        if (race.nanoseconds(i) < race.nanoseconds(cheapest)) cheapest = i;
    }
    const auto add = [&](std::string work, std::size_t contender, std::size_t to, Reach reach) {
        report.add({std::move(work), race.nanoseconds(contender), race.nanoseconds(to),
                    race.ratio(contender, to), reach});
    };
    add("loudness, beside libebur128", 0, 2, {});
    add("loudness and true peaks, beside libebur128", 1, 3, {});
    add(fmt::format("loudness and true peaks, beside {}", race.name(cheapest)), 1, cheapest,
        Reach::both(0.1));
    if (std::isnan(seen)) report.note("The meters read no number.");
}

void addLimits(Report& report, const Target& target, const Options& options) {
    report.begin(target, "Chains in which each sample waits for the one before", "ns a sample", "copied");
    const auto signal = test::pinkNoise(1, kBlock);
    std::vector<float> out(kBlock), copied(kBlock);
    double level = 0.0;
    const auto chain = [&](auto step) {
        return repeat([&, step] {
            for (std::size_t i = 0; i < kBlock; ++i) {
                level += step(double{signal[i]} - level);
                out[i] = static_cast<float>(level);
            }
        });
    };
    Race race({.passes = 20 * options.passes, .blocks = 256, .itemsPerBlock = kBlock});
    race.enter("a copy", repeat([&] {
                   std::copy(signal.begin(), signal.end(), copied.begin());
                   asm volatile("" : : "r"(copied.data()) : "memory");
               }));
    race.enter("difference, choice, product, sum",
               chain([](double distance) { return (distance > 0.0 ? 0.3 : 0.001) * distance; }));
    // The least that a time which depends on the step asks for: the exponential in it has but three terms.
    race.enter("the same with a time that bends with the step", chain([](double distance) {
                   const double time = (distance > 0.0 ? 3.0 : 900.0) + 0.1 * std::abs(distance);
                   const double x = 2.3 / time;
                   return x * (1.0 - x * (0.5 - x * 0.1667)) * distance;
               }));
    race.run();
    for (std::size_t i = 1; i < 3; ++i) {
        report.add({race.name(i), race.nanoseconds(i), race.nanoseconds(0), race.ratio(i, 0)});
    }
}

}  // namespace vanta::bench
