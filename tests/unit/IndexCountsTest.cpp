// The numbers that devices of one product have, and what is told of them, beside a plain look at each.
#include "MMIndexCounts.h"

#include <algorithm>
#include <limits>
#include <ostream>
#include <random>
#include <vector>

#include <gtest/gtest.h>

static bool operator==(const _stUsedIndexes& one, const _stUsedIndexes& other) {
    return one.nCount == other.nCount && one.nMax == other.nMax &&
           one.nLowestFree == other.nLowestFree;
}

static std::ostream& operator<<(std::ostream& out, const _stUsedIndexes& used) {
    return out << "{" << used.nCount << ", " << used.nMax << ", " << used.nLowestFree << "}";
}

namespace {

using Numbers = std::vector<int>;

/// The same by trying one number after the other.
_stUsedIndexes plainly(const Numbers& numbers) {
    const auto isUsed = [&](int number) {
        return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
    };
    _stUsedIndexes told;
    told.nCount = static_cast<int>(numbers.size());
    for (const int number : numbers) {
        told.nMax = std::max(told.nMax, number);
    }
    while (isUsed(told.nLowestFree)) {
        told.nLowestFree = told.nLowestFree == 0 ? 2 : told.nLowestFree + 1;
    }
    return told;
}

CMMIndexCounts counted(const Numbers& numbers) {
    CMMIndexCounts counts;
    for (const int number : numbers) {
        counts.Add(number);
    }
    return counts;
}

TEST(IndexCountsTest, OfNothingAre0) {
    const CMMIndexCounts counts;
    EXPECT_TRUE(counts.IsEmpty());
    EXPECT_EQ(counts.All(), (_stUsedIndexes{0, 0, 0}));
}

TEST(IndexCountsTest, TellTheLowestFreeOneOf0_2_3AndSoOn) {
    EXPECT_EQ(counted({0}).All(), (_stUsedIndexes{1, 0, 2}));
    EXPECT_EQ(counted({3, 0, 2}).All(), (_stUsedIndexes{3, 3, 4}));
    EXPECT_EQ(counted({0, 3}).All(), (_stUsedIndexes{2, 3, 2}));
    EXPECT_EQ(counted({2, 3}).All(), (_stUsedIndexes{2, 3, 0}));
    EXPECT_EQ(counted({0, 1}).All(), (_stUsedIndexes{2, 1, 2}));
}

TEST(IndexCountsTest, HoldNumbersThatAreNeverGiven) {
    constexpr int LEAST = std::numeric_limits<int>::min();
    constexpr int MOST = std::numeric_limits<int>::max();
    EXPECT_EQ(counted({LEAST, -1}).All(), (_stUsedIndexes{2, 0, 0}));
    EXPECT_EQ(counted({LEAST, 0, MOST}).All(), (_stUsedIndexes{3, MOST, 2}));
    EXPECT_EQ(counted({LEAST, 0, MOST}).Without(MOST), (_stUsedIndexes{2, 0, 2}));
    EXPECT_EQ(counted({LEAST, MOST}).Without(MOST), (_stUsedIndexes{1, 0, 0}));
}

TEST(IndexCountsTest, KeepANumberUntilTheLastThatHasItIsGone) {
    CMMIndexCounts counts = counted({0, 2, 2});
    EXPECT_EQ(counts.All(), (_stUsedIndexes{3, 2, 3}));
    EXPECT_EQ(counts.Without(2), (_stUsedIndexes{2, 2, 3}));
    counts.Remove(2);
    EXPECT_EQ(counts.All(), (_stUsedIndexes{2, 2, 3}));
    EXPECT_EQ(counts.Without(2), (_stUsedIndexes{1, 0, 2}));
    counts.Remove(2);
    counts.Remove(0);
    EXPECT_TRUE(counts.IsEmpty());
}

class RandomIndexCountsTest : public ::testing::TestWithParam<unsigned> {};

TEST_P(RandomIndexCountsTest, AreThoseOfAPlainLook) {
    std::mt19937 random(GetParam());
    // A narrow range brings gaps and numbers that several have, a wide one numbers that are far apart.
    const unsigned range = GetParam() % 2 == 0 ? 12 : 1'000;
    Numbers numbers;
    CMMIndexCounts counts;
    for (int step = 0; step < 600; ++step) {
        if (!numbers.empty() && random() % 5 < 2) {
            const auto gone = numbers.begin() + static_cast<long>(random() % numbers.size());
            counts.Remove(*gone);
            numbers.erase(gone);
        } else {
            // Every third as the next device would get it.
            const int number = random() % 3 == 0 ? plainly(numbers).nLowestFree
                                                 : static_cast<int>(random() % range) - 3;
            counts.Add(number);
            numbers.push_back(number);
        }
        ASSERT_EQ(counts.All(), plainly(numbers)) << "at step " << step;
        ASSERT_EQ(counts.IsEmpty(), numbers.empty());
        for (std::size_t i = 0; i < numbers.size(); i += 1 + numbers.size() / 20) {
            Numbers others = numbers;
            others.erase(others.begin() + static_cast<long>(i));
            ASSERT_EQ(counts.Without(numbers[i]), plainly(others))
                << "at step " << step << " without " << numbers[i];
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomIndexCountsTest, ::testing::Range(1U, 7U));

}  // namespace
