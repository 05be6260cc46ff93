// The TV's applications: which run, and what each was launched with.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <platform/application.h>

namespace simulated {

class SimulatedTv;

/// A launch request as an application receives it.
struct Launch {
    std::string appId;
    std::map<std::string, std::string> extraData;  ///< everything that the request carried
};

class Applications {
public:
    explicit Applications(SimulatedTv& tv);
    ~Applications();
    Applications(const Applications&) = delete;
    Applications& operator=(const Applications&) = delete;

    /// Every launch request that was taken, oldest first, the ones with an empty id included.
    const std::vector<Launch>& launches() const { return launches_; }
    void clearLaunches() { launches_.clear(); }

    /// The application in front: launched last and not ended since; "" when the TV shows its
    /// programme.
    std::string foreground() const { return foreground_; }

    /// An application runs from its launch until it is ended; both can be set by hand.
    void setRunning(const std::string& appId, bool running);
    bool isRunning(const std::string& appId) const { return running_.count(appId) != 0; }
    /// Leave the application in front.
    void endForeground();

    // ---- the contract

    int create(app_control_h* out);
    int destroy(app_control_h handle);
    int setAppId(app_control_h handle, const char* id);
    int addExtraData(app_control_h handle, const char* key, const char* value);
    int send(app_control_h handle, void* replyCallback, void* userData);

private:
    /// Whether a handle can be used; notes a breach for one that was destroyed or never made.
    bool alive(const char* function, app_control_h handle);
    SimulatedTv& tv_;
    // Destroyed ones too, so that no new one has the address of one that a breach is about.
    std::vector<std::unique_ptr<app_control_s>> handles_;
    std::vector<Launch> launches_;
    std::set<std::string> running_;
    std::string foreground_;
};

}  // namespace simulated
