// One connected page: messages to it and orders from it, and how much of the former it has not dealt with
// yet. What the messages say is not known here, but what this page was told of state, log and wire is.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include <libsoup/soup.h>

#include "BusConnection.h"
#include "Json.h"

namespace workbench {

class Page {
public:
    struct Hooks {
        /// An order, and the size of its message in bytes.
        std::function<void(Page&, const Json&, std::size_t)> ordered;
        std::function<void(Page&)> gone;
    };

    Page(SoupWebsocketConnection* connection, Hooks hooks);
    ~Page();
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    /// Send a message, an object without its number.
    void send(Json message);
    /// The same for a type and one member that is written already.
    void sendWritten(const char* type, const char* member, const std::string& written);

    /// Whether more may be sent that can as well be sent later.
    bool hasRoom() const;

    /// What was told so far: members of the state as they were, numbers of the next log line and bus
    /// message.
    std::map<std::string, std::string> told;
    std::uint64_t nextLogLine = 0;
    std::uint64_t nextMessage = 0;

private:
    void write(const std::string& text);
    void acknowledge(std::uint64_t number);
    static void onMessage(SoupWebsocketConnection*, int type, GBytes* bytes, gpointer data);
    static void onClosed(SoupWebsocketConnection*, gpointer data);

    std::unique_ptr<SoupWebsocketConnection, ObjectDeleter> connection_;
    Hooks hooks_;
    std::uint64_t next_ = 1;          // number of the next message
    std::deque<std::size_t> unseen_;  // sizes of the messages that were not acknowledged
    std::size_t unseenBytes_ = 0;
    gulong handlers_[2] = {};
};

}  // namespace workbench
