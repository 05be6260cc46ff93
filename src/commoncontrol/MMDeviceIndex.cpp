// Keeping the two tables of MMDeviceIndex.h in step.
#include "MMDeviceIndex.h"

namespace {

const std::string& ProductOf(CMMDeviceInfo* pRecord) {
    std::string* pProduct = nullptr;
    pRecord->GetProduct(&pProduct);
    return *pProduct;
}

}  // namespace

void CMMDeviceIndex::Add(CMMDeviceInfo* pRecord) {
    SEntry& stEntry = m_byKey[pRecord->GetDeviceKey()];
    stEntry.pRecord = pRecord;
    m_JoinProduct(stEntry);
}

void CMMDeviceIndex::Remove(CMMDeviceInfo* pRecord) {
    const auto found = m_byKey.find(pRecord->GetDeviceKey());
    if (found == m_byKey.end() || found->second.pRecord != pRecord) {
        return;
    }
    m_LeaveProduct(found->second);
    m_byKey.erase(found);
}

void CMMDeviceIndex::Changed(const std::string& strKey) {
    const auto found = m_byKey.find(strKey);
    if (found == m_byKey.end()) {
        return;
    }
    SEntry& stEntry = found->second;
    if (stEntry.nIndex != stEntry.pRecord->GetIndex() ||
        stEntry.pProduct->first != ProductOf(stEntry.pRecord)) {
        m_LeaveProduct(stEntry);
        m_JoinProduct(stEntry);
    }
}

void CMMDeviceIndex::Clear() {
    m_byKey.clear();
    m_byProduct.clear();
}

CMMDeviceInfo* CMMDeviceIndex::Find(const std::string& strKey) const {
    const auto found = m_byKey.find(strKey);
    return found != m_byKey.end() ? found->second.pRecord : nullptr;
}

_stUsedIndexes CMMDeviceIndex::UsedIndexes(const std::string& strProduct,
                                           const std::string& strKey) const {
    const auto product = m_byProduct.find(strProduct);
    if (product == m_byProduct.end()) {
        return {};
    }
    const auto own = m_byKey.find(strKey);
    const bool bCounted = own != m_byKey.end() && own->second.pProduct == &*product;
    return bCounted ? product->second.Without(own->second.nIndex) : product->second.All();
}

void CMMDeviceIndex::m_JoinProduct(SEntry& stEntry) {
    stEntry.pProduct = &*m_byProduct.try_emplace(ProductOf(stEntry.pRecord)).first;
    stEntry.nIndex = stEntry.pRecord->GetIndex();
    stEntry.pProduct->second.Add(stEntry.nIndex);
}

void CMMDeviceIndex::m_LeaveProduct(const SEntry& stEntry) {
    CMMIndexCounts& counts = stEntry.pProduct->second;
    counts.Remove(stEntry.nIndex);
    if (counts.IsEmpty()) {
        m_byProduct.erase(m_byProduct.find(stEntry.pProduct->first));
    }
}
