// Who may come in: only a browser that was given the printed address, and only from the workbench's own
// page. What it may have is not known here.
#pragma once

#include <optional>
#include <string>

namespace workbench {

/// What a request shows at the gate.
struct Knock {
    std::string method;
    std::string host;                   ///< "" without one
    std::optional<std::string> origin;  ///< when it was sent
    std::string cookies;                ///< the header as it is
    std::string token;                  ///< of the query
};

struct Refusal {
    unsigned status;     ///< of HTTP
    const char* reason;  ///< one line
};

class Gate {
public:
    /// Makes up a token that nobody can guess. Throws std::runtime_error.
    Gate();

    /// The port that the server was given.
    void setPort(unsigned port) { port_ = port; }

    /// Why a request is refused; none when it may come in.
    std::optional<Refusal> refusal(const Knock& knock) const;

    /// The address to open.
    std::string address() const;
    /// What lets a browser in that came in by the address; for the header Set-Cookie.
    std::string cookie() const;

private:
    bool hasToken(const Knock& knock) const;
    std::string cookieName() const;
    std::string token_;
    unsigned port_ = 0;
};

}  // namespace workbench
