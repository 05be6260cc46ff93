// Counting the numbers of MMIndexCounts.h, and finding the lowest free one by halving.
#include "MMIndexCounts.h"

#include <algorithm>

void CMMIndexCounts::Add(int nIndex) {
    ++m_nRecords;
    const auto place = m_vUsed.begin() + (m_Find(nIndex) - m_vUsed.cbegin());
    if (place != m_vUsed.end() && place->nIndex == nIndex) {
        ++place->nRecords;
    } else {
        m_vUsed.insert(place, {nIndex, 1});
    }
}

void CMMIndexCounts::Remove(int nIndex) {
    --m_nRecords;
    const auto place = m_vUsed.begin() + (m_Find(nIndex) - m_vUsed.cbegin());
    if (--place->nRecords == 0) {
        m_vUsed.erase(place);
    }
}

_stUsedIndexes CMMIndexCounts::All() const {
    _stUsedIndexes stAll;
    if (m_vUsed.empty()) {
        return stAll;
    }
    stAll.nCount = m_nRecords;
    stAll.nMax = std::max(0, m_vUsed.back().nIndex);
    if (const auto zero = m_Find(0); zero == m_vUsed.end() || zero->nIndex != 0) {
        return stAll;
    }
    // As long as none is left out, the number of an entry is as far from the first as the entry is.
    const auto first = m_Find(FIRST_NUMBER);
    const auto gap = std::partition_point(first, m_vUsed.end(), [first](const SUsed& stUsed) {
        return stUsed.nIndex - FIRST_NUMBER == &stUsed - &*first;
    });
    stAll.nLowestFree = FIRST_NUMBER + static_cast<int>(gap - first);
    return stAll;
}

_stUsedIndexes CMMIndexCounts::Without(int nIndex) const {
    _stUsedIndexes stOthers = All();
    --stOthers.nCount;
    const auto own = m_Find(nIndex);
    if (own->nRecords > 1) {
        return stOthers;
    }
    if (nIndex == 0 || nIndex >= FIRST_NUMBER) {
        stOthers.nLowestFree = std::min(stOthers.nLowestFree, nIndex);
    }
    if (own + 1 == m_vUsed.end()) {
        stOthers.nMax = own == m_vUsed.begin() ? 0 : std::max(0, (own - 1)->nIndex);
    }
    return stOthers;
}

/// Where a number stands, or would stand.
CMMIndexCounts::Used::const_iterator CMMIndexCounts::m_Find(int nIndex) const {
    return std::lower_bound(
        m_vUsed.begin(), m_vUsed.end(), nIndex,
        [](const SUsed& stUsed, int nWanted) { return stUsed.nIndex < nWanted; });
}
