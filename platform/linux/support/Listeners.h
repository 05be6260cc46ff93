// Who is told of something, and the one hard thing about telling them: each may add and remove others,
// itself included, or end whatever the list belongs to.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace machine {

template <class... Arguments>
class Listeners {
public:
    using Listener = std::function<void(Arguments...)>;

    Listeners() = default;
    ~Listeners() { entries_->clear(); }
    Listeners(const Listeners&) = delete;
    Listeners& operator=(const Listeners&) = delete;

    /// @param number  not in use, and better never used before: remove() means the listener by it
    void add(unsigned number, Listener listener) {
        entries_->push_back({number, std::move(listener)});
    }

    /// The listener is not called from now on.
    /// @return whether there was one
    bool remove(unsigned number) {
        const auto found = find(*entries_, number);
        if (found == entries_->end()) {
            return false;
        }
        entries_->erase(found);
        return true;
    }

    bool empty() const { return entries_->empty(); }

    /// Call all that were there at the beginning and still are when their turn comes, in the order of
    /// their adding. Does not touch the list after a listener has ended it.
    void tell(Arguments... arguments) const {
        const std::shared_ptr<Entries> entries = entries_;
        const Entries told = *entries;
        for (const Entry& entry : told) {
            if (find(*entries, entry.number) != entries->end()) {
                entry.listener(arguments...);
            }
        }
    }

private:
    struct Entry {
        unsigned number;
        Listener listener;
    };
    using Entries = std::vector<Entry>;

    static typename Entries::iterator find(Entries& entries, unsigned number) {
        return std::find_if(entries.begin(), entries.end(),
                            [&](const Entry& entry) { return entry.number == number; });
    }

    std::shared_ptr<Entries> entries_ = std::make_shared<Entries>();
};

}  // namespace machine
