// How a file's size, date and extension are written: the same everywhere, in every language.
#include <climits>
#include <clocale>
#include <cstdint>
#include <ctime>
#include <limits>

#include <platform/i18n.h>

#include "PopupTest.h"
#include "Surroundings.h"

namespace {

// ---- sizes

struct Size {
    int bytes;
    const char* text;
};

class SizeTextTest : public PopupTest, public ::testing::WithParamInterface<Size> {};

TEST_P(SizeTextTest, HasTwoDecimalsAndAUnitFromKilobytesOn) {
    int bytes = GetParam().bytes;
    EXPECT_EQ(access.sizeText(&bytes), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Sizes,
                         SizeTextTest,
                         ::testing::Values(Size{0, "0.00KB"},
                                           Size{1, "0.00KB"},
                                           Size{500, "0.49KB"},
                                           Size{1023, "1.00KB"},
                                           Size{1024, "1.00KB"},
                                           Size{1536, "1.50KB"},
                                           Size{1048575, "1024.00KB"},
                                           Size{1048576, "1.00MB"},
                                           Size{3 * 1048576, "3.00MB"},
                                           Size{1073741823, "1024.00MB"},
                                           Size{1073741824, "1.00GB"},
                                           Size{INT_MAX, "2.00GB"},
                                           Size{-1536, "-1.50KB"},
                                           Size{INT_MIN, "-2097152.00KB"}));

TEST_F(PopupTest, ASizeThatIsNotThereHasNoText) {
    EXPECT_EQ(access.sizeText(nullptr), "");
}

TEST_F(PopupTest, ASizeIsWrittenWithAPointInALanguageThatWritesACommaEverywhereElse) {
    const CommaLocale locale(temp);
    const EnvironmentVariable language("LANGUAGE", nullptr);
    ASSERT_STREQ(std::setlocale(LC_NUMERIC, ""), "comma");
    ASSERT_STREQ(localeconv()->decimal_point, ",");

    tv.settings().set("db/menu_widget/language", "de_DE");
    (void)appcore_set_i18n("portmeld", onTv("/usr/apps/portmeld/res/locale").c_str());
    int bytes = 1536;
    EXPECT_EQ(access.sizeText(&bytes), "1.50KB");
}

// ---- dates

struct Moment {
    const char* zone;
    std::time_t time;
    const char* text;
};

class DateTextTest : public PopupTest, public ::testing::WithParamInterface<Moment> {};

TEST_P(DateTextTest, IsThatOfTheTimeZone) {
    const TimeZone zone(GetParam().zone);
    std::time_t time = GetParam().time;
    EXPECT_EQ(access.timeText(&time), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(EpochAtAndEastOfUtc,
                         DateTextTest,
                         ::testing::Values(Moment{"UTC0", 0, "1970-01-01"},
                                           Moment{"CET-1", 0, "1970-01-01"},
                                           Moment{"JST-9", 0, "1970-01-01"}));
INSTANTIATE_TEST_SUITE_P(EpochWestOfUtc,
                         DateTextTest,
                         ::testing::Values(Moment{"EST5", 0, "1969-12-31"}));
INSTANTIATE_TEST_SUITE_P(AroundMidnight,
                         DateTextTest,
                         ::testing::Values(Moment{"UTC0", 86399, "1970-01-01"},
                                           Moment{"UTC0", 86400, "1970-01-02"},
                                           Moment{"JST-9", 86399, "1970-01-02"},
                                           Moment{"UTC0", -1, "1969-12-31"}));
INSTANTIATE_TEST_SUITE_P(LastOf32Bits,
                         DateTextTest,
                         ::testing::Values(Moment{"UTC0", INT_MAX, "2038-01-19"},
                                           Moment{"UTC0", INT_MIN, "1901-12-13"}));
INSTANTIATE_TEST_SUITE_P(LeapDay,
                         DateTextTest,
                         ::testing::Values(Moment{"UTC0", 951782400, "2000-02-29"}));
INSTANTIATE_TEST_SUITE_P(YearsOfFewerOrMoreThanFourDigits,
                         DateTextTest,
                         ::testing::Values(Moment{"UTC0", -62135596800, "0001-01-01"},
                                           Moment{"UTC0", 253402300800, "10000-01-01"}));
INSTANTIATE_TEST_SUITE_P(NoDateAtAll,
                         DateTextTest,
                         ::testing::Values(Moment{"UTC0", std::numeric_limits<std::time_t>::max(),
                                                  ""}));

TEST_F(PopupTest, ATimeThatIsNotThereHasNoText) {
    EXPECT_EQ(access.timeText(nullptr), "");
}

// ---- extensions

struct FileName {
    const char* name;
    const char* base;
    const char* extension;
};

class ExtensionTest : public PopupTest, public ::testing::WithParamInterface<FileName> {};

TEST_P(ExtensionTest, IsWhatFollowsTheLastDotInUpperCase) {
    std::string base = "earlier";
    std::string extension = "earlier";
    EXPECT_TRUE(access.fileName(GetParam().name, base, extension));
    EXPECT_EQ(base, GetParam().base);
    EXPECT_EQ(extension, GetParam().extension);
}

INSTANTIATE_TEST_SUITE_P(Ordinary,
                         ExtensionTest,
                         ::testing::Values(FileName{"clip.mkv", "clip", "MKV"},
                                           FileName{"Clip.Mp4", "Clip", "MP4"}));
INSTANTIATE_TEST_SUITE_P(WithoutADotIsTheWholeName,
                         ExtensionTest,
                         ::testing::Values(FileName{"readme", "readme", "README"},
                                           FileName{"", "", ""}));
INSTANTIATE_TEST_SUITE_P(SeveralDots,
                         ExtensionTest,
                         ::testing::Values(FileName{"a.tar.gz", "a.tar", "GZ"},
                                           FileName{"a..ts", "a.", "TS"}));
INSTANTIATE_TEST_SUITE_P(DotAtAnEnd,
                         ExtensionTest,
                         ::testing::Values(FileName{".hidden", "", "HIDDEN"},
                                           FileName{"name.", "name", ""},
                                           FileName{".", "", ""}));
INSTANTIATE_TEST_SUITE_P(BytesBeyondAscii,
                         ExtensionTest,
                         ::testing::Values(FileName{"a.é\xff", "a", "é\xff"},
                                           FileName{"é.ñx%s", "é", "ñX%S"}));

}  // namespace
