// One connected page: numbering, acknowledging, the socket.
#include "Page.h"

#include <algorithm>

namespace workbench {

namespace {

constexpr std::size_t mostUnseen = 256;
constexpr std::size_t mostUnseenBytes = 1U << 20U;

/// Answers cannot be held back; a page that gives orders but never acknowledges is let go.
constexpr std::size_t tooManyUnseen = 10000;
constexpr std::size_t tooManyUnseenBytes = 8U << 20U;

constexpr guint64 longestOrder = 1U << 20U;

}  // namespace

Page::Page(SoupWebsocketConnection* connection, Hooks hooks)
    : connection_(static_cast<SoupWebsocketConnection*>(g_object_ref(connection))),
      hooks_(std::move(hooks)) {
    soup_websocket_connection_set_max_incoming_payload_size(connection, longestOrder);
    handlers_[0] = g_signal_connect(connection, "message", G_CALLBACK(onMessage), this);
    handlers_[1] = g_signal_connect(connection, "closed", G_CALLBACK(onClosed), this);
}

Page::~Page() {
    for (const gulong handler : handlers_) {
        g_signal_handler_disconnect(connection_.get(), handler);
    }
    if (soup_websocket_connection_get_state(connection_.get()) == SOUP_WEBSOCKET_STATE_OPEN) {
        soup_websocket_connection_close(connection_.get(), SOUP_WEBSOCKET_CLOSE_GOING_AWAY,
                                        nullptr);
    }
}

bool Page::hasRoom() const {
    return unseen_.size() < mostUnseen && unseenBytes_ < mostUnseenBytes;
}

void Page::send(Json message) {
    message.set("seq", next_);
    write(message.written());
}

void Page::sendWritten(const char* type, const char* member, const std::string& written) {
    write(std::string(R"({"type":")") + type + R"(","seq":)" + std::to_string(next_) + ",\"" +
          member + "\":" + written + "}");
}

void Page::write(const std::string& text) {
    if (soup_websocket_connection_get_state(connection_.get()) != SOUP_WEBSOCKET_STATE_OPEN) {
        return;
    }
    ++next_;
    unseen_.push_back(text.size());
    unseenBytes_ += text.size();
    if (unseen_.size() > tooManyUnseen || unseenBytes_ > tooManyUnseenBytes) {
        soup_websocket_connection_close(connection_.get(), SOUP_WEBSOCKET_CLOSE_POLICY_VIOLATION,
                                        "nothing was acknowledged");
        return;
    }
    soup_websocket_connection_send_text(connection_.get(), text.c_str());
}

void Page::acknowledge(std::uint64_t number) {
    while (!unseen_.empty() && next_ - unseen_.size() <= number) {
        unseenBytes_ -= unseen_.front();
        unseen_.pop_front();
    }
}

void Page::onMessage(SoupWebsocketConnection*, int, GBytes* bytes, gpointer data) {
    Page& self = *static_cast<Page*>(data);
    gsize size = 0;
    const auto* const text = static_cast<const char*>(g_bytes_get_data(bytes, &size));
    Json order;
    try {
        order = Json::parsed(std::string(text, size));
    } catch (const JsonError& error) {
        self.send(Json::object({{"type", "failed"},
                                {"id", Json()},
                                {"error", std::string("no JSON: ") + error.what()}}));
        return;
    }
    if (order["do"].text() == "ack") {
        const std::int64_t number = order["with"]["seq"].number();
        self.acknowledge(static_cast<std::uint64_t>(std::max<std::int64_t>(number, 0)));
    } else {
        self.hooks_.ordered(self, order, size);
    }
}

void Page::onClosed(SoupWebsocketConnection*, gpointer data) {
    Page& self = *static_cast<Page*>(data);
    self.hooks_.gone(self);
}

}  // namespace workbench
