// Orders of pages that wait for their turn, no more than a program can bear.
#pragma once

#include <cstddef>
#include <deque>

#include "Order.h"

namespace workbench {

class OrderQueue {
public:
    /// An order of a page, with the page's own id for it.
    struct Waiting {
        unsigned page;  ///< 0 for none
        Json id;
        Order order;
        std::size_t bytes;  ///< of the message that it came in
    };

    static constexpr std::size_t mostOrders = 10000;
    static constexpr std::size_t mostBytes = 4U << 20U;

    /// Add one; false, and nothing, when there are too many already.
    bool add(Waiting order);

    bool isEmpty() const { return orders_.empty(); }
    const Waiting& front() const { return orders_.front(); }
    /// Take the one that waits longest.
    Waiting take();

private:
    std::deque<Waiting> orders_;
    std::size_t bytes_ = 0;
};

}  // namespace workbench
