// JSON for people: the same text again, laid out in lines of a width. What the members mean is not
// known here.
#pragma once

#include <string>
#include <vector>

namespace workbench {

/// The lines of a JSON text, printable, members in their order, as many side by side as fit into
/// `columns`; they are valid JSON again. Text that is no JSON object or array is wrapped as it is.
std::vector<std::string> laidOutJson(const std::string& text, int columns);

/// Whether the text is a JSON object or array.
bool isJson(const std::string& text);

}  // namespace workbench
