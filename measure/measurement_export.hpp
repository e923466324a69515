#pragma once

#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>

#include "measure/measurement.hpp"

namespace vanta {

/// All figures of a file under the names that programs know them by, channels included. Null where there is
/// no reading; the times of extremes, in seconds, stand beside them. A file that could not be measured has an
/// "error".
nlohmann::ordered_json measurementObject(const Measurement& measurement);

/// An array with one such object for each file.
std::string measurementJson(std::span<const Measurement> measurements);

/// The fields of the JSON but for the channels, a row for each file; empty where there is no reading.
std::string measurementCsv(std::span<const Measurement> measurements);

/// Momentary and short-term loudness and peaks of every 100 ms of all files.
std::string timelineCsv(std::span<const Measurement> measurements);

}  // namespace vanta
