// Gives the process its language back after a test: locale and the variable LANGUAGE.
#pragma once

#include <clocale>
#include <cstdlib>
#include <optional>
#include <string>

class LanguageGuard {
public:
    LanguageGuard() : locale_(std::setlocale(LC_ALL, nullptr)) {
        if (const char* language = std::getenv("LANGUAGE")) {
            language_ = language;
        }
    }
    ~LanguageGuard() {
        std::setlocale(LC_ALL, locale_.c_str());
        if (language_) {
            setenv("LANGUAGE", language_->c_str(), 1);
        } else {
            unsetenv("LANGUAGE");
        }
    }
    LanguageGuard(const LanguageGuard&) = delete;
    LanguageGuard& operator=(const LanguageGuard&) = delete;

private:
    std::string locale_;
    std::optional<std::string> language_;
};
