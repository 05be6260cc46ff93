// The objects of Surroundings.h; catalogue and locale are written as the files that the C library reads.
#include "Surroundings.h"

#include <libintl.h>

#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <stdexcept>

namespace {

constexpr const char* TEXT_DOMAIN = "portmeld";

void append(std::string& bytes, std::uint32_t number) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>((number >> shift) & 0xFF);
    }
}

/// A compiled catalogue: header, table of ids, table of texts, then the strings themselves.
std::string compiled(const std::map<std::string, std::string>& texts) {
    constexpr std::uint32_t HEADER = 28;
    const auto count = static_cast<std::uint32_t>(texts.size());
    std::string ids;
    std::string translations;
    std::string strings;
    const auto add = [&](std::string& table, const std::string& text) {
        append(table, static_cast<std::uint32_t>(text.size()));
        append(table, HEADER + 16 * count + static_cast<std::uint32_t>(strings.size()));
        strings += text + '\0';
    };
    for (const auto& [id, text] : texts) {
        add(ids, id);
        add(translations, text);
    }
    std::string bytes;
    for (const std::uint32_t word :
         {0x950412deU, 0U, count, HEADER, HEADER + 8 * count, 0U, HEADER + 16 * count}) {
        append(bytes, word);
    }
    return bytes + ids + translations + strings;
}

/// The number format of a locale, compiled: kind of file, number of items, where each begins; then
/// decimal point, no thousands separator, no grouping, both separators as wide characters, character set.
std::string compiledCommaFormat() {
    std::string bytes;
    for (const std::uint32_t word : {0x20031114U, 6U, 0x20U, 0x22U, 0x23U, 0x24U, 0x28U, 0x2cU}) {
        append(bytes, word);
    }
    bytes += std::string(",\0\0\0", 4);
    append(bytes, ',');
    append(bytes, 0);
    return bytes + std::string("UTF-8\0", 6);
}

}  // namespace

EnvironmentVariable::EnvironmentVariable(const char* name, const char* value) : name_(name) {
    if (const char* earlier = std::getenv(name); earlier != nullptr) {
        earlier_ = earlier;
    }
    if (value != nullptr) {
        setenv(name, value, 1);
    } else {
        unsetenv(name);
    }
}

EnvironmentVariable::~EnvironmentVariable() {
    if (earlier_) {
        setenv(name_, earlier_->c_str(), 1);
    } else {
        unsetenv(name_);
    }
}

TimeZone::TimeZone(const char* zone) {
    variable_.emplace("TZ", zone);
    tzset();
}

TimeZone::~TimeZone() {
    variable_.reset();
    tzset();
}

KeptLocale::KeptLocale() : earlier_(std::setlocale(LC_ALL, nullptr)) {}

KeptLocale::~KeptLocale() {
    std::setlocale(LC_ALL, earlier_.c_str());
}

TestCatalogue::TestCatalogue(const TempFolder& folder, std::map<std::string, std::string> texts)
    : language_("LANGUAGE", "xx"), earlierFolder_(bindtextdomain(TEXT_DOMAIN, nullptr)) {
    texts[""] = "Content-Type: text/plain; charset=UTF-8\n";
    folder.file("catalogue/xx/LC_MESSAGES/portmeld.mo", compiled(texts));
    // The C library looks for catalogues in no locale called "C".
    std::setlocale(LC_CTYPE, "C.UTF-8");
    std::setlocale(LC_MESSAGES, "C.UTF-8");
    bindtextdomain(TEXT_DOMAIN, folder.folder("catalogue").c_str());
    const auto& [id, text] = *texts.rbegin();
    if (dgettext(TEXT_DOMAIN, id.c_str()) != text) {
        throw std::runtime_error("the catalogue of this test is not found");
    }
}

TestCatalogue::~TestCatalogue() {
    bindtextdomain(TEXT_DOMAIN, earlierFolder_.c_str());
}

CommaLocale::CommaLocale(const TempFolder& folder)
    : path_("LOCPATH", folder.folder("locales").c_str()),
      all_("LC_ALL", nullptr),
      numeric_("LC_NUMERIC", "comma") {
    folder.file("locales/comma/LC_NUMERIC", compiledCommaFormat());
}
