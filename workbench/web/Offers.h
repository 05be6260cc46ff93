// What a page can choose from: languages, samples, scenarios, folders of this machine.
#pragma once

#include <string>

#include "Json.h"
#include "Order.h"
#include "Stage.h"

namespace workbench {

class Offers {
public:
    Offers(const Stage& stage, std::string busAddress);

    /// The greeting of a page, as the protocol has it.
    Json hello(std::int64_t now) const;

    /// The order `folders`. A mount can keep whoever looks into it waiting for ever: a thread does.
    /// Throws OrderError.
    void folders(const Json& with, Answer reply);

private:
    std::string busAddress_;
    Json languages_;
    int looks_ = 0;  // under way
};

}  // namespace workbench
