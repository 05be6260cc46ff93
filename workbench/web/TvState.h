// The state of everything as pages are told it: members with names, each made anew when asked for.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Json.h"

namespace workbench {

class TvState {
public:
    /// Makes a member. Without `times` it leaves out what changes only because time passes, such as the
    /// seconds that a pop-up has left: for comparing.
    using Maker = std::function<Json(bool times)>;

    struct Member {
        std::string name;
        Maker make;
    };

    void add(const std::string& name, Maker make) { members_.push_back({name, std::move(make)}); }
    const std::vector<Member>& members() const { return members_; }

    /// One member; null when there is none of this name.
    Json member(const std::string& name) const {
        for (const Member& one : members_) {
            if (one.name == name) {
                return one.make(true);
            }
        }
        return {};
    }

private:
    std::vector<Member> members_;
};

}  // namespace workbench
