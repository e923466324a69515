#include <array>

#include "limiter/vanta_parameters.hpp"

namespace vanta {
namespace {

constexpr std::array<std::string_view, VantaParameters::kParameterCount> kHelp{
    // Gain
    "Drives the signal into the limiter, from 0 to 30 dB. The limiter works at a threshold this far below "
    "full scale and raises the result back to the Output Level, so more Gain means louder and more limited. "
    "Set it by ear with Unity Gain on, which takes the added level out again.",
    // Style
    "Selects the limiting algorithm. Transparent keeps out of the way; Punchy, Dynamic and Allround keep "
    "transients alive; Aggressive and Modern go for level; Bus shapes groups and drums; Safe avoids "
    "distortion above all. Styles differ in latency, and a change resets the limiter.",
    // Lookahead
    "How long ahead of a peak the limiter begins to turn down, from 0 to 5 ms. Short times keep transients "
    "sharp and loud and may distort; longer times are smoother and cleaner. The latency does not depend on "
    "it.",
    // Attack
    "How soon the slow release stage takes part in limiting. Short times hand level changes to it quickly, "
    "for a steady and dense sound; long times leave short peaks to the fast stage, for more punch. Peaks are "
    "held at the ceiling in any case.",
    // Release
    "How soon the slow stage gives the level back after a loud passage. Short times are loudest and may pump "
    "or distort bass; long times are smooth and keep the balance of the mix.",
    // Channel Link Transients
    "How far the channels share the limiting of short peaks. At 0% each channel is limited by itself, at "
    "100% "
    "both channels of a pair are turned down together and the image stays in place. In surround layouts the "
    "second half of the range goes on to link all channels.",
    // Channel Link Release
    "How far the channels share the limiting of the slow release stage. Less than 100% gives more level and "
    "width, 100% keeps the stereo image steady. In surround layouts the second half of the range goes on to "
    "link all channels.",
    // Channel Link Center
    "Whether the center channel takes part in channel linking. Exclude it to keep dialogue untouched by "
    "peaks of the other channels.",
    // Channel Link LFE
    "Whether the low-frequency channel takes part when all channels are linked. Exclude it to keep strong "
    "bass effects from turning everything down.",
    // Oversampling
    "Runs the limiter at 2 to 32 times the sample rate. This reduces aliasing of fast gain changes and lets "
    "it see peaks between the samples better, at the cost of processing power and some latency. A change "
    "restarts the signal path.",
    // True Peak Limiting
    "Limits the peaks of the reconstructed waveform and not just the samples, so that converters and lossy "
    "coders do not clip. The Output Level then counts in dBTP. Adds a little latency.",
    // Dithering
    "Rounds the output to 16 to 24 bits with dither, for a file or device of that word length. Choose the "
    "bit depth of the destination, use it once and last, and leave it off while the signal goes on in "
    "floating "
    "point. The level drops by just what dither and shaped noise can add, so the ceiling holds.",
    // Noise Shaping
    "Moves the noise of Dithering to frequencies where it is heard less: None leaves it flat, Basic tilts it "
    "upwards, Optimized and Weighted follow the sensitivity of the ear ever more closely. Without Dithering "
    "it does nothing.",
    // Filter DC Offset
    "Removes a constant offset from the input, and from the side chain, with a high-pass at 1.5 Hz. An "
    "offset "
    "costs headroom on one side of the waveform.",
    // Side Chain Triggering
    "Lets the signal of the side-chain input decide how far the main signal is turned down. The output is "
    "then not held to the Output Level, as the limiter does not look at the signal that it turns down.",
    // Unity Gain
    "Takes Gain and Output Level out of the level that you hear, so that limited and bypassed signal compare "
    "at "
    "the same loudness. For listening only: switch it off before rendering.",
    // Audition Limiting
    "Plays only what the limiter takes away. Silence means that nothing is being limited; what you hear "
    "should not be a recognisable part of the music.",
    // Bypass
    "Passes the input on unprocessed, delayed by the same latency, with a short fade between the two.",
    // Output Level
    "The ceiling: no sample of the output, and with True Peak Limiting no peak between samples, gets louder "
    "than this. For lossy coders some room below 0, such as -1 dBTP, is customary.",
    // Lock Output
    "Keeps Gain, Output Level, Oversampling, Dithering, Noise Shaping, True Peak Limiting, Unity Gain and "
    "Filter DC Offset as they are when a preset is loaded.",
    // Receive Midi
    "Whether MIDI controllers and program changes from the host reach the plug-in.",
    // Show Advanced
    "Opens the panel with style, times and channel linking. It has no effect on the sound.",
    // True Peak Metering
    "Shows peaks of the reconstructed waveform in the output meter, or the plain peaks of the samples. It "
    "has "
    "no effect on the sound.",
    // Display Mode
    "How the level display runs: Slow Down moves the pen along with the picture, Fast and Slow scroll, "
    "Infinite "
    "fits everything since the start, Off hides it to save processing power.",
    // Meter Scale
    "The range of the output meter: peak scales of 16, 32 and 48 dB, the K-System with 12, 14 or 20 dB of "
    "headroom, or loudness according to EBU R128. It also sets how fast the meters fall.",
    // Loudness Time Scale
    "The loudness that is shown largest: Momentary over 400 ms, Short Term over 3 s, or Integrated over the "
    "whole measurement.",
    // Loudness Meter Scale
    "How far the loudness meter reaches above its target: 9 LU for narrow programmes, 18 LU for wide ones.",
    // Loudness Meter Origin
    "Shows loudness as absolute LUFS, or in LU relative to the target.",
    // Loudness Meter Target
    "The loudness in LUFS that you aim for, from -60 to 0: -23 for European broadcast, -14 for most "
    "streaming "
    "services. It places the mark in the meter and does not change the level.",
    // Loudness Integrated Peak Time Scale
    "Which maximum stands beside the integrated loudness: that of the momentary or of the short-term values.",
    // Loudness Recording
    "Runs or pauses the loudness measurement. Pause it to skip passages that are not part of the programme.",
};

}  // namespace

std::string_view vantaParameterHelp(int index) {
    return kHelp[static_cast<std::size_t>(index)];
}

}  // namespace vanta
