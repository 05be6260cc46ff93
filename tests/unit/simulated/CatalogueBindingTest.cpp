// The message catalogue in the menu language, with compiled catalogues of the test's own, on a machine
// that need have no locale of any language.
#include <libintl.h>

#include <clocale>
#include <cstdio>
#include <string>
#include <vector>

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <platform/i18n.h>

#include "CatalogueBinding.h"
#include "LanguageGuard.h"
#include "TvTest.h"

namespace {

constexpr const char* DOMAIN = "portmeld-catalogue-test";

TEST(CatalogueListTest, EndsWithEnglish) {
    EXPECT_EQ(platform::catalogueList("de_DE"), "de_DE:en");
    EXPECT_EQ(platform::catalogueList("zh_CN"), "zh_CN:en");
    EXPECT_EQ(platform::catalogueList("en_GB"), "en_GB:en");
    EXPECT_EQ(platform::catalogueList("en"), "en");
}

TEST(CatalogueListTest, LeavesTheCharacterSetOutAndKeepsTheModifier) {
    EXPECT_EQ(platform::catalogueList("de_DE.utf8"), "de_DE:en");
    EXPECT_EQ(platform::catalogueList("pt_BR.UTF-8"), "pt_BR:en");
    EXPECT_EQ(platform::catalogueList("sr_RS.UTF-8@latin"), "sr_RS@latin:en");
    EXPECT_EQ(platform::catalogueList("pt-BR"), "pt_BR:en");
}

TEST(CatalogueListTest, TakesWhatIsNoLanguageForUnset) {
    const std::vector<std::string> bad = {"",
                                          "C",
                                          "POSIX",
                                          "C.UTF-8",
                                          "../../etc",
                                          "/etc",
                                          "de/DE",
                                          "..",
                                          "de_DE\n",
                                          "de\x1b[31m",
                                          "de:fr",
                                          "de DE",
                                          "\xff\xfe",
                                          "1",
                                          "_",
                                          "@",
                                          "de@../x.y",
                                          std::string("de\0DE", 5),
                                          std::string(1'000'000, 'a')};
    for (const std::string& language : bad) {
        EXPECT_EQ(platform::catalogueList(language), "en") << language.substr(0, 40);
    }
}

class CatalogueBindingTest : public ::testing::Test {
protected:
    CatalogueBindingTest() {
        catalogue("en", "Play");
        catalogue("de", "Abspielen \xc3\xa4");
        catalogue("zh_CN", "\xe6\x92\xad\xe6\x94\xbe");
        catalogue("pt_BR", "Reproduzir");
    }

    void catalogue(const std::string& language, const std::string& text) const {
        const std::string po =
            folder.file(language + ".po",
                        "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n"
                        "msgid \"SID_PLAY\"\nmsgstr \"" +
                            text + "\"\n");
        const std::string mo =
            folder.folder("locale/" + language + "/LC_MESSAGES") + "/" + DOMAIN + ".mo";
        const char* arguments[] = {"msgfmt", "-o", mo.c_str(), po.c_str(), nullptr};
        g_autoptr(GSubprocess) process =
            g_subprocess_newv(arguments, G_SUBPROCESS_FLAGS_NONE, nullptr);
        ASSERT_TRUE(process != nullptr && g_subprocess_wait_check(process, nullptr, nullptr));
    }
    bool bind(const std::string& language) const {
        return platform::bindCatalogue(DOMAIN, (folder.path() + "/locale").c_str(), language,
                                       bindtextdomain);
    }
    std::string play() const { return dgettext(DOMAIN, "SID_PLAY"); }
    std::string playIn(const std::string& language) const {
        EXPECT_TRUE(bind(language)) << language;
        return play();
    }

    LanguageGuard guard;
    simulated::SimulatedTv tv;  // dgettext() belongs to it in this program
    TempFolder folder;
};

TEST_F(CatalogueBindingTest, AnswersInTheMenuLanguageAsUtf8) {
    EXPECT_EQ(playIn("de_DE"), "Abspielen \xc3\xa4");
    EXPECT_EQ(playIn("zh_CN.utf8"), "\xe6\x92\xad\xe6\x94\xbe");
    EXPECT_EQ(playIn("pt_BR"), "Reproduzir");
}

TEST_F(CatalogueBindingTest, ForgetsWhatWasLookedUpWhenTheLanguageChanges) {
    EXPECT_EQ(playIn("de_DE"), "Abspielen \xc3\xa4");
    EXPECT_EQ(playIn("pt_BR"), "Reproduzir");
    EXPECT_EQ(playIn("de_DE"), "Abspielen \xc3\xa4");
}

TEST_F(CatalogueBindingTest, FallsBackToEnglish) {
    EXPECT_EQ(playIn(""), "Play");
    EXPECT_EQ(playIn("xx_YY"), "Play");
    EXPECT_EQ(playIn("../../../de"), "Play");
    EXPECT_EQ(playIn("en_US"), "Play");
}

TEST_F(CatalogueBindingTest, WorksOnAProcessThatStartedInTheCLocale) {
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(playIn("de_DE"), "Abspielen \xc3\xa4");
}

TEST_F(CatalogueBindingTest, KeepsNumbersAsTheyAre) {
    EXPECT_TRUE(bind("de_DE"));
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    char text[16];
    std::snprintf(text, sizeof text, "%.2f", 1.5);
    EXPECT_STREQ(text, "1.50");
}

TEST_F(CatalogueBindingTest, FailsWithoutDomainOrFolder) {
    EXPECT_FALSE(platform::bindCatalogue(nullptr, "/", "de", bindtextdomain));
    EXPECT_FALSE(platform::bindCatalogue("", "/", "de", bindtextdomain));
    EXPECT_FALSE(platform::bindCatalogue(DOMAIN, nullptr, "de", bindtextdomain));
}

TEST_F(CatalogueBindingTest, IsDoneByThePlatformInTheLanguageOfTheSettings) {
    const std::string locale = folder.path() + "/locale";
    tv.settings().set("db/menu_widget/language", "de_DE");
    EXPECT_EQ(appcore_set_i18n(DOMAIN, locale.c_str()), 0);
    EXPECT_EQ(play(), "Abspielen \xc3\xa4");
    tv.settings().set("db/menu_widget/language", "pt_BR");
    EXPECT_EQ(play(), "Abspielen \xc3\xa4") << "the new language comes with the next binding";
    EXPECT_EQ(appcore_set_i18n(DOMAIN, locale.c_str()), 0);
    EXPECT_EQ(play(), "Reproduzir");
    tv.settings().set("db/menu_widget/language", 7);
    EXPECT_EQ(appcore_set_i18n(DOMAIN, locale.c_str()), 0);
    EXPECT_EQ(play(), "Play");
    EXPECT_EQ(tv.journal().count("bindtextdomain"), 0U) << "not the daemon's call";
    EXPECT_EQ(tv.journal().calls().front(),
              "appcore_set_i18n(\"" + std::string(DOMAIN) + "\", \"" + locale + "\")");
}

TEST_F(CatalogueBindingTest, IsSeenInTheJournalWhenTheDaemonCallsTheCLibrary) {
    EXPECT_STREQ(bindtextdomain(DOMAIN, "/nowhere"), "/nowhere");
    EXPECT_STREQ(dgettext(DOMAIN, "SID_NONE"), "SID_NONE");
    EXPECT_EQ(tv.journal().calls(),
              (Texts{"bindtextdomain(\"portmeld-catalogue-test\", \"/nowhere\")",
                     "dgettext(\"portmeld-catalogue-test\", \"SID_NONE\")"}));
}

}  // namespace
