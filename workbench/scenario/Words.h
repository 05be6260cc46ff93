// The words of a line of a scenario: blanks between them, quotes around them, bytes by number. What the
// words mean is not known here.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace workbench {

/// A line that cannot be read; why.
struct ScenarioError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Word {
    std::string text;
    bool isQuoted;  ///< begins with a quote: it is no sign such as "=" then
};

/// The words of a line, without a comment at its end. Throws ScenarioError.
std::vector<Word> wordsOf(const std::string& line);

/// A text as one word.
std::string asWord(const std::string& text);

}  // namespace workbench
