// The optional dlog_is_shown() of the platform, for the whole test program.
#include "SeenLines.h"

#include <platform/log.h>

namespace {

bool infoIsShown = true;

}  // namespace

InfoUnseen::InfoUnseen() {
    infoIsShown = false;
}

InfoUnseen::~InfoUnseen() {
    infoIsShown = true;
}

extern "C" int dlog_is_shown(int prio) {
    return infoIsShown || prio > DLOG_PRIORITY_INFO ? 1 : 0;
}
