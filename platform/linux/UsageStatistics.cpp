// Usage records, as structured entries of the journal: "journalctl MESSAGE_ID=..." finds them, and no
// other place has them. Without a journal there are none.
#include <platform/usage_statistics.h>

#include "Journal.h"

namespace {

/// The kind of journal entry (sd-id128(3)); made once for usage records, and never to change.
constexpr const char* USAGE_RECORD_ID = "76e32ecc233c4a22bdc02c4d91f9214a";

constexpr int OK = 0;
constexpr int ERROR = -1;

/// Who reports; 0 until it has said so. The class has no place of its own to keep it.
int reporter = 0;

}  // namespace

CKPILogService::CKPILogService() = default;
CKPILogService::~CKPILogService() = default;

int CKPILogService::SetKPILogServiceconfInfo(KPI_APP_TYPE type) {
    reporter = type;
    return OK;
}

int CKPILogService::SendKPILog(KPI_LOG_TYPE type,
                               std::string first,
                               std::string second,
                               std::string third) {
    if (reporter == 0 || !machine::journalIsThere()) {
        return ERROR;
    }
    machine::report(machine::Priority::Info, "usage record " + std::to_string(type),
                    {{"MESSAGE_ID", USAGE_RECORD_ID},
                     {"PORTMELD_KPI_APP", std::to_string(reporter)},
                     {"PORTMELD_KPI_TYPE", std::to_string(type)},
                     {"PORTMELD_KPI_TEXT", std::move(first)},
                     {"PORTMELD_KPI_TEXT_2", std::move(second)},
                     {"PORTMELD_KPI_TEXT_3", std::move(third)}});
    return OK;
}
