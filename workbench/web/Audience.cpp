// All connected pages: comparing what each was told with what is, and batches of lines.
#include "Audience.h"

#include <algorithm>

namespace workbench {

namespace {

constexpr std::uint64_t linesInBatch = 500;
constexpr std::uint64_t messagesInBatch = 100;

std::string written(const LoggedLine& line, std::uint64_t number) {
    return Json::object({{"n", number},
                         {"t", line.time},
                         {"priority", line.priority},
                         {"file", line.file},
                         {"function", line.function},
                         {"line", line.line},
                         {"message", line.message}})
        .written();
}

std::string written(const WireMessage& message, std::uint64_t number) {
    const auto orNull = [](const std::string& text) { return text.empty() ? Json() : Json(text); };
    return Json::object({{"n", number},
                         {"t", message.time},
                         {"kind", message.kind},
                         {"from", message.from},
                         {"to", message.to},
                         {"interface", orNull(message.interface)},
                         {"member", message.member},
                         {"signature", message.signature},
                         {"args", message.arguments},
                         {"client", message.client ? Json(*message.client) : Json()},
                         {"serial", message.serial},
                         {"replyTo", message.replyTo != 0 ? Json(message.replyTo) : Json()},
                         {"error", orNull(message.error)}})
        .written();
}

/// The next batch of what a page was not told yet, as a JSON array; "" when there is nothing. What went
/// before it could be told is skipped.
template <class Thing>
std::string nextBatch(const Ring<Thing>& ring, std::uint64_t& next, std::uint64_t most) {
    next = std::max(next, ring.begin());
    const std::uint64_t end = std::min(ring.end(), next + most);
    std::string batch;
    for (; next < end; ++next) {
        batch += (batch.empty() ? "[" : ",") + written(ring.at(next), next);
    }
    return batch.empty() ? "" : batch + "]";
}

}  // namespace

Audience::Audience(const TvState& state, const LogBook& log, Hooks hooks)
    : state_(state), log_(log), hooks_(std::move(hooks)) {}

void Audience::join(SoupWebsocketConnection* connection) {
    const unsigned number = ++joined_;
    auto seat = std::make_unique<Seat>(Seat{number, true, false, nullptr});
    Seat& taken = *seat;
    seat->page = std::make_unique<Page>(
        connection, Page::Hooks{[this, number](Page&, const Json& order, std::size_t bytes) {
                                    hooks_.ordered(number, order, bytes);
                                },
                                [&taken](Page&) { taken.isGone = true; }});
    seats_.push_back(std::move(seat));
    Page& page = *taken.page;
    page.send(hooks_.hello());
    Json whole = Json::object();
    for (const TvState::Member& member : state_.members()) {
        page.told[member.name] = member.make(false).written();
        whole.set(member.name, member.make(true));
    }
    page.send(Json::object({{"type", "state"}, {"state", whole}}));
    if (number == 1) {
        hooks_.first();
    }
}

bool Audience::lacksSomething(const Seat& seat) const {
    return seat.isGone ||
           (seat.page->hasRoom() &&
            (seat.isBehind || seat.page->nextLogLine < log_.lines().end() ||
             (wire_ != nullptr && seat.page->nextMessage < wire_->messages().end())));
}

bool Audience::hasNews() const {
    const auto lacks = [this](const auto& seat) { return lacksSomething(*seat); };
    return !seats_.empty() &&
           (std::any_of(seats_.begin(), seats_.end(), lacks) || hooks_.mark() != toldMark_);
}

void Audience::tellNews() {
    const auto isGone = [](const auto& seat) { return seat->isGone; };
    seats_.erase(std::remove_if(seats_.begin(), seats_.end(), isGone), seats_.end());
    const Mark mark = hooks_.mark();
    const bool mayDiffer = mark != toldMark_;
    toldMark_ = mark;
    const auto isBehind = [](const auto& seat) { return seat->isBehind; };
    std::vector<std::string> fingerprints;
    if (mayDiffer || std::any_of(seats_.begin(), seats_.end(), isBehind)) {
        for (const TvState::Member& member : state_.members()) {
            fingerprints.push_back(member.make(false).written());
        }
    }
    for (const auto& seat : seats_) {
        seat->isBehind = (mayDiffer || seat->isBehind) && !seat->page->hasRoom();
        if (seat->page->hasRoom()) {
            tellState(*seat, fingerprints);
            tellLog(*seat->page);
            tellWire(*seat->page);
        }
    }
}

void Audience::tellState(Seat& seat, const std::vector<std::string>& fingerprints) const {
    for (std::size_t i = 0; i < fingerprints.size(); ++i) {
        const TvState::Member& member = state_.members()[i];
        std::string& told = seat.page->told[member.name];
        if (told != fingerprints[i]) {
            told = fingerprints[i];
            seat.page->send(Json::object(
                {{"type", "change"}, {"path", member.name}, {"value", member.make(true)}}));
        }
    }
}

void Audience::tellLog(Page& page) const {
    const std::string batch = nextBatch(log_.lines(), page.nextLogLine, linesInBatch);
    if (!batch.empty()) {
        page.sendWritten("log", "lines", batch);
    }
}

void Audience::tellWire(Page& page) const {
    if (wire_ == nullptr) {
        return;
    }
    const std::string batch = nextBatch(wire_->messages(), page.nextMessage, messagesInBatch);
    if (!batch.empty()) {
        page.sendWritten("wire", "messages", batch);
    }
}

void Audience::tellAll(const Json& message) {
    for (const auto& seat : seats_) {
        seat->page->send(message);
    }
}

void Audience::tell(unsigned page, const Json& message) {
    for (const auto& seat : seats_) {
        if (seat->number == page) {
            seat->page->send(message);
        }
    }
}

void Audience::clearLog() {
    tellAll(Json::object({{"type", "logCleared"}}));
}

}  // namespace workbench
