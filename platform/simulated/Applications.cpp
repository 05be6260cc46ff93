// Launch requests, and which applications run because of them.
#include "Applications.h"

#include <algorithm>

#include "SimulatedTv.h"

/// A launch request under construction. Destroyed ones keep their place until the TV goes.
struct app_control_s {
    std::string id;
    std::map<std::string, std::string> extraData;
    bool destroyed = false;
};

namespace simulated {

namespace {

constexpr int OK = 0;
constexpr int ERROR = -1;

}  // namespace

Applications::Applications(SimulatedTv& tv) : tv_(tv) {}

Applications::~Applications() = default;

void Applications::setRunning(const std::string& appId, bool running) {
    if (running) {
        running_.insert(appId);
        return;
    }
    running_.erase(appId);
    if (foreground_ == appId) {
        foreground_.clear();
    }
}

void Applications::endForeground() {
    const std::string appId = foreground_;
    setRunning(appId, false);
}

// ---- the contract

bool Applications::alive(const char* function, app_control_h handle) {
    if (handle == nullptr) {
        return false;
    }
    const auto found = std::find_if(handles_.begin(), handles_.end(),
                                    [&](const auto& known) { return known.get() == handle; });
    if (found == handles_.end() || (*found)->destroyed) {
        tv_.journal().breach(std::string(function) + ": the launch request " +
                             (found == handles_.end() ? "was never made" : "was destroyed before"));
        return false;
    }
    return true;
}

int Applications::create(app_control_h* out) {
    if (out == nullptr) {
        return ERROR;
    }
    handles_.push_back(std::make_unique<app_control_s>());
    *out = handles_.back().get();
    return OK;
}

int Applications::destroy(app_control_h handle) {
    if (!alive("app_control_destroy", handle)) {
        return ERROR;
    }
    *handle = {};
    handle->destroyed = true;
    return OK;
}

int Applications::setAppId(app_control_h handle, const char* id) {
    if (!alive("app_control_set_app_id", handle) || id == nullptr) {
        return ERROR;
    }
    handle->id = id;
    return OK;
}

int Applications::addExtraData(app_control_h handle, const char* key, const char* value) {
    if (!alive("app_control_add_extra_data", handle) || key == nullptr || value == nullptr) {
        return ERROR;
    }
    handle->extraData[key] = value;
    return OK;
}

int Applications::send(app_control_h handle, void* replyCallback, void* userData) {
    if (!alive("app_control_send_launch_request", handle)) {
        return ERROR;
    }
    if (replyCallback != nullptr || userData != nullptr) {
        tv_.journal().breach("app_control_send_launch_request: nobody can be sent a reply");
    }
    launches_.push_back({handle->id, handle->extraData});
    if (handle->id.empty()) {
        return ERROR;
    }
    running_.insert(handle->id);
    foreground_ = handle->id;
    return OK;
}

}  // namespace simulated
