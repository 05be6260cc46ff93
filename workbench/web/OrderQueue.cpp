// Orders that wait: counting them.
#include "OrderQueue.h"

#include <utility>

namespace workbench {

bool OrderQueue::add(Waiting order) {
    if (orders_.size() >= mostOrders || bytes_ + order.bytes > mostBytes) {
        return false;
    }
    bytes_ += order.bytes;
    orders_.push_back(std::move(order));
    return true;
}

OrderQueue::Waiting OrderQueue::take() {
    Waiting order = std::move(orders_.front());
    orders_.pop_front();
    bytes_ -= order.bytes;
    return order;
}

}  // namespace workbench
