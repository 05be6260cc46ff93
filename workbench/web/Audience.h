// All connected pages: what has changed is told to each, as far as it keeps up.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "LogBook.h"
#include "Page.h"
#include "TvState.h"
#include "Wire.h"

namespace workbench {

/// Numbers of which one is another when the state may be.
using Mark = std::array<std::uint64_t, 4>;

class Audience {
public:
    struct Hooks {
        std::function<Mark()> mark;
        std::function<Json()> hello;
        /// A page has given an order, in a message of so many bytes; it is only noted here. The page is
        /// known by its number.
        std::function<void(unsigned page, const Json& order, std::size_t bytes)> ordered;
        /// The first page has come.
        std::function<void()> first;
    };

    Audience(const TvState& state, const LogBook& log, Hooks hooks);

    /// The bus messages, once there are any.
    void setWire(const Wire* wire) { wire_ = wire; }

    /// A page has connected.
    void join(SoupWebsocketConnection* connection);

    /// Whether some page can be told something, and telling it.
    bool hasNews() const;
    void tellNews();

    /// Tell all pages, or one that may be gone, something at once.
    void tellAll(const Json& message);
    void tell(unsigned page, const Json& message);

    /// All pages forget the log.
    void clearLog();

private:
    struct Seat {
        unsigned number;
        bool isBehind;  // it had no room for a change
        bool isGone;
        std::unique_ptr<Page> page;
    };
    void tellState(Seat& seat, const std::vector<std::string>& fingerprints) const;
    void tellLog(Page& page) const;
    void tellWire(Page& page) const;
    bool lacksSomething(const Seat& seat) const;

    const TvState& state_;
    const LogBook& log_;
    Hooks hooks_;
    const Wire* wire_ = nullptr;
    std::vector<std::unique_ptr<Seat>> seats_;
    Mark toldMark_{};
    unsigned joined_ = 0;
};

}  // namespace workbench
