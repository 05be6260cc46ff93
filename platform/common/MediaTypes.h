// What kind of media a file is, judged by its name alone: nothing is opened, so that a walk through
// a slow stick stays a walk.
#pragma once

#include <string_view>

namespace platform {

enum class MediaType { None, Photo, Video, Music };

/// The kind of a file by its name (with or without folders). The formats that televisions play are
/// known by their extension, in any case of letters; the rest is what the machine's type database
/// says. Any bytes are allowed.
MediaType mediaTypeOf(std::string_view name);

}  // namespace platform
