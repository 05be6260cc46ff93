// "setting get|set|watch" in a build for a television whose platform is its maker's own: its settings are
// kept in a way that this program does not know, and it says so.
#include "Commands.h"
#include "Failure.h"

namespace ctl {

namespace {

[[noreturn]] void refuse() {
    throw Failure(
        Status::Failed,
        "setting: left out of this build, which is for a television with a settings store " +
            std::string("of its own; use the tools of its maker"));
}

}  // namespace

void settingGet(const Options&) {
    refuse();
}

void settingSet(const Options&) {
    refuse();
}

void settingWatch(const Options&) {
    refuse();
}

}  // namespace ctl
