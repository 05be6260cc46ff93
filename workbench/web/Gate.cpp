// Who may come in: the token, and the headers that a browser sets and no page can.
#include "Gate.h"

#include <array>
#include <stdexcept>

#include <sys/random.h>

namespace workbench {

namespace {

constexpr std::size_t tokenBytes = 24;

/// Compares without telling by its duration how much was right.
bool isSame(const std::string& one, const std::string& other) {
    unsigned difference = one.size() == other.size() ? 0 : 1;
    for (std::size_t i = 0; i < one.size() && i < other.size(); ++i) {
        difference |= static_cast<unsigned>(one[i] != other[i]);
    }
    return difference == 0;
}

std::string newToken() {
    std::array<unsigned char, tokenBytes> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("the machine has no random numbers");
    }
    constexpr const char* digits = "0123456789abcdef";
    std::string token;
    for (const unsigned char byte : bytes) {
        token += digits[byte >> 4U];
        token += digits[byte & 0xFU];
    }
    return token;
}

/// The value of a cookie in a header; "" without one.
std::string cookieIn(const std::string& header, const std::string& name) {
    std::size_t begin = 0;
    while (begin < header.size()) {
        std::size_t end = header.find(';', begin);
        end = end == std::string::npos ? header.size() : end;
        begin = header.find_first_not_of(' ', begin);
        const std::string pair = header.substr(begin, end - std::min(begin, end));
        if (pair.compare(0, name.size() + 1, name + "=") == 0) {
            return pair.substr(name.size() + 1);
        }
        begin = end + 1;
    }
    return "";
}

}  // namespace

Gate::Gate() : token_(newToken()) {}

/// Cookies know no ports: each workbench has one of its own.
std::string Gate::cookieName() const {
    return "portmeld-workbench-" + std::to_string(port_);
}

std::string Gate::cookie() const {
    return cookieName() + "=" + token_ + "; Path=/; HttpOnly; SameSite=Strict";
}

std::string Gate::address() const {
    return "http://127.0.0.1:" + std::to_string(port_) + "/?token=" + token_;
}

bool Gate::hasToken(const Knock& knock) const {
    return isSame(knock.token, token_) ||
           (knock.token.empty() && isSame(cookieIn(knock.cookies, cookieName()), token_));
}

std::optional<Refusal> Gate::refusal(const Knock& knock) const {
    constexpr unsigned forbidden = 403;
    constexpr unsigned wrongMethod = 405;
    constexpr unsigned misdirected = 421;
    const std::string port = ":" + std::to_string(port_);
    if (knock.host != "127.0.0.1" + port && knock.host != "localhost" + port) {
        return Refusal{misdirected, "This is no server of that name."};
    }
    if (knock.origin && *knock.origin != "http://" + knock.host) {
        return Refusal{forbidden, "Other pages may not come in."};
    }
    if (!hasToken(knock)) {
        return Refusal{forbidden,
                       "The token is missing or wrong: open the address that portmeld-workbench "
                       "printed when it started."};
    }
    if (knock.method != "GET" && knock.method != "HEAD") {
        return Refusal{wrongMethod, "There is nothing here but to GET."};
    }
    return std::nullopt;
}

}  // namespace workbench
