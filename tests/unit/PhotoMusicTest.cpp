// The photo slide show's list of background music: its one instance, its items, its limits.
#include <stdexcept>

#include "MMPhotoBGM.h"
#include "TvTest.h"

namespace {

class PhotoMusicTest : public TvTest {
protected:
    void TearDown() override {
        CMMPhotoBGM::DestroyInstance();
        TvTest::TearDown();
    }

    static Texts item(int index) {
        std::string first;
        std::string second;
        std::string third;
        CMMPhotoBGM::GetInstance()->GetPlayListVecByIndex(index, first, second, third);
        return {first, second, third};
    }

    /// Reading this index fails, and leaves what it was to fill as it was.
    static void expectOutOfRange(int index) {
        std::string first = "kept 1";
        std::string second = "kept 2";
        std::string third = "kept 3";
        EXPECT_THROW(CMMPhotoBGM::GetInstance()->GetPlayListVecByIndex(index, first, second, third),
                     std::out_of_range)
            << index;
        EXPECT_EQ((Texts{first, second, third}), (Texts{"kept 1", "kept 2", "kept 3"}));
    }
};

TEST_F(PhotoMusicTest, TheFirstUseMakesAnEmptyListAndTheLogTellsNullBeforeAndNothingAfter) {
    CMMPhotoBGM* list = CMMPhotoBGM::GetInstance();
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(tv.journal().story(),
              (Texts{"I before m_pInstance=[(null)]", "I after m_pInstance=[]"}));
    const std::size_t mark = tv.journal().mark();
    EXPECT_EQ(CMMPhotoBGM::GetInstance(), list);
    EXPECT_EQ(tv.journal().story(mark),
              (Texts{"I before m_pInstance=[]", "I after m_pInstance=[]"}));
    EXPECT_EQ(list->GetPlayListSize(), 0);
    EXPECT_TRUE(tv.journal().logged(4, "m_vPlayListVec.size()=[0]"));
}

TEST_F(PhotoMusicTest, ThreeAppendsAreReadBackInAppendOrderAndIndex3Fails) {
    CMMPhotoBGM* list = CMMPhotoBGM::GetInstance();
    list->PushbackPlayListVec("a1", "a2", "a3");
    list->PushbackPlayListVec("", "", "");
    list->PushbackPlayListVec("a1", "a2",
                              "\xff"
                              "c3");
    EXPECT_EQ(item(0), (Texts{"a1", "a2", "a3"}));
    EXPECT_EQ(item(1), (Texts{"", "", ""}));
    EXPECT_EQ(item(2), (Texts{"a1", "a2",
                              "\xff"
                              "c3"}));
    EXPECT_EQ(list->GetPlayListSize(), 3);
    EXPECT_TRUE(tv.journal().logged(4, "m_vPlayListVec.size()=[3]"));
    expectOutOfRange(3);
    expectOutOfRange(2147483647);
}

TEST_F(PhotoMusicTest, Index0OfAnEmptyListAndIndexMinus1OfAnyListAreOutOfRange) {
    expectOutOfRange(0);
    expectOutOfRange(-1);
    CMMPhotoBGM::GetInstance()->PushbackPlayListVec("a", "b", "c");
    expectOutOfRange(-1);
    expectOutOfRange(-2147483647 - 1);
}

TEST_F(PhotoMusicTest, ClearingRemovesEveryItemAndTheListCanBeFilledAgain) {
    CMMPhotoBGM* list = CMMPhotoBGM::GetInstance();
    list->ClearPlayListVec();
    list->PushbackPlayListVec("old", "", "");
    list->ClearPlayListVec();
    EXPECT_EQ(list->GetPlayListSize(), 0);
    expectOutOfRange(0);
    list->PushbackPlayListVec("new", "", "");
    EXPECT_EQ(item(0), (Texts{"new", "", ""}));
}

TEST_F(PhotoMusicTest, AfterDestroyInstanceTheNextUseStartsWithAFreshEmptyList) {
    CMMPhotoBGM::GetInstance()->PushbackPlayListVec("a", "b", "c");
    CMMPhotoBGM::DestroyInstance();
    CMMPhotoBGM::DestroyInstance();
    const std::size_t mark = tv.journal().mark();
    EXPECT_EQ(CMMPhotoBGM::GetInstance()->GetPlayListSize(), 0);
    EXPECT_TRUE(tv.journal().logged(4, "before m_pInstance=[(null)]", mark));
}

}  // namespace
