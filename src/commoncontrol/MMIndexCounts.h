// The numbers that the devices of one product have, kept so that the lowest free one is found without
// looking at all of them: a thousand sticks that are all alike are a thousand times this question.
#pragma once

#include <vector>

/// Numbers in use, as far as the choice of another depends on them.
struct _stUsedIndexes {
    int nCount = 0;       ///< records that have one
    int nMax = 0;         ///< the highest; 0 at least
    int nLowestFree = 0;  ///< the first of 0, 2, 3, 4, ... that no record has
};

/// How many records have which number. A number may be had by several, and may be any.
class CMMIndexCounts {
public:
    /// 1 is never given: the first device of a product has no number, the second is its number 2.
    static constexpr int FIRST_NUMBER = 2;

    void Add(int nIndex);

    /// Take back one Add() of this number.
    void Remove(int nIndex);

    bool IsEmpty() const { return m_vUsed.empty(); }

    _stUsedIndexes All() const;

    /// The same without one of the records that have this number; there is one.
    _stUsedIndexes Without(int nIndex) const;

private:
    struct SUsed {
        int nIndex;
        int nRecords;
    };
    using Used = std::vector<SUsed>;

    Used::const_iterator m_Find(int nIndex) const;

    Used m_vUsed;  // by rising number, each once
    int m_nRecords = 0;
};
