// The listed devices by what they are looked up by, beside the list, which has their order: with a thousand
// devices a walk for each look-up would cost more than everything else.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "MMDeviceInfo.h"

/// Borrows the records that are listed. Whoever lists one adds it, and removes it when it goes; the key of
/// a listed record does not change.
class CMMDeviceIndex {
public:
    using Records = std::vector<CMMDeviceInfo*>;

    /// Take in a record whose key no other has.
    void Add(CMMDeviceInfo* pRecord);

    /// Leave a record out; nothing when it is not in.
    void Remove(CMMDeviceInfo* pRecord);

    /// A record that is in may have another product now.
    void ProductChanged(CMMDeviceInfo* pRecord, const std::string& strFormer);

    void Clear();

    /// Number of records, and so of listed devices.
    int Count() const { return static_cast<int>(m_byKey.size()); }

    /// The record with this key; null when there is none.
    CMMDeviceInfo* Find(const std::string& strKey) const;

    /// The records of a product, in no order. Valid until the next change.
    const Records& OfProduct(const std::string& strProduct) const;

private:
    void m_LeaveProduct(CMMDeviceInfo* pRecord, const std::string& strProduct);

    std::unordered_map<std::string, CMMDeviceInfo*> m_byKey;
    std::unordered_map<std::string, Records> m_byProduct;
};
