// What surrounds a process, as a test wants it while an object lives: environment variables, the time
// zone, a message catalogue with the test's own texts, a locale that writes numbers with a comma. Needs
// no locale to be installed.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "TvTest.h"

/// An environment variable, set or (nullptr) unset; as it was before when the object goes.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const char* value);
    ~EnvironmentVariable();
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    const char* name_;
    std::optional<std::string> earlier_;
};

/// The time zone, e.g. "UTC0" or "JST-9".
class TimeZone {
public:
    explicit TimeZone(const char* zone);
    ~TimeZone();
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    std::optional<EnvironmentVariable> variable_;
};

/// The locale of the process; as it was before when the object goes.
class KeptLocale {
public:
    KeptLocale();
    ~KeptLocale();
    KeptLocale(const KeptLocale&) = delete;
    KeptLocale& operator=(const KeptLocale&) = delete;

private:
    std::string earlier_;
};

/// The message catalogue of the text domain "portmeld".
class TestCatalogue {
public:
    TestCatalogue(const TempFolder& folder, std::map<std::string, std::string> texts);
    ~TestCatalogue();
    TestCatalogue(const TestCatalogue&) = delete;
    TestCatalogue& operator=(const TestCatalogue&) = delete;

private:
    KeptLocale locale_;
    EnvironmentVariable language_;
    std::string earlierFolder_;
};

/// A person's locale "comma", which writes 1,5. The process has not asked for it yet.
class CommaLocale {
public:
    explicit CommaLocale(const TempFolder& folder);

private:
    KeptLocale locale_;
    EnvironmentVariable path_;
    EnvironmentVariable all_;
    EnvironmentVariable numeric_;
};
