// What a test can ask of the log, the catalogue, the watchdog, power and the usage statistics.
#include <libintl.h>

#include <cstdio>
#include <ctime>
#include <map>
#include <stdexcept>

#include <platform/i18n.h>
#include <platform/log.h>
#include <platform/power.h>
#include <platform/usage_statistics.h>
#include <platform/watchdog.h>

#include "Power.h"
#include "Probe.h"

namespace {

/// Bytes from their hexadecimal digits: what cannot be said in UTF-8.
std::string bytes(const std::string& digits) {
    std::string result;
    for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
        result += static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16));
    }
    return result;
}

/// One line in the form that the daemon gives it.
int logLine(int priority, const std::string& message) {
    switch (priority) {
        case DLOG_PRIORITY_DEBUG:
            return __dlog_print(DLOG_BUFFER_SYSTEM, priority, "PORTMELD", "%s: %s(%d) > %s",
                                "Room.cpp", "m_Look", 12, message.c_str());
        case DLOG_PRIORITY_INFO:
            return __dlog_print(DLOG_BUFFER_SYSTEM, priority, "PORTMELD",
                                "%s: %s(%d) > \033[32m[INFO][%s:%d] %s\033[0m", "Room.cpp",
                                "operator()", 12, "operator()", 12, message.c_str());
        default:
            return __dlog_print(DLOG_BUFFER_SYSTEM, priority, "PORTMELD",
                                "%s: %s(%d) > \033[33m[WARN][%s:%d] %s\033[0m", "Room.cpp",
                                "m_Look", 12, "m_Look", 12, message.c_str());
    }
}

int told(const char* notice, int value) {
    JsonMembers members;
    printEvent("power",
               members.with("notice", text(std::string(notice))).with("value", number(value)));
    return 0;
}

int wokenUp(int reason, void*) {
    return told("wake-up", reason);
}

int poweredOff(int option, void*) {
    return told("power-off", option);
}

int stateChanged(int state, void*) {
    return told("state", state);
}

struct Notice {
    int (*subscribe)(device_power_callback_fn, void*);
    int (*unsubscribe)(device_power_callback_fn);
    device_power_callback_fn callback;
};

const Notice& notice(const std::string& name) {
    static const std::map<std::string, Notice> notices = {
        {"wake-up", {device_power_subscribe_wakeup, device_power_unsubscribe_wakeup, wokenUp}},
        {"power-off",
         {device_power_subscribe_poweroff, device_power_unsubscribe_poweroff, poweredOff}},
        {"state",
         {device_power_subscribe_state_changed, device_power_unsubscribe_state_changed,
          stateChanged}},
    };
    return notices.at(name);
}

}  // namespace

ProbeCommands smallServiceCommands() {
    return {
        {"log", 2, 2,  // PRIORITY MESSAGE -> what the function returned
         [](const Words& words) { return number(logLine(integer(words[1]), words[2])); }},
        {"log-bytes", 2, 2,  // PRIORITY HEXADECIMAL
         [](const Words& words) { return number(logLine(integer(words[1]), bytes(words[2]))); }},
        {"log-long", 3, 3,  // PRIORITY LETTER COUNT
         [](const Words& words) {
             const auto count = static_cast<std::size_t>(integer(words[3]));
             return number(logLine(integer(words[1]), std::string(count, words[2].at(0))));
         }},
        {"log-bare", 2, 2,  // PRIORITY TEXT: not in the daemon's form
         [](const Words& words) {
             return number(__dlog_print(DLOG_BUFFER_SYSTEM, integer(words[1]), nullptr, "%s",
                                        words[2].c_str()));
         }},
        {"log-without-memory", 1, 1,  // PRIORITY: with an argument that cannot be read
         [](const Words& words) {
             return number(__dlog_print(DLOG_BUFFER_SYSTEM, integer(words[1]), "PORTMELD", "%s",
                                        static_cast<const char*>(pointer(std::string("1")))));
         }},
        {"time-dropped-lines", 1, 1,  // COUNT -> seconds of the processor
         [](const Words& words) {
             const int count = integer(words[1]);
             const std::clock_t start = std::clock();
             for (int i = 0; i < count; ++i) {
                 (void)__dlog_print(DLOG_BUFFER_SYSTEM, DLOG_PRIORITY_DEBUG, "PORTMELD",
                                    "%s: %s(%d) > ", "Room.cpp", "m_Look", i);
             }
             const auto taken = static_cast<double>(std::clock() - start);
             return text(std::to_string(taken / CLOCKS_PER_SEC));
         }},
        {"bind-catalogue", 2, 2,  // DOMAIN FOLDER -> status
         [](const Words& words) {
             return number(appcore_set_i18n(words[1].c_str(), words[2].c_str()));
         }},
        {"translate", 2, 2,  // DOMAIN ID -> text
         [](const Words& words) {
             return text(std::string(dgettext(words[1].c_str(), words[2].c_str())));
         }},
        {"print-number", 0, 0,  // -> 1.5 with two decimals
         [](const Words&) {
             char buffer[16];
             std::snprintf(buffer, sizeof buffer, "%.2f", 1.5);
             return text(std::string(buffer));
         }},
        {"register-watchdog", 0, 0,  // -> status
         [](const Words&) {
             return number(smart_deadlock_register_watchdog_service(WATCHDOG_PERIOD_SECONDS));
         }},
        {"feed-watchdog", 0, 0,  // -> status
         [](const Words&) { return number(smart_deadlock_watchdog_notify()); }},
        {"subscribe-power", 1, 1,  // wake-up|power-off|state -> status; events "power"
         [](const Words& words) {
             const Notice& wanted = notice(words[1]);
             return number(wanted.subscribe(wanted.callback, nullptr));
         }},
        {"unsubscribe-power", 1, 1,  // wake-up|power-off|state -> status
         [](const Words& words) {
             const Notice& unwanted = notice(words[1]);
             return number(unwanted.unsubscribe(unwanted.callback));
         }},
        {"on-sleep", 0, 0,  // -> number; events "power" with the notice "machine" and 1 or 0
         [](const Words&) {
             return number(
                 machine::onSleep([](bool sleeps) { (void)told("machine", sleeps ? 1 : 0); }));
         }},
        {"forget-sleep", 1, 1,  // NUMBER
         [](const Words& words) {
             machine::forgetSleep(static_cast<unsigned>(integer(words[1])));
             return nothing();
         }},
        {"say-who-reports-usage", 0, 0,  // -> status
         [](const Words&) {
             return number(CKPILogService().SetKPILogServiceconfInfo(KPI_APP_USB));
         }},
        {"report-usage", 2, 2,  // TYPE TEXT -> status
         [](const Words& words) {
             return number(CKPILogService().SendKPILog(static_cast<KPI_LOG_TYPE>(integer(words[1])),
                                                       words[2], "", ""));
         }},
    };
}
