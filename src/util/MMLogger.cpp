// The usage-log reporter: turns the service's kinds of event into the platform's. The logging
// macros need no code of their own.
#include "MMLogger.h"

#include <utility>

namespace {

/// How much higher a kind's number is in the platform's usage statistics.
constexpr int KPI_LOG_OFFSET =
    static_cast<int>(KPI_LOG_USB_NOTIFICATION_SHOWN) - static_cast<int>(USB_LOG_NOTIFICATION_SHOWN);

}  // namespace

CMMLogService* CMMLogService::m_pLoggerInstance = nullptr;

CMMLogService* CMMLogService::Get() {
    if (m_pLoggerInstance == nullptr) {
        m_pLoggerInstance = new CMMLogService();
        m_pLoggerInstance->Create();
    }
    return m_pLoggerInstance;
}

void CMMLogService::Create() {
    m_pKPILogService = std::make_unique<CKPILogService>();
    m_pKPILogService->SetKPILogServiceconfInfo(KPI_APP_USB);
}

void CMMLogService::Destroy() {
    m_pKPILogService.reset();
    delete m_pLoggerInstance;
    m_pLoggerInstance = nullptr;
}

void CMMLogService::OnSelectUSBCommand(USB_LOG_TYPE type, std::string text) {
    if (m_pKPILogService == nullptr) {
        MM_WARN("logger has not been create successfully");
        return;
    }
    if (type < USB_LOG_NOTIFICATION_SHOWN || type > USB_LOG_PLAY_CANCELLED) {
        return;
    }
    const auto kind = static_cast<KPI_LOG_TYPE>(type + KPI_LOG_OFFSET);
    m_pKPILogService->SendKPILog(kind, std::move(text), "", "");
}
