// The functions of <platform/application.h>. What they do with a request lives beside this file.
#include <platform/application.h>

#include <memory>
#include <string>

#include <glib.h>

#include "BusNames.h"
#include "Journal.h"
#include "LaunchRequest.h"
#include "Launcher.h"

struct app_control_s {
    machine::LaunchRequest request;
};

namespace {

using machine::BusNames;

/// The daemon asks after its demo players in the same moment in which it makes its request: the watching
/// must have begun before, so it begins with the main loop.
[[maybe_unused]] const unsigned prepared = g_idle_add(
    [](void*) -> gboolean {
        machine::prepareLaunches();
        return G_SOURCE_REMOVE;
    },
    nullptr);

}  // namespace

int app_control_create(app_control_h* handle) {
    if (handle == nullptr) {
        return -1;
    }
    machine::prepareLaunches();
    *handle = std::make_unique<app_control_s>().release();
    return 0;
}

int app_control_destroy(app_control_h handle) {
    if (handle == nullptr) {
        return -1;
    }
    const std::unique_ptr<app_control_s> released(handle);
    return 0;
}

int app_control_set_app_id(app_control_h handle, const char* id) {
    if (handle == nullptr || id == nullptr) {
        return -1;
    }
    handle->request.applicationId = id;
    return 0;
}

int app_control_add_extra_data(app_control_h handle, const char* key, const char* value) {
    if (handle == nullptr || key == nullptr || value == nullptr) {
        return -1;
    }
    handle->request.set(key, value);
    return 0;
}

int app_control_send_launch_request(app_control_h handle, void* /*reply_cb*/, void* /*user_data*/) {
    if (handle == nullptr) {
        machine::report(machine::Priority::Warning,
                        "cannot launch anything yet: no launch request has been made");
        return -1;
    }
    return machine::launch(handle->request) ? 0 : -1;
}

int app_manager_is_running(const char* app_id, bool* running) {
    if (app_id == nullptr || running == nullptr) {
        return -1;
    }
    const BusNames::Owner owner = BusNames::get().ownerOf(app_id);
    if (owner == BusNames::Owner::Unknown) {
        return -1;
    }
    *running = owner == BusNames::Owner::Somebody;
    return 0;
}

int aul_app_is_running(const char* app_id) {
    bool running = false;
    return app_manager_is_running(app_id, &running) == 0 && running ? 1 : 0;
}
