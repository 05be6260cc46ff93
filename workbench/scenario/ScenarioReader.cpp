// Reading a scenario: lines, waits and expectations. The lines that are orders are read in OrderLine.
#include <algorithm>
#include <cmath>
#include <map>

#include <glib.h>

#include "OrderLine.h"
#include "Scenario.h"
#include "Text.h"

namespace workbench {

namespace {

using Words = std::vector<Word>;
using Subject = Expectation::Subject;

bool isSign(const Word& word) {
    return !word.isQuoted && (word.text == "=" || word.text == "~");
}

bool signFollows(const Words& words, std::size_t i) {
    return i + 1 < words.size() && isSign(words[i + 1]);
}

Wait readWait(const Words& words) {
    char* end = nullptr;
    const std::string text = words.size() == 2 ? words[1].text : "";
    const double seconds = g_ascii_strtod(text.c_str(), &end);
    constexpr double day = 86400;
    if (text.empty() || *end != '\0' || !(seconds >= 0) || seconds > day) {
        throw ScenarioError("after SECONDS, at most a day");
    }
    constexpr double milliseconds = 1000;
    return {std::llround(seconds * milliseconds)};
}

/// The conditions from word `i` on, each of three words.
std::vector<Condition> readConditions(const Words& words, std::size_t i) {
    std::vector<Condition> conditions;
    for (; i < words.size(); i += 3) {
        if (!signFollows(words, i) || i + 2 >= words.size()) {
            throw ScenarioError("\"" + printable(words[i].text) +
                                "\" is no condition: KEY = VALUE or KEY ~ PART");
        }
        conditions.push_back({words[i].text, words[i + 1].text == "=", words[i + 2].text});
    }
    return conditions;
}

void readWhat(Expectation& expected, const Words& words, std::size_t& i) {
    if (i < words.size() && !signFollows(words, i) && words[i].text != "client") {
        expected.what = words[i++].text;
    }
}

void checkKind(Expectation& expected) {
    static const std::vector<std::string> kinds = {"", "browse", "play", "removal"};
    if (expected.what == "none" && expected.isWanted) {
        expected.isWanted = false;
        expected.what = "";
    } else if (std::find(kinds.begin(), kinds.end(), expected.what) == kinds.end()) {
        throw ScenarioError("a pop-up is browse, play, removal or none");
    }
}

void readClient(Expectation& expected, const Words& words, std::size_t& i) {
    if (i < words.size() && words[i].text == "client" && !signFollows(words, i)) {
        const std::string number = i + 1 < words.size() ? words[i + 1].text : "";
        expected.client = wholeNumber(number);
        if (!expected.client) {
            throw ScenarioError("client NUMBER");
        }
        i += 2;
    }
}

void readLog(Expectation& expected, const Words& words, std::size_t i) {
    std::string text;
    for (++i; i < words.size(); ++i) {
        text += (text.empty() ? "" : " ") + words[i].text;
    }
    if (text.empty() ||
        (expected.what != "debug" && expected.what != "info" && expected.what != "warning")) {
        throw ScenarioError("log debug|info|warning TEXT");
    }
    expected.values = {text};
}

Expectation readExpectation(const Words& words) {
    static const std::map<std::string, Subject> subjects = {
        {"popup", Subject::Popup},   {"launch", Subject::Launch}, {"device", Subject::Device},
        {"signal", Subject::Signal}, {"reply", Subject::Reply},   {"log", Subject::Log}};
    std::size_t i = 1;
    Expectation expected{Subject::State, true, "", std::nullopt, {}, {}};
    if (i < words.size() && words[i].text == "no" && !signFollows(words, i)) {
        expected.isWanted = false;
        ++i;
    }
    if (i >= words.size()) {
        throw ScenarioError("expect what?");
    }
    const auto subject = subjects.find(words[i].text);
    if (signFollows(words, i) || subject == subjects.end()) {
        expected.conditions = readConditions(words, i);
        return expected;
    }
    expected.subject = subject->second;
    ++i;
    switch (expected.subject) {
        case Subject::Reply:
            for (; i < words.size(); ++i) {
                expected.values.push_back(words[i].text);
            }
            return expected;
        case Subject::Log:
            expected.what = i < words.size() ? words[i].text : "";
            readLog(expected, words, i);
            return expected;
        case Subject::Device:
            readWhat(expected, words, i);
            if (expected.what.empty()) {
                throw ScenarioError("device NODE");
            }
            break;
        case Subject::Popup:
            readWhat(expected, words, i);
            checkKind(expected);
            break;
        case Subject::Signal:
            readWhat(expected, words, i);
            readClient(expected, words, i);
            break;
        case Subject::Launch:
        case Subject::State:
            readWhat(expected, words, i);
            break;
    }
    expected.conditions = readConditions(words, i);
    return expected;
}

Step readStep(int number,
              const std::string& line,
              const Words& words,
              const std::string& folder,
              const BusInterface& interface) {
    const std::string& verb = words.front().text;
    if (verb == "after") {
        return {number, line, readWait(words)};
    }
    if (verb == "expect") {
        return {number, line, readExpectation(words)};
    }
    return {number, line, readOrder(words, folder, interface)};
}

std::string stripped(const std::string& line) {
    const std::size_t begin = line.find_first_not_of(" \t\r");
    const std::size_t end = line.find_last_not_of(" \t\r");
    return begin == std::string::npos ? "" : line.substr(begin, end - begin + 1);
}

}  // namespace

std::vector<Step> readScenario(const std::string& text,
                               const std::string& folder,
                               const BusInterface& interface) {
    std::vector<Step> steps;
    int number = 0;
    std::size_t begin = 0;
    while (begin < text.size()) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const std::string line = stripped(text.substr(begin, end - begin));
        begin = end + 1;
        ++number;
        try {
            if (number == 1) {
                if (line != scenarioHeadline) {
                    throw ScenarioError(std::string("a scenario begins with \"") +
                                        scenarioHeadline + "\"");
                }
                continue;
            }
            const Words words = wordsOf(line);
            if (!words.empty()) {
                steps.push_back(readStep(number, line, words, folder, interface));
            }
        } catch (const ScenarioError& error) {
            throw ScenarioError("line " + std::to_string(number) + ": " + error.what());
        }
    }
    if (number == 0) {
        throw ScenarioError(std::string("line 1: a scenario begins with \"") + scenarioHeadline +
                            "\"");
    }
    return steps;
}

}  // namespace workbench
