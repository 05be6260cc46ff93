// What a page can choose from: languages, samples, scenarios, methods of the daemon, folders of this
// machine.
#pragma once

#include <string>

#include "BusInterface.h"
#include "Json.h"
#include "Stage.h"

namespace workbench {

class Offers {
public:
    Offers(const Stage& stage, std::string busAddress, const BusInterface& interface);

    /// The greeting of a page, as the protocol has it.
    Json hello(std::int64_t now) const;

    /// The order `folders`. Throws OrderError.
    static Json folders(const Json& with);

private:
    std::string busAddress_;
    Json methods_;
    Json languages_;
};

}  // namespace workbench
