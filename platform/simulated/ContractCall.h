// What every contract function begins with: its line in the journal, and the question whether it is
// to fail. Only for the files that define contract functions.
#pragma once

#include <string>
#include <type_traits>

#include "SimulatedTv.h"

namespace simulated {

/// What a contract function returns that fails.
constexpr int CALL_FAILED = -1;

/// One argument as the journal writes it.
inline std::string journalText(const char* text) {
    return text != nullptr ? '"' + std::string(text) + '"' : "null";
}
inline std::string journalText(const std::string& text) {
    return '"' + text + '"';
}
template <class Number>
std::enable_if_t<std::is_arithmetic_v<Number> || std::is_enum_v<Number>, std::string> journalText(
    Number number) {
    return std::to_string(static_cast<int>(number));
}

/// Several arguments, separated by commas.
inline std::string journalTexts() {
    return {};
}
template <class First, class... Rest>
std::string journalTexts(const First& first, const Rest&... rest) {
    std::string texts = journalText(first);
    (texts.append(", ").append(journalText(rest)), ...);
    return texts;
}

/// A handle that has no name of its own is written down only when it is missing.
inline std::string journalHandle(const void* handle) {
    return handle != nullptr ? "" : "null";
}
template <class... Arguments>
std::string journalHandle(const void* handle, const Arguments&... arguments) {
    const std::string texts = journalTexts(arguments...);
    return handle != nullptr ? texts : "null, " + texts;
}

/// A contract function that answers with a number: fails as ordered, else does `act` with the TV.
template <class Act>
int contractCall(const char* function, const std::string& arguments, const Act& act) {
    SimulatedTv& tv = SimulatedTv::current();
    return tv.enter(function, arguments) ? CALL_FAILED : act(tv);
}

}  // namespace simulated
