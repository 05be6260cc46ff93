// The process entry: start-up and shut-down in their order, the watchdog's feed and the menu
// language. Everything else happens in the device manager and the bus service, on the main loop run
// here.
#include <libintl.h>

#include <glib-object.h>

#include <platform/i18n.h>
#include <platform/settings.h>
#include <platform/watchdog.h>

#include "MMDeviceDbusServer.h"
#include "MMDeviceMgr.h"
#include "MMLogger.h"
#include "MMNames.h"
#include "MMPaths.h"

namespace {

/// The menu language has changed: texts shown from now on are in the new one.
void OnVconfKeyChangeCB(keynode_s* keynode, void*) noexcept {
    MM_DEBUG("");
    if (g_strcmp0(vconf_keynode_get_name(keynode), MMNames::KEY_LANGUAGE) != 0) {
        return;
    }
    MM_DEBUG("vconf key value : [%s]", MMText(vconf_keynode_get_str(keynode)));
    appcore_set_i18n(MMNames::SELF, MMPaths::LOCALE_DIR);
}

/// Tell the watchdog that the main loop is alive; stays armed.
gboolean _notify_callback(void*) noexcept {
    MM_DEBUG("");
    smart_deadlock_watchdog_notify();
    return TRUE;
}

}  // namespace

int main(int argc, char* argv[]) {
    MM_INFO("argc:%d,argv:%p", argc, static_cast<void*>(argv));
    appcore_set_i18n(MMNames::SELF, MMPaths::LOCALE_DIR);
    bindtextdomain(MMNames::SELF, MMPaths::LOCALE_DIR);
    vconf_notify_key_changed(MMNames::KEY_LANGUAGE, OnVconfKeyChangeCB, nullptr);
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    g_type_init();
    G_GNUC_END_IGNORE_DEPRECATIONS

    CMMDeviceMgr* pDeviceMgr = CMMDeviceMgr::GetInstance();
    if (pDeviceMgr == nullptr) {
        MM_WARN("new CMMDeviceMgr fail");
        vconf_ignore_key_changed(MMNames::KEY_LANGUAGE, OnVconfKeyChangeCB);
        return -1;
    }

    GMainLoop* pLoop = g_main_loop_new(nullptr, FALSE);
    smart_deadlock_register_watchdog_service(WATCHDOG_PERIOD_SECONDS);
    g_timeout_add(WATCHDOG_FEED_MILLISECONDS, _notify_callback, pLoop);
    CMMDeviceDbusServer* pDbusServer = CMMDeviceDbusServer::GetInstance();
    if (pDbusServer == nullptr) {
        MM_WARN("Create dbus fail");
    }
    g_main_loop_run(pLoop);  // nothing in the service quits it
    g_main_loop_unref(pLoop);

    if (pDbusServer != nullptr) {
        pDbusServer->Destroy();
        CMMDeviceDbusServer::DestroyInstance();
    }
    pDeviceMgr->Destroy();
    CMMDeviceMgr::DestroyInstance();
    vconf_ignore_key_changed(MMNames::KEY_LANGUAGE, OnVconfKeyChangeCB);
    return 0;
}
