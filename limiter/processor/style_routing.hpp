#pragma once

#include <array>
#include <cstddef>

#include "limiter/styles/style_names.hpp"

namespace vanta {

/// What the path around the engine must know of a style beyond its record. A new style with one VCA and
/// linkers as most have them needs no entry.
struct StyleRouting {
    /// Which Channel Link parameter the linker of a Detector follows. Free: it links the pairs in full.
    enum class Link { Transients, Release, Free };

    /// The VCAs in the order of the signal; -1 where there is no second one.
    int firstVca = 0;
    int secondVca = -1;
    /// The Convolver that hands on its input late but unsmoothed; -1 for none.
    int tappedConvolver = -1;
    /// By Detector: those of the look-ahead stage follow one parameter, those of the release stage the other.
    std::array<Link, 4> links{Link::Transients, Link::Release, Link::Release, Link::Free};

    /// Detectors that only patches have are free.
    constexpr Link linkOf(std::size_t detector) const {
        return detector < links.size() ? links[detector] : Link::Free;
    }
};

constexpr StyleRouting styleRouting(LimitingStyle style) {
    using enum StyleRouting::Link;
    StyleRouting routing;
    switch (style) {
        case LimitingStyle::Dynamic:
            routing.firstVca = 1;
            routing.secondVca = 0;
            routing.links = {Transients, Release, Transients, Free};
            break;
        case LimitingStyle::Aggressive:
            routing.tappedConvolver = 1;  // its clipper's output goes past the smoothing
            break;
        case LimitingStyle::Modern:
            routing.secondVca = 1;
            routing.links = {Transients, Release, Release, Release};
            break;
        default:
            break;
    }
    return routing;
}

}  // namespace vanta
