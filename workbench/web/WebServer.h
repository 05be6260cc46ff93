// The server of the page: HTTP on a loopback port, files, pictures, and the WebSocket that it hands to
// whoever talks to pages. Who may come in is decided by Gate.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <libsoup/soup.h>

#include "BusConnection.h"
#include "Gate.h"
#include "PageFiles.h"

namespace workbench {

class WebServer {
public:
    struct Hooks {
        /// A page has connected; lent.
        std::function<void(SoupWebsocketConnection*)> connected;
        /// Whether a path is that of a picture on screen.
        std::function<bool(const std::string&)> isPicture;
    };

    /// Listens on this port of the loopback address, or on one that is free for 0. Throws
    /// std::runtime_error.
    WebServer(unsigned port, PageFiles files, Hooks hooks);
    ~WebServer();
    WebServer(const WebServer&) = delete;
    WebServer& operator=(const WebServer&) = delete;

    /// The address to open.
    std::string address() const { return gate_.address(); }

private:
    void judge(SoupServerMessage* message, GHashTable* query) const;
    void serve(SoupServerMessage* message, const std::string& path, GHashTable* query) const;
    static void onEarly(SoupServer*,
                        SoupServerMessage* message,
                        const char* path,
                        GHashTable* query,
                        gpointer data);
    static void onRequest(SoupServer*,
                          SoupServerMessage* message,
                          const char* path,
                          GHashTable* query,
                          gpointer data);
    static void onWebSocket(SoupServer*,
                            SoupServerMessage*,
                            const char* path,
                            SoupWebsocketConnection* connection,
                            gpointer data);

    PageFiles files_;
    Hooks hooks_;
    Gate gate_;
    std::unique_ptr<SoupServer, ObjectDeleter> server_;
};

}  // namespace workbench
