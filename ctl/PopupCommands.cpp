// "popups on|off": whether the television shows the pop-ups of new devices.
#include "Bus.h"
#include "Commands.h"
#include "Failure.h"
#include "Output.h"

namespace ctl {

void popups(const Options& options) {
    const std::string& word = options.words[0];
    if (word != "on" && word != "off") {
        throw Failure(Status::Usage, "popups: \"" + word + "\" is neither on nor off");
    }
    const bool on = word == "on";
    Bus(options).call("SetEnablePopUP", g_variant_new("(b)", on ? TRUE : FALSE));
    if (options.json) {
        writeJson(JsonMembers().with("popups", jsonTruth(on)).done());
    }
}

}  // namespace ctl
