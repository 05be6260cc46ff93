// The result of a content scan as the JSON text of <platform/content_scan.h>.
#pragma once

#include <string>

#include "ContentWalker.h"
#include "MediaTags.h"

namespace platform {

/// The text for the one media file of a device. Texts are made valid UTF-8; numbers that do not fit
/// into 32 bits become the nearest that do. `tags` matter for music only.
std::string scanReport(const MediaFile& file, const MediaTags& tags);

}  // namespace platform
