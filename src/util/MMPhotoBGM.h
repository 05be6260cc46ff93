// The background music that a photo slide show is to play: kept for the clients of the bus, read by
// nobody in the service. Lives in memory only.
#pragma once

#include <string>
#include <vector>

/// One item: three texts kept exactly as received. What they mean is up to the clients.
struct _StMusicItemData {
    std::string strItem1;
    std::string strItem2;
    std::string strItem3;
};

/// The play list. Process-wide, made on first use.
class CMMPhotoBGM {
public:
    CMMPhotoBGM(const CMMPhotoBGM&) = delete;
    CMMPhotoBGM& operator=(const CMMPhotoBGM&) = delete;

    /// The one list; an empty one is made when there is none.
    static CMMPhotoBGM* GetInstance();

    /// End the one list with its items, if there is one.
    static void DestroyInstance();

    /// Append an item. There is no limit and no check for duplicates.
    void PushbackPlayListVec(std::string strItem1, std::string strItem2, std::string strItem3);

    /// Copy the item at a zero-based index into the three texts. Throws std::out_of_range, the
    /// texts left as they were, for an index that is negative or not below the number of items.
    void GetPlayListVecByIndex(int nIndex,
                               std::string& strItem1,
                               std::string& strItem2,
                               std::string& strItem3);

    /// The number of items.
    int GetPlayListSize();

    /// Remove all items; the memory is kept for the next ones.
    void ClearPlayListVec();

private:
    CMMPhotoBGM() = default;
    ~CMMPhotoBGM() = default;

    [[maybe_unused]] int m_nReserved = 0;  // nothing uses it
    std::vector<_StMusicItemData> m_vPlayListVec;

    static CMMPhotoBGM* m_pInstance;
};
