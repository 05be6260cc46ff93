// Files and folders that launch data name: whether they are there, and how they are handed on. Whoever
// wrote the data may have named anything. The data are text: a path whose bytes are no UTF-8 came with U+FFFD in
// their place, and is found again by that.
#pragma once

#include <string>
#include <vector>

#include "Subject.h"

namespace handlers {

/// A folder. Throws Refusal when there is none at this absolute path.
Subject folderSubject(const std::string& text);

/// Files of one kind.
/// @param root  the folder that all of them must be below, links followed; "" allows any place
/// @throws Refusal when a path is not absolute, leads out, or is no readable file
Subject fileSubject(Kind kind, const std::vector<std::string>& paths, const std::string& root = "");

/// The files directly in a folder that are videos by their name, else those that are pictures, sorted.
/// Throws Refusal when there is neither.
Subject folderOfMediaSubject(const std::string& path);

}  // namespace handlers
