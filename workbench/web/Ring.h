// The newest so many of something that never ends, each with a number that is never used twice.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>

namespace workbench {

template <class Thing>
class Ring {
public:
    explicit Ring(std::size_t most) : most_(most) {}

    /// Add one; returns its number. The oldest goes when there are too many.
    std::uint64_t add(Thing thing) {
        things_.push_back(std::move(thing));
        if (things_.size() > most_) {
            things_.pop_front();
            ++first_;
        }
        return end() - 1;
    }

    /// Numbers of the oldest that is kept, and of the next to come.
    std::uint64_t begin() const { return first_; }
    std::uint64_t end() const { return first_ + things_.size(); }

    /// One between begin() and end().
    const Thing& at(std::uint64_t number) const {
        return things_[static_cast<std::size_t>(number - first_)];
    }

    /// Forget all; numbers go on.
    void clear() {
        first_ = end();
        things_.clear();
    }

private:
    std::size_t most_;
    std::uint64_t first_ = 0;
    std::deque<Thing> things_;
};

}  // namespace workbench
