// The languages that the pop-ups can have: finding the catalogues, and the names.
#include "Languages.h"

#include <filesystem>
#include <map>
#include <system_error>

#include "TvFacts.h"

namespace fs = std::filesystem;

namespace workbench {

namespace {

std::string nameOf(const std::string& code) {
    static const std::map<std::string, const char*> names = {
        {"af", "Afrikaans"},
        {"am", "አማርኛ"},
        {"ar", "العربية"},
        {"az", "Azərbaycanca"},
        {"be", "Беларуская"},
        {"bg", "Български"},
        {"bn", "বাংলা"},
        {"bs", "Bosanski"},
        {"ca", "Català"},
        {"cs", "Čeština"},
        {"da", "Dansk"},
        {"de", "Deutsch"},
        {"el", "Ελληνικά"},
        {"en", "English"},
        {"es", "Español"},
        {"es_419", "Español (Latinoamérica)"},
        {"es_MX", "Español (México)"},
        {"et", "Eesti"},
        {"eu", "Euskara"},
        {"fa", "فارسی"},
        {"fi", "Suomi"},
        {"fil", "Filipino"},
        {"fr", "Français"},
        {"fr_CA", "Français (Canada)"},
        {"gl", "Galego"},
        {"he", "עברית"},
        {"hi", "हिन्दी"},
        {"hr", "Hrvatski"},
        {"hu", "Magyar"},
        {"hy", "Հայերեն"},
        {"id", "Bahasa Indonesia"},
        {"is", "Íslenska"},
        {"it", "Italiano"},
        {"ja", "日本語"},
        {"ka", "ქართული"},
        {"kk", "Қазақша"},
        {"ko", "한국어"},
        {"lt", "Lietuvių"},
        {"lv", "Latviešu"},
        {"mk", "Македонски"},
        {"mr", "मराठी"},
        {"ms", "Bahasa Melayu"},
        {"nb", "Norsk bokmål"},
        {"nl", "Nederlands"},
        {"pl", "Polski"},
        {"pt", "Português"},
        {"pt_BR", "Português (Brasil)"},
        {"ro", "Română"},
        {"ru", "Русский"},
        {"sk", "Slovenčina"},
        {"sl", "Slovenščina"},
        {"sq", "Shqip"},
        {"sr", "Српски"},
        {"sr@latin", "Srpski"},
        {"sv", "Svenska"},
        {"sw", "Kiswahili"},
        {"ta", "தமிழ்"},
        {"te", "తెలుగు"},
        {"th", "ไทย"},
        {"tr", "Türkçe"},
        {"uk", "Українська"},
        {"ur", "اردو"},
        {"uz", "Oʻzbekcha"},
        {"vi", "Tiếng Việt"},
        {"zh_CN", "简体中文"},
        {"zh_HK", "繁體中文（香港）"},
        {"zh_SG", "简体中文（新加坡）"},
        {"zh_TW", "繁體中文（台灣）"},
    };
    const auto known = names.find(code);
    return known == names.end() ? code : known->second;
}

}  // namespace

Json languagesIn(const std::string& catalogues) {
    std::map<std::string, std::string> codes;  // by name
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(catalogues, error)) {
        if (fs::exists(entry.path() / "LC_MESSAGES" / "portmeld.mo")) {
            const std::string code = entry.path().filename();
            codes[nameOf(code)] = code;
        }
    }
    Json languages = Json::array();
    for (const auto& [name, code] : codes) {
        languages.add(Json::object({{"code", code}, {"name", name}, {"rtl", isRightToLeft(code)}}));
    }
    return languages;
}

}  // namespace workbench
