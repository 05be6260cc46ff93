// The services that are no more than a value or two: watchdog, TV context and usage statistics, and
// the timers of GLib, which the linker routes to the TV's clock.
#include <platform/tv_context.h>
#include <platform/usage_statistics.h>
#include <platform/watchdog.h>

#include "ContractCall.h"

using simulated::contractCall;
using simulated::journalTexts;
using simulated::SimulatedTv;

extern "C" {

// ---- watchdog

int smart_deadlock_register_watchdog_service(int period) {
    return contractCall(__func__, journalTexts(period), [&](SimulatedTv& tv) {
        tv.small().watchdogPeriod = period;
        return 0;
    });
}

int smart_deadlock_watchdog_notify(void) {
    return contractCall(__func__, "", [](SimulatedTv& tv) {
        ++tv.small().watchdogFeeds;
        return 0;
    });
}

// ---- TV context: the bracket around a query is kept by calling, whatever the
// calls answer

int tvcontext_init(void) {
    SimulatedTv& tv = SimulatedTv::current();
    ++tv.small().contextQueries;
    return tv.enter(__func__, "") ? simulated::CALL_FAILED : 0;
}

int tvcontext_query_state(int* state) {
    return contractCall(__func__, "", [&](SimulatedTv& tv) {
        if (tv.small().contextQueries <= 0) {
            tv.journal().breach("tvcontext_query_state: without tvcontext_init");
        }
        if (state == nullptr) {
            return simulated::CALL_FAILED;
        }
        *state = tv.small().contextState;
        return 0;
    });
}

int tvcontext_fini(void) {
    SimulatedTv& tv = SimulatedTv::current();
    const bool fails = tv.enter(__func__, "");
    if (tv.small().contextQueries <= 0) {
        tv.journal().breach("tvcontext_fini: without tvcontext_init");
        return simulated::CALL_FAILED;
    }
    --tv.small().contextQueries;
    return fails ? simulated::CALL_FAILED : 0;
}

// ---- timers

unsigned __wrap_g_timeout_add(unsigned interval, GSourceFunc function, void* data);

unsigned __wrap_g_timeout_add(unsigned interval, GSourceFunc function, void* data) {
    SimulatedTv& tv = SimulatedTv::current();
    (void)tv.enter("g_timeout_add", std::to_string(interval));
    return tv.clock().add(interval, function, data);
}

}  // extern "C"

// ---- usage statistics

CKPILogService::CKPILogService() {
    (void)SimulatedTv::current().enter("CKPILogService::CKPILogService", "");
}

CKPILogService::~CKPILogService() {
    (void)SimulatedTv::current().enter("CKPILogService::~CKPILogService", "");
}

int CKPILogService::SetKPILogServiceconfInfo(KPI_APP_TYPE type) {
    return contractCall("CKPILogService::SetKPILogServiceconfInfo", journalTexts(type),
                        [&](SimulatedTv& tv) {
                            tv.small().usageAppType = type;
                            return 0;
                        });
}

int CKPILogService::SendKPILog(KPI_LOG_TYPE type,
                               std::string first,
                               std::string second,
                               std::string third) {
    return contractCall("CKPILogService::SendKPILog", journalTexts(type, first, second, third),
                        [&](SimulatedTv& tv) {
                            tv.small().usage.push_back({type, first, second, third});
                            return 0;
                        });
}
