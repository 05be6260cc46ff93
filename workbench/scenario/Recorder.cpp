// Writes down what is done: orders as lines, time as waits, and what came of them as expectations.
#include "Recorder.h"

#include <algorithm>
#include <memory>

#include <glib.h>

#include "OrderLine.h"
#include "RemoteControl.h"
#include "Scenario.h"
#include "Text.h"

namespace workbench {

namespace {

/// Within this time one thing is taken for the consequence of the other.
constexpr std::int64_t moment = 1000;

std::string seconds(std::int64_t milliseconds) {
    const std::unique_ptr<char, decltype(&g_free)> text(
        g_strdup_printf("%" G_GINT64_FORMAT ".%03d", static_cast<gint64>(milliseconds / moment),
                        static_cast<int>(milliseconds % moment)),
        g_free);
    return text.get();
}

}  // namespace

Recorder::Recorder(simulated::SimulatedTv& tv,
                   const TvState& state,
                   const PortBoard& ports,
                   const Circumstances::PeerOf& peerOf)
    : tv_(tv), ports_(ports), peerOf_(peerOf), circumstances_(tv, state, ports, peerOf) {}

void Recorder::setWire(const Wire* wire) {
    wire_ = wire;
    circumstances_.setWire(wire);
}

void Recorder::begin(const std::string& title) {
    recording_ = true;
    title_ = title;
    text_ = std::string(scenarioHeadline) + "\n";
    if (!title.empty()) {
        text_ += "# " + printable(title) + "\n";
    }
    steps_ = 0;
    news_.clear();
    inOrder_ = false;
    since_ = written_ = newsTime_ = tv_.clock().now();
    circumstances_.look();
    text_ += circumstances_.steps(numbers_);
    nextNumber_ = 1 + (numbers_.empty() ? 0 : *std::max_element(numbers_.begin(), numbers_.end()));
    seen_ = looked_ = now();
}

std::string Recorder::end() {
    look();
    writeNews();
    recording_ = false;
    return text_;
}

Recorder::Seen Recorder::now() const {
    return {tv_.screen().history().size(), tv_.screen().popup() != nullptr,
            tv_.applications().launches().size(), wire_ == nullptr ? 0 : wire_->messages().end()};
}

void Recorder::look() {
    circumstances_.look();
    if (!recording_ || inOrder_) {
        return;
    }
    const Seen seen = now();
    if (seen.popups == looked_.popups && seen.popupIsUp == looked_.popupIsUp &&
        seen.launches == looked_.launches && seen.messages == looked_.messages) {
        return;
    }
    const std::int64_t time = tv_.clock().now();
    if (time - newsTime_ >= moment) {
        writeNews();
    }
    newsTime_ = time;
    news_ = newsUntil(seen);
    looked_ = seen;
}

void Recorder::before(const Order& order) {
    if (!recording_ || !isStep(order.name)) {
        return;
    }
    look();
    writeNews();
    writeTime(tv_.clock().now());
    inOrder_ = true;
}

void Recorder::after(const Order& order, bool done) {
    if (done) {
        circumstances_.note(order);
    }
    if (!recording_ || !isStep(order.name)) {
        return;
    }
    inOrder_ = false;
    while (numbers_.size() < ports_.ports().size()) {
        numbers_.push_back(nextNumber_++);
    }
    if (done) {
        write(orderLine(translated(order)));
        ++steps_;
    }
    // Time that the order itself let pass passes in the replay as well.
    if (order.name == "step") {
        written_ = tv_.clock().now();
    }
    look();
}

Order Recorder::translated(const Order& order) const {
    const std::int64_t port = order.with["port"].number();
    Order copy{order.name, Json::object()};
    for (const std::string& name : order.with.names()) {
        copy.with.set(name, order.with[name]);
    }
    if (port >= 1 && port <= static_cast<std::int64_t>(numbers_.size())) {
        copy.with.set("port", numbers_[static_cast<std::size_t>(port) - 1]);
    }
    return copy;
}

void Recorder::writeTime(std::int64_t time) {
    if (time - written_ >= moment) {
        write("after " + seconds(time - written_));
        written_ = time;
    }
}

/// What came up since it was written last, as expectations.
std::string Recorder::newsUntil(const Seen& seen) const {
    std::string news;
    const auto& launches = tv_.applications().launches();
    for (std::size_t i = seen_.launches; i < seen.launches; ++i) {
        const std::string& app = launches[i].appId;
        news += "expect launch" + (app.empty() ? "" : " " + asWord(app)) + "\n";
    }
    const std::uint64_t oldest = wire_ == nullptr ? 0 : wire_->messages().begin();
    for (std::uint64_t i = std::max(seen_.messages, oldest); i < seen.messages; ++i) {
        const WireMessage& message = wire_->messages().at(i);
        // No line of the scenario brings other programs to the bus.
        const std::optional<int> client = peerOf_(message.to);
        if (message.kind == "signal" && client) {
            news += "expect signal " + asWord(message.member) + " client " +
                    std::to_string(*client) + "\n";
        }
    }
    if (seen.popupIsUp && seen.popups != seen_.popups) {
        const simulated::Popup& popup = *tv_.screen().popup();
        news += "expect popup " + popupKind(popup) +
                " title = " + asWord(popup.title.value_or("")) + "\n";
    } else if (!seen.popupIsUp && (seen_.popupIsUp || seen.popups != seen_.popups)) {
        news += "expect popup none\n";
    }
    return news;
}

void Recorder::writeNews() {
    if (!news_.empty()) {
        writeTime(newsTime_);
        text_ += news_;
        news_.clear();
    }
    seen_ = looked_;
}

void Recorder::write(const std::string& line) {
    text_ += line + "\n";
}

}  // namespace workbench
