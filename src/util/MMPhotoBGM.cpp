// The play list of background music; see MMPhotoBGM.h.
#include "MMPhotoBGM.h"

#include <cstddef>
#include <utility>

#include "MMLogger.h"

namespace {

/// What the log shows of the list itself: whether it is there. The list is no text that "%s" could
/// print.
const char* Presence(const CMMPhotoBGM* pInstance) {
    return pInstance != nullptr ? "" : "(null)";
}

}  // namespace

CMMPhotoBGM* CMMPhotoBGM::m_pInstance = nullptr;

CMMPhotoBGM* CMMPhotoBGM::GetInstance() {
    MM_INFO("before m_pInstance=[%s]", Presence(m_pInstance));
    if (m_pInstance == nullptr) {
        m_pInstance = new CMMPhotoBGM();
    }
    MM_INFO("after m_pInstance=[%s]", Presence(m_pInstance));
    return m_pInstance;
}

void CMMPhotoBGM::DestroyInstance() {
    delete m_pInstance;
    m_pInstance = nullptr;
}

void CMMPhotoBGM::PushbackPlayListVec(std::string strItem1,
                                      std::string strItem2,
                                      std::string strItem3) {
    m_vPlayListVec.push_back({std::move(strItem1), std::move(strItem2), std::move(strItem3)});
}

void CMMPhotoBGM::GetPlayListVecByIndex(int nIndex,
                                        std::string& strItem1,
                                        std::string& strItem2,
                                        std::string& strItem3) {
    const _StMusicItemData& stItem = m_vPlayListVec.at(static_cast<std::size_t>(nIndex));
    strItem1 = stItem.strItem1;
    strItem2 = stItem.strItem2;
    strItem3 = stItem.strItem3;
}

int CMMPhotoBGM::GetPlayListSize() {
    const int nSize = static_cast<int>(m_vPlayListVec.size());
    MM_INFO("m_vPlayListVec.size()=[%d]", nSize);
    return nSize;
}

void CMMPhotoBGM::ClearPlayListVec() {
    m_vPlayListVec.clear();
}
