#pragma once

#include <string_view>

namespace vanta {

/// Before anything is opened: a stream that the caller has closed would else be some file of ours, and what
/// is written for people would end in it. Writing to a pipe that nobody reads any more fails instead of
/// ending the process.
void prepareStandardStreams();

/// What standard output is for: results. Failure if it cannot take them; nothing if its reader has had
/// enough, as `| head` has.
void printOut(std::string_view text);

/// The same text on standard error, where standard output holds audio. What cannot be written there is lost.
void printOnError(std::string_view text);

/// A line for people, on standard error. What cannot be written there is lost.
void printLine(std::string_view text);

}  // namespace vanta
