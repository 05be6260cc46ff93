// Orders as lines of a scenario: one table says what follows each verb; reading and writing go by it.
#include "OrderLine.h"

#include <algorithm>
#include <filesystem>

#include <glib.h>

#include "Text.h"

namespace workbench {

namespace {

enum class Kind { Text, Path, Number, Truth, Setting };

struct Parameter {
    const char* name;
    Kind kind;
};

struct Verb {
    const char* name;
    std::vector<Parameter> must;  ///< in this order
    std::vector<Parameter> may;   ///< as name=value
};

const std::vector<Verb>& verbs() {
    static const std::vector<Verb> all = {
        {"plugFolder",
         {{"path", Kind::Path}},
         {{"title", Kind::Text}, {"fileSystem", Kind::Text}, {"mounted", Kind::Truth}}},
        {"plugSample", {{"id", Kind::Text}}, {}},
        {"plugCamera", {}, {{"title", Kind::Text}, {"serial", Kind::Text}}},
        {"mount", {{"port", Kind::Number}}, {}},
        {"pull", {{"port", Kind::Number}}, {{"busy", Kind::Truth}}},
        {"hub", {{"count", Kind::Number}}, {}},
        {"press", {{"button", Kind::Number}}, {}},
        {"hide", {}, {}},
        {"key", {{"name", Kind::Text}}, {}},
        {"standby", {}, {}},
        {"powerOff", {}, {}},
        {"wake", {}, {}},
        {"clock", {{"mode", Kind::Text}}, {{"factor", Kind::Number}}},
        {"step", {}, {}},
        {"setting", {{"key", Kind::Text}, {"value", Kind::Setting}}, {{"type", Kind::Text}}},
        {"context", {{"bits", Kind::Number}}, {}},
        {"companion", {{"running", Kind::Truth}}, {}},
        {"fault", {{"service", Kind::Text}, {"on", Kind::Truth}}, {}},
    };
    return all;
}

constexpr const char* callVerb = "call";

const Verb* verbOf(const std::string& name) {
    const auto found = std::find_if(verbs().begin(), verbs().end(),
                                    [&](const Verb& verb) { return verb.name == name; });
    return found == verbs().end() ? nullptr : &*found;
}

Json numberOf(const std::string& text) {
    const std::optional<int> number = wholeNumber(text);
    if (!number) {
        throw ScenarioError("\"" + printable(text) + "\" is no number of 32 bits");
    }
    return *number;
}

Json truthOf(const std::string& text) {
    if (text != "yes" && text != "no") {
        throw ScenarioError("\"" + printable(text) + "\" is neither yes nor no");
    }
    return text == "yes";
}

Json valueOf(const Parameter& parameter, const std::string& text, const std::string& folder) {
    switch (parameter.kind) {
        case Kind::Number:
            return numberOf(text);
        case Kind::Truth:
            return truthOf(text);
        case Kind::Path:
            return (std::filesystem::path(folder) / text).lexically_normal().string();
        case Kind::Text:
        case Kind::Setting:
            break;
    }
    return text;
}

std::string textOf(const Json& value) {
    if (value.isBool()) {
        return value.truth() ? "yes" : "no";
    }
    return value.isNumber() ? std::to_string(value.number()) : value.text();
}

/// The type that the value of a setting has, given or known.
std::string settingType(const Json& with) {
    const std::string key = with["key"].text();
    if (with["type"].isText()) {
        return with["type"].text();
    }
    return key == "shopMode" ? "bool" : key == "demoMode" ? "int" : "string";
}

void typeSetting(Json& with) {
    const std::string type = settingType(with);
    const std::string text = with["value"].text();
    if (type == "bool") {
        with.set("value", truthOf(text));
    } else if (type == "int") {
        with.set("value", numberOf(text));
    }
}

const Parameter* optionOf(const Verb& verb, const std::string& word) {
    for (const Parameter& option : verb.may) {
        if (word.rfind(std::string(option.name) + "=", 0) == 0) {
            return &option;
        }
    }
    return nullptr;
}

Order readCall(const std::vector<Word>& words, const BusInterface& interface) {
    if (words.size() < 3) {
        throw ScenarioError("call CLIENT MEMBER ARGUMENT...");
    }
    std::vector<std::string> values;
    for (std::size_t i = 3; i < words.size(); ++i) {
        values.push_back(words[i].text);
    }
    try {
        const Json arguments = interface.argumentsFromWords(words[2].text, values);
        static_cast<void>(interface.arguments(words[2].text, arguments));
        return {callVerb, Json::object({{"client", numberOf(words[1].text)},
                                        {"member", words[2].text},
                                        {"arguments", arguments}})};
    } catch (const OrderError& error) {
        throw ScenarioError(error.what());
    }
}

std::string callLine(const Json& with) {
    std::string line =
        std::string(callVerb) + " " + textOf(with["client"]) + " " + asWord(with["member"].text());
    const Json arguments = with["arguments"];
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        line += " " + asWord(textOf(arguments.at(i)));
    }
    return line;
}

}  // namespace

bool isStep(const std::string& name) {
    return name == callVerb || verbOf(name) != nullptr;
}

Order readOrder(const std::vector<Word>& words,
                const std::string& folder,
                const BusInterface& interface) {
    const std::string& name = words.front().text;
    if (name == callVerb) {
        return readCall(words, interface);
    }
    const Verb* const verb = verbOf(name);
    if (verb == nullptr) {
        throw ScenarioError("there is no step \"" + printable(name) + "\"");
    }
    Json with = Json::object();
    std::size_t next = 0;
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string& word = words[i].text;
        const Parameter* const option = words[i].isQuoted ? nullptr : optionOf(*verb, word);
        if (option != nullptr) {
            with.set(option->name, valueOf(*option, word.substr(word.find('=') + 1), folder));
        } else if (next < verb->must.size()) {
            const Parameter& parameter = verb->must[next++];
            with.set(parameter.name, valueOf(parameter, word, folder));
        } else {
            throw ScenarioError("\"" + printable(word) + "\" is too much for " + name);
        }
    }
    if (next < verb->must.size()) {
        throw ScenarioError(name + " lacks a " + verb->must[next].name);
    }
    if (name == "setting") {
        typeSetting(with);
    }
    return {name, with};
}

std::string orderLine(const Order& order) {
    if (order.name == callVerb) {
        return callLine(order.with);
    }
    const Verb* const verb = verbOf(order.name);
    std::string line = order.name;
    for (const Parameter& parameter : verb->must) {
        line += " " + asWord(textOf(order.with[parameter.name]));
    }
    for (const Parameter& option : verb->may) {
        const Json value = order.with[option.name];
        if (!value.isNull()) {
            line += " " + std::string(option.name) + "=" + asWord(textOf(value));
        }
    }
    return line;
}

}  // namespace workbench
