// The server of the page: requests, their answers, and the headers that keep others out.
#include "WebServer.h"

#include <stdexcept>

namespace workbench {

namespace {

std::string queried(GHashTable* query, const char* name) {
    const auto* const value =
        query == nullptr ? nullptr : static_cast<const char*>(g_hash_table_lookup(query, name));
    return value == nullptr ? "" : value;
}

std::string header(SoupMessageHeaders* headers, const char* name) {
    const char* const value = soup_message_headers_get_one(headers, name);
    return value == nullptr ? "" : value;
}

void answer(SoupServerMessage* message, unsigned status, const std::string& line) {
    const std::string text = line + "\n";
    soup_server_message_set_status(message, status, nullptr);
    soup_server_message_set_response(message, "text/plain; charset=utf-8", SOUP_MEMORY_COPY,
                                     text.data(), text.size());
}

void answer(SoupServerMessage* message, const PageFile& file) {
    gsize size = 0;
    const auto* const data = static_cast<const char*>(g_bytes_get_data(file.bytes.get(), &size));
    soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
    soup_server_message_set_response(message, file.type.c_str(), SOUP_MEMORY_COPY, data, size);
}

/// What every answer says: nothing from elsewhere runs in the page, and nobody else may look at it.
void setHeaders(SoupServerMessage* message, const std::string& host) {
    SoupMessageHeaders* const headers = soup_server_message_get_response_headers(message);
    const std::string policy =
        "default-src 'self'; img-src 'self' data:; connect-src 'self' ws://" + host +
        "; base-uri 'none'; form-action 'none'; frame-ancestors 'none'; "
        "object-src 'none'";
    soup_message_headers_replace(headers, "Content-Security-Policy", policy.c_str());
    soup_message_headers_replace(headers, "X-Content-Type-Options", "nosniff");
    soup_message_headers_replace(headers, "Referrer-Policy", "no-referrer");
    soup_message_headers_replace(headers, "Cross-Origin-Resource-Policy", "same-origin");
    soup_message_headers_replace(headers, "Cache-Control", "no-store");
}

}  // namespace

WebServer::WebServer(unsigned port, PageFiles files, Hooks hooks)
    : files_(std::move(files)),
      hooks_(std::move(hooks)),
      server_(soup_server_new(nullptr, nullptr)) {
    GError* error = nullptr;
    if (soup_server_listen_local(server_.get(), port, SOUP_SERVER_LISTEN_IPV4_ONLY, &error) ==
        FALSE) {
        const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
        throw std::runtime_error(std::string("no server for the page: ") + error->message);
    }
    GSList* const addresses = soup_server_get_uris(server_.get());
    gate_.setPort(static_cast<unsigned>(g_uri_get_port(static_cast<GUri*>(addresses->data))));
    g_slist_free_full(addresses, [](gpointer uri) { g_uri_unref(static_cast<GUri*>(uri)); });

    for (const char* const path : {"/", "/ws"}) {
        soup_server_add_early_handler(server_.get(), path, onEarly, this, nullptr);
    }
    soup_server_add_handler(server_.get(), "/", onRequest, this, nullptr);
    soup_server_add_websocket_handler(server_.get(), "/ws", nullptr, nullptr, onWebSocket, this,
                                      nullptr);
}

WebServer::~WebServer() {
    soup_server_disconnect(server_.get());
}

void WebServer::judge(SoupServerMessage* message, GHashTable* query) const {
    SoupMessageHeaders* const headers = soup_server_message_get_request_headers(message);
    Knock knock{soup_server_message_get_method(message), header(headers, "Host"), std::nullopt,
                header(headers, "Cookie"), queried(query, "token")};
    if (soup_message_headers_get_one(headers, "Origin") != nullptr) {
        knock.origin = header(headers, "Origin");
    }
    if (const std::optional<Refusal> refusal = gate_.refusal(knock)) {
        setHeaders(message, "");
        answer(message, refusal->status, refusal->reason);
        return;
    }
    setHeaders(message, knock.host);
    if (!knock.token.empty()) {
        soup_message_headers_replace(soup_server_message_get_response_headers(message),
                                     "Set-Cookie", gate_.cookie().c_str());
    }
}

void WebServer::serve(SoupServerMessage* message,
                      const std::string& path,
                      GHashTable* query) const {
    std::optional<PageFile> file;
    if (path != "/icon") {
        file = files_.find(path);
    } else if (const std::string picture = queried(query, "path"); hooks_.isPicture(picture)) {
        file = pictureAt(picture);
    }
    if (file) {
        answer(message, *file);
    } else {
        answer(message, SOUP_STATUS_NOT_FOUND, "There is no such file.");
    }
}

void WebServer::onEarly(
    SoupServer*, SoupServerMessage* message, const char*, GHashTable* query, gpointer data) {
    static_cast<WebServer*>(data)->judge(message, query);
}

void WebServer::onRequest(
    SoupServer*, SoupServerMessage* message, const char* path, GHashTable* query, gpointer data) {
    static_cast<WebServer*>(data)->serve(message, path, query);
}

void WebServer::onWebSocket(SoupServer*,
                            SoupServerMessage*,
                            const char* path,
                            SoupWebsocketConnection* connection,
                            gpointer data) {
    if (g_strcmp0(path, "/ws") == 0) {
        static_cast<WebServer*>(data)->hooks_.connected(connection);
    } else {
        soup_websocket_connection_close(connection, SOUP_WEBSOCKET_CLOSE_POLICY_VIOLATION, nullptr);
    }
}

}  // namespace workbench
