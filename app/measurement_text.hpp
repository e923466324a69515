#pragma once

#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>

#include "app/measurement.hpp"

namespace vanta {

/// All figures of a file under the names that machines know them by, channels included.
nlohmann::ordered_json measurementObject(const Measurement& measurement);

/// A table for people: a row a file, one for all of them together where there are several, the channels of a
/// single file, and what misses the requirements marked with "!".
std::string measurementTable(std::span<const Measurement> measurements, const Requirements& requirements);

/// An array with one object a file; null where there is no reading. The times of extremes, in seconds, stand
/// beside them. A file that could not be measured has an "error".
std::string measurementJson(std::span<const Measurement> measurements);

/// The same fields as the JSON's, a row a file; empty where there is no reading.
std::string measurementCsv(std::span<const Measurement> measurements);

/// Momentary, short-term and peaks of every 100 ms of all files.
std::string timelineCsv(std::span<const Measurement> measurements);

}  // namespace vanta
