// The listed devices by what they are looked up by, beside the list, which has their order: with a thousand
// devices a walk for each look-up would cost more than everything else.
#pragma once

#include <string>
#include <unordered_map>

#include "MMDeviceInfo.h"
#include "MMIndexCounts.h"

/// Borrows the records that are listed. Whoever lists one adds it, tells when its product or its number
/// changes, and removes it when it goes; the key of a listed record does not change.
class CMMDeviceIndex {
public:
    /// Take in a record whose key no other has.
    void Add(CMMDeviceInfo* pRecord);

    /// Leave a record out; nothing when it is not in.
    void Remove(CMMDeviceInfo* pRecord);

    /// The record with this key may have another product or number now; nothing when there is none.
    void Changed(const std::string& strKey);

    void Clear();

    /// Number of records, and so of listed devices.
    int Count() const { return static_cast<int>(m_byKey.size()); }

    /// The record with this key; null when there is none.
    CMMDeviceInfo* Find(const std::string& strKey) const;

    /// The numbers that the records of a product have, all but the one with this key: that one is about
    /// to be numbered. As they were when last told of.
    _stUsedIndexes UsedIndexes(const std::string& strProduct, const std::string& strKey) const;

private:
    using Products = std::unordered_map<std::string, CMMIndexCounts>;

    /// A record, and under which product and number it is counted.
    struct SEntry {
        CMMDeviceInfo* pRecord;
        Products::value_type* pProduct;
        int nIndex;
    };

    void m_JoinProduct(SEntry& stEntry);
    void m_LeaveProduct(const SEntry& stEntry);

    std::unordered_map<std::string, SEntry> m_byKey;
    Products m_byProduct;  // those of at least one record
};
