// The clients that orders speak as: connecting, calling, answers.
#include "BusPeers.h"

#include "Text.h"

namespace workbench {

namespace {

constexpr int highestClient = 999;

/// For methods that may be asked for a reply but never give one.
constexpr int patience = 5000;

Json failure(const GError* error) {
    const std::unique_ptr<char, decltype(&g_free)> name(g_dbus_error_get_remote_error(error),
                                                        g_free);
    const std::unique_ptr<GError, decltype(&g_error_free)> bare(g_error_copy(error), g_error_free);
    g_dbus_error_strip_remote_error(bare.get());
    return Json::object({{"error", name ? name.get() : "org.freedesktop.DBus.Error.NoReply"},
                         {"message", bare->message}});
}

}  // namespace

void BusPeers::call(const Json& with, Answer reply) {
    const int client = wholeNumber(with, "client");
    if (client < 0 || client > highestClient) {
        throw OrderError("clients have the numbers 0 to 999");
    }
    const std::string member = with["member"].text();
    const Json given = with["arguments"];
    Call call{member, interface_.arguments(member, given.isNull() ? Json::array() : given),
              with["noReply"].truth(!BusInterface::isAnswered(member)), std::move(reply)};
    const bool known = peers_.count(client) != 0;
    Peer& peer = peers_[client];
    if (peer.connection) {
        send(peer.connection.get(), std::move(call));
        return;
    }
    peer.waiting.push_back(std::move(call));
    if (!known) {
        connectToBus(address_, cancellable_,
                     [this, client](Connection connection, const std::string& error) {
                         connected(client, std::move(connection), error);
                     });
    }
}

void BusPeers::connected(int number, Connection connection, const std::string& error) {
    Peer& peer = peers_[number];
    peer.connection = std::move(connection);
    std::vector<Call> waiting = std::move(peer.waiting);
    peer.waiting.clear();
    GDBusConnection* const bus = peer.connection.get();
    if (bus == nullptr) {
        peers_.erase(number);
    }
    for (Call& call : waiting) {
        if (bus != nullptr) {
            send(bus, std::move(call));
        } else {
            call.reply({"no connection to the bus: " + error, {}});
        }
    }
}

void BusPeers::send(GDBusConnection* connection, Call call) {
    if (call.noReply) {
        const std::unique_ptr<GDBusMessage, ObjectDeleter> message(g_dbus_message_new_method_call(
            daemonBusName, daemonObject, daemonInterface, call.member.c_str()));
        g_dbus_message_set_body(message.get(), call.arguments.get());
        g_dbus_message_set_flags(message.get(), G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED);
        const bool sent = g_dbus_connection_send_message(connection, message.get(),
                                                         G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                                         nullptr) != FALSE;
        call.reply({sent ? "" : "the bus is gone", Json::object({{"sent", true}})});
        return;
    }
    callOnBus(connection, daemonBusName, daemonObject, daemonInterface, call.member.c_str(),
              call.arguments.get(), patience, cancellable_,
              [reply = std::move(call.reply)](GVariant* values, const GError* error) {
                  if (error != nullptr) {
                      reply({"", failure(error)});
                  } else {
                      reply({"", Json::object({{"reply", jsonOf(values)},
                                               {"signature", g_variant_get_type_string(values)}})});
                  }
              });
}

std::optional<int> BusPeers::numberOf(const std::string& busName) const {
    for (const auto& [number, peer] : peers_) {
        if (peer.connection &&
            busName == g_dbus_connection_get_unique_name(peer.connection.get())) {
            return number;
        }
    }
    return std::nullopt;
}

std::string BusPeers::nameOf(const std::string& busName) const {
    const std::optional<int> number = numberOf(busName);
    return number ? "client " + std::to_string(*number) : "";
}

}  // namespace workbench
