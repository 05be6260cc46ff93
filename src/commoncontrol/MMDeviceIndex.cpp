// Keeping the two tables of MMDeviceIndex.h in step.
#include "MMDeviceIndex.h"

#include <algorithm>

void CMMDeviceIndex::Add(CMMDeviceInfo* pRecord) {
    m_byKey.emplace(pRecord->GetDeviceKey(), pRecord);
    m_byProduct[pRecord->GetProduct()].push_back(pRecord);
}

void CMMDeviceIndex::Remove(CMMDeviceInfo* pRecord) {
    const auto found = m_byKey.find(pRecord->GetDeviceKey());
    if (found == m_byKey.end() || found->second != pRecord) {
        return;
    }
    m_byKey.erase(found);
    m_LeaveProduct(pRecord, pRecord->GetProduct());
}

void CMMDeviceIndex::ProductChanged(CMMDeviceInfo* pRecord, const std::string& strFormer) {
    m_LeaveProduct(pRecord, strFormer);
    m_byProduct[pRecord->GetProduct()].push_back(pRecord);
}

void CMMDeviceIndex::Clear() {
    m_byKey.clear();
    m_byProduct.clear();
}

CMMDeviceInfo* CMMDeviceIndex::Find(const std::string& strKey) const {
    const auto found = m_byKey.find(strKey);
    return found != m_byKey.end() ? found->second : nullptr;
}

const CMMDeviceIndex::Records& CMMDeviceIndex::OfProduct(const std::string& strProduct) const {
    static const Records none;
    const auto found = m_byProduct.find(strProduct);
    return found != m_byProduct.end() ? found->second : none;
}

void CMMDeviceIndex::m_LeaveProduct(CMMDeviceInfo* pRecord, const std::string& strProduct) {
    const auto product = m_byProduct.find(strProduct);
    Records& records = product->second;
    records.erase(std::find(records.begin(), records.end(), pRecord));
    if (records.empty()) {
        m_byProduct.erase(product);
    }
}
