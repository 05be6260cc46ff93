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
#include "CatalogueList.h"
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

TEST(CatalogueListTest, KnowsLanguagesByTheirOtherCodes) {
    EXPECT_EQ(platform::catalogueList("no_NO"), "no_NO:nb:en");
    EXPECT_EQ(platform::catalogueList("nn_NO.UTF-8"), "nn_NO:nb:en");
    EXPECT_EQ(platform::catalogueList("iw_IL"), "iw_IL:he:en");
    EXPECT_EQ(platform::catalogueList("in_ID"), "in_ID:id:en");
    EXPECT_EQ(platform::catalogueList("tl_PH"), "tl_PH:fil:en");
    EXPECT_EQ(platform::catalogueList("mo"), "mo:ro:en");
    EXPECT_EQ(platform::catalogueList("prs_AF"), "prs_AF:fa:en");
    EXPECT_EQ(platform::catalogueList("sh_YU"), "sh_YU:sr@latin:en");
    EXPECT_EQ(platform::catalogueList("cnr"), "cnr:sr@latin:en");
    EXPECT_EQ(platform::catalogueList("yue_HK"), "yue_HK:zh_HK:en");
    EXPECT_EQ(platform::catalogueList("cmn"), "cmn:zh_CN:en");
}

TEST(CatalogueListTest, PutsTheSpanishOfAmericaBeforeThatOfSpain) {
    EXPECT_EQ(platform::catalogueList("es_AR"), "es_419:es_AR:en");
    EXPECT_EQ(platform::catalogueList("es-US"), "es_419:es_US:en");
    EXPECT_EQ(platform::catalogueList("es_419"), "es_419:en");
    EXPECT_EQ(platform::catalogueList("es_MX"), "es_MX:en");
    EXPECT_EQ(platform::catalogueList("es_ES"), "es_ES:en");
    EXPECT_EQ(platform::catalogueList("es"), "es:en");
    EXPECT_EQ(platform::catalogueList("pt_AR"), "pt_AR:en");
}

TEST(CatalogueListTest, ReadsChineseInTheScriptOfTheCountryOrOfTheName) {
    EXPECT_EQ(platform::catalogueList("zh"), "zh_CN:en");
    EXPECT_EQ(platform::catalogueList("zh_TW"), "zh_TW:en");
    EXPECT_EQ(platform::catalogueList("zh_HK"), "zh_HK:zh_TW:en");
    EXPECT_EQ(platform::catalogueList("zh_MO"), "zh_MO:zh_HK:zh_TW:en");
    EXPECT_EQ(platform::catalogueList("zh_SG"), "zh_SG:zh_CN:en");
    EXPECT_EQ(platform::catalogueList("zh_MY"), "zh_MY:zh_SG:zh_CN:en");
    EXPECT_EQ(platform::catalogueList("zh-Hans"), "zh_CN:en");
    EXPECT_EQ(platform::catalogueList("zh-Hans-SG"), "zh_SG:zh_CN:en");
    EXPECT_EQ(platform::catalogueList("zh-Hans-HK"), "zh_CN:en");
    EXPECT_EQ(platform::catalogueList("zh-Hans-TW"), "zh_CN:en");
    EXPECT_EQ(platform::catalogueList("zh-Hans-CN"), "zh_CN:en");
    EXPECT_EQ(platform::catalogueList("zh-Hant"), "zh_TW:en");
    EXPECT_EQ(platform::catalogueList("zh-Hant-TW"), "zh_TW:en");
    EXPECT_EQ(platform::catalogueList("zh-Hant-HK"), "zh_HK:zh_TW:en");
    EXPECT_EQ(platform::catalogueList("zh_Hant_MY"), "zh_TW:en");
}

TEST(CatalogueListTest, TurnsAScriptIntoWhatTheCLibraryKnows) {
    EXPECT_EQ(platform::catalogueList("sr-Latn"), "sr@latin:en");
    EXPECT_EQ(platform::catalogueList("sr_Latn_RS"), "sr_RS@latin:en");
    EXPECT_EQ(platform::catalogueList("sr_Cyrl_RS"), "sr_RS:en");
    EXPECT_EQ(platform::catalogueList("uz_Latn_UZ"), "uz_UZ:en");
    EXPECT_EQ(platform::catalogueList("ca_ES@valencia"), "ca_ES@valencia:en");
}

TEST(CatalogueListTest, FollowsTheEnvironmentAsTheCLibraryDoes) {
    using platform::catalogueList;
    using Languages = platform::EnvironmentLanguages;
    EXPECT_EQ(catalogueList(Languages{}), "en");
    EXPECT_EQ(catalogueList(Languages{"", "", "", "de_DE.UTF-8"}), "de_DE:en");
    EXPECT_EQ(catalogueList(Languages{"", "", "fr_FR", "de_DE"}), "fr_FR:en");
    EXPECT_EQ(catalogueList(Languages{"", "it_IT", "fr_FR", "de_DE"}), "it_IT:en");
    EXPECT_EQ(catalogueList(Languages{"no:sv:da", "", "", "nb_NO"}), "no:nb:sv:da:en");
    EXPECT_EQ(catalogueList(Languages{"fr", "", "", "C.UTF-8"}), "fr:en");
    for (const char* none : {"", "C", "POSIX"}) {
        EXPECT_EQ(catalogueList(Languages{"fr", "", "", none}), "en") << none;
    }
}

TEST(CatalogueListTest, LeavesOutWhatIsNoLanguageAndWhatStandsBehindEnglish) {
    using Languages = platform::EnvironmentLanguages;
    EXPECT_EQ(platform::catalogueList(Languages{"::../x:de::", "", "", "de_DE"}), "de:en");
    EXPECT_EQ(platform::catalogueList(Languages{"de:en:fr", "", "", "de_DE"}), "de:en");
    std::string endless = "de";
    for (int i = 0; i < 100'000; ++i) {
        endless += ":fr";
    }
    EXPECT_LT(platform::catalogueList(Languages{endless, "", "", "de_DE"}).size(), 100U);
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
        return platform::bindCatalogues(DOMAIN, (folder.path() + "/locale").c_str(),
                                        platform::catalogueList(language), bindtextdomain);
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
    EXPECT_FALSE(platform::bindCatalogues(nullptr, "/", "de", bindtextdomain));
    EXPECT_FALSE(platform::bindCatalogues("", "/", "de", bindtextdomain));
    EXPECT_FALSE(platform::bindCatalogues(DOMAIN, nullptr, "de", bindtextdomain));
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
