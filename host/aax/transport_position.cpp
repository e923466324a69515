#include "host/aax/transport_position.hpp"

#include <cmath>

namespace vanta {
namespace {

bool readBeats(const AAX_ITransport& transport, double& beats) {
    std::int32_t numerator = 0;
    std::int32_t denominator = 0;
    std::int32_t bar = 0;
    std::int32_t beat = 0;
    std::int32_t perQuarter = 0;
    std::int32_t perBeat = 0;
    std::int64_t ticks = 0;
    std::int64_t location = 0;
    const bool answered = transport.GetCurrentMeter(&numerator, &denominator) == AAX_SUCCESS &&
                          transport.GetCurrentSampleLocation(&location) == AAX_SUCCESS &&
                          transport.GetBarBeatPosition(&bar, &beat, &ticks, location) == AAX_SUCCESS &&
                          transport.GetTicksPerQuarter(&perQuarter) == AAX_SUCCESS &&
                          transport.GetTicksPerBeat(&perBeat) == AAX_SUCCESS;
    if (!answered || denominator < 1 || perQuarter < 1 || perBeat < 1) return false;
    const double sinceStart = beat - 1.0 + static_cast<double>(bar) * numerator;
    const double quarters = sinceStart * (4.0 / denominator) + static_cast<double>(ticks) / perQuarter;
    beats = quarters * (static_cast<double>(perQuarter) / perBeat);
    return true;
}

}  // namespace

double tempoOf(const AAX_ITransport* transport) {
    double tempo = 0.0;
    const bool answered = transport && transport->GetCurrentTempo(&tempo) == AAX_SUCCESS;
    return answered && std::isfinite(tempo) && tempo > 0.0 ? tempo : TransportPosition{}.tempo;
}

TransportPosition positionOf(const AAX_ITransport* transport) {
    TransportPosition position;
    position.tempo = tempoOf(transport);
    if (transport) readBeats(*transport, position.beats);
    return position;
}

}  // namespace vanta
