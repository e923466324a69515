#pragma once

#include "bench/compare/options.hpp"
#include "bench/compare/report.hpp"

// What is compared: each measures one kind of work with the instruction set in use and adds its table.
namespace vanta::bench {

/// Every style at the base rate beside the true-peak limiter of x42-plugins.
void addStyles(Report& report, const Target& target, const Options& options);
/// Every style with silence, and with sound below the threshold, beside itself at work.
void addResting(Report& report, const Target& target, const Options& options);
/// Every style at 4x beside the limiter of lsp-plugins at its full oversampling by 8.
void addOversampled(Report& report, const Target& target, const Options& options);
/// Every style at 32x beside the time that the music takes.
void addHighestRate(Report& report, const Target& target, const Options& options);
/// Every style in 7.1.2 beside itself in stereo.
void addSurround(Report& report, const Target& target, const Options& options);
/// The slowest block of a piece of music beside the median block of its louder half.
void addWorstBlocks(Report& report, const Target& target, const Options& options);
/// Fourier transforms beside FFTW, and the same work cut into pieces.
void addTransforms(Report& report, const Target& target, const Options& options);
/// Rates up and down again beside zita-resampler and soxr.
void addConverters(Report& report, const Target& target, const Options& options);
/// The meters of an instance beside libebur128 and beside the whole instance.
void addMeters(Report& report, const Target& target, const Options& options);
/// What no arrangement of the work can undercut, where time depends on it.
void addLimits(Report& report, const Target& target, const Options& options);
/// Where the time of each style goes, as text of its own.
void addShares(Report& report, const Target& target, const Options& options);

}  // namespace vanta::bench
