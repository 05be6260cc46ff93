// Whether what a scenario expects holds: searching, and comparing values. Each search answers with what
// speaks against it, "" for nothing.
#include "Checker.h"

#include <algorithm>
#include <map>

#include "Order.h"

namespace workbench {

namespace {

/// A text that holds JSON is looked into.
Json opened(const Json& value) {
    const std::string text = value.text();
    if (text.empty() || (text.front() != '{' && text.front() != '[')) {
        return value;
    }
    try {
        return Json::parsed(text);
    } catch (const JsonError&) {
        return value;
    }
}

/// The element with this index; null for what is no index.
Json elementOf(const Json& array, const std::string& name) {
    const std::optional<int> index = wholeNumber(name);
    return index && *index >= 0 ? array.at(static_cast<std::size_t>(*index)) : Json();
}

/// The value that a key such as "items.0.file_name" leads to.
Json valueAt(const Json& root, const std::string& key) {
    if (!root[key].isNull()) {
        return root[key];
    }
    Json value = root;
    std::size_t begin = 0;
    while (begin <= key.size()) {
        const std::size_t end = std::min(key.find('.', begin), key.size());
        const std::string name = key.substr(begin, end - begin);
        const Json inside = opened(value);
        value = inside.isArray() ? elementOf(inside, name) : inside[name];
        begin = end + 1;
    }
    return value;
}

std::string textOf(const Json& value) {
    if (value.isNull()) {
        return "none";
    }
    if (value.isBool()) {
        return value.truth() ? "yes" : "no";
    }
    return value.isText() ? value.text() : value.written();
}

/// The first condition that does not hold, with what is there instead; "" when all hold.
std::string against(const Json& root, const std::vector<Condition>& conditions) {
    for (const Condition& condition : conditions) {
        const std::string text = textOf(valueAt(root, condition.key));
        const bool holds = condition.isWhole ? text == condition.value
                                             : text.find(condition.value) != std::string::npos;
        if (!holds) {
            return condition.key + " is \"" + text + "\"";
        }
    }
    return "";
}

int priorityOf(const std::string& name) {
    static const std::map<std::string, int> priorities = {
        {"debug", 3}, {"info", 4}, {"warning", 5}};
    return priorities.at(name);
}

Json extraOf(const simulated::Launch& launch) {
    Json extra = Json::object();
    for (const auto& [key, value] : launch.extraData) {
        extra.set(key, value);
    }
    return extra;
}

}  // namespace

Checker::Checker(simulated::SimulatedTv& tv,
                 const TvState& state,
                 const LogBook& log,
                 std::function<const Wire*()> wire)
    : tv_(tv), state_(state), log_(log), wire_(std::move(wire)) {}

Checker::Place Checker::now() const {
    const Wire* const wire = wire_();
    return {tv_.applications().launches().size(), wire == nullptr ? 0 : wire->messages().end(),
            log_.lines().end()};
}

void Checker::begin() {
    expected_ = step_ = now();
    reply_ = {};
}

void Checker::beforeStep() {
    step_ = now();
}

std::string Checker::failure(const Expectation& expected) {
    if (expected.isWanted) {
        return found(expected);
    }
    const Place before = expected_;
    expected_ = step_;
    const bool holds = !found(expected).empty();
    expected_ = before;
    return holds ? "" : "there is one";
}

std::string Checker::found(const Expectation& expected) {
    using Subject = Expectation::Subject;
    switch (expected.subject) {
        case Subject::Popup:
            return checkPopup(expected);
        case Subject::Launch:
            return findLaunch(expected);
        case Subject::Device:
            return checkDevice(expected);
        case Subject::Signal:
            return findSignal(expected);
        case Subject::Reply:
            return checkReply(expected);
        case Subject::Log:
            return findLine(expected);
        case Subject::State:
            break;
    }
    return checkState(expected);
}

std::string Checker::findLaunch(const Expectation& expected) {
    const auto& launches = tv_.applications().launches();
    std::string reason = "nothing was launched";
    for (std::uint64_t i = expected_.launch; i < launches.size(); ++i) {
        const simulated::Launch& launch = launches[static_cast<std::size_t>(i)];
        if (!expected.what.empty() && launch.appId != expected.what) {
            reason = "launched was \"" + launch.appId + "\"";
            continue;
        }
        reason = against(extraOf(launch), expected.conditions);
        if (reason.empty()) {
            expected_.launch = i + 1;
            return "";
        }
    }
    return reason;
}

std::string Checker::findSignal(const Expectation& expected) {
    const Wire* const wire = wire_();
    std::string reason = "there was no such signal";
    if (wire == nullptr) {
        return "there is no bus";
    }
    const auto& messages = wire->messages();
    for (std::uint64_t i = std::max(expected_.message, messages.begin()); i < messages.end(); ++i) {
        const WireMessage& message = messages.at(i);
        if (message.kind != "signal" ||
            (!expected.what.empty() && message.member != expected.what) ||
            (expected.client && message.client != expected.client)) {
            continue;
        }
        reason = against(opened(message.arguments.at(0)), expected.conditions);
        if (reason.empty()) {
            expected_.message = i + 1;
            return "";
        }
    }
    return reason;
}

std::string Checker::findLine(const Expectation& expected) {
    const auto& lines = log_.lines();
    const int priority = priorityOf(expected.what);
    for (std::uint64_t i = std::max(expected_.line, lines.begin()); i < lines.end(); ++i) {
        const LoggedLine& line = lines.at(i);
        if (line.priority == priority &&
            line.message.find(expected.values.front()) != std::string::npos) {
            expected_.line = i + 1;
            return "";
        }
    }
    return "there was no such line";
}

std::string Checker::checkPopup(const Expectation& expected) const {
    const Json popup = state_.member("popup");
    if (popup.isNull()) {
        return "there is no pop-up";
    }
    const std::string kind = popup["kind"].text();
    if (!expected.what.empty() && kind != expected.what) {
        return "the pop-up is " + kind;
    }
    return against(popup, expected.conditions);
}

std::string Checker::checkDevice(const Expectation& expected) const {
    const Json devices = state_.member("devices");
    std::string reason = "it is not listed";
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const Json device = devices.at(i);
        if (device["deviceName"].text() == expected.what ||
            device["deviceKey"].text() == expected.what) {
            reason = against(device, expected.conditions);
            if (reason.empty()) {
                break;
            }
        }
    }
    return reason;
}

std::string Checker::checkReply(const Expectation& expected) const {
    if (reply_["error"].isText()) {
        return "the call failed: " + reply_["message"].text();
    }
    const Json values = reply_["reply"];
    if (values.isNull()) {
        return "there was no reply";
    }
    bool isSame = values.size() == expected.values.size();
    for (std::size_t i = 0; isSame && i < values.size(); ++i) {
        isSame = textOf(values.at(i)) == expected.values[i];
    }
    return isSame || expected.values.empty() ? "" : "the reply was " + values.written();
}

std::string Checker::checkState(const Expectation& expected) const {
    Json whole = Json::object();
    for (const Condition& condition : expected.conditions) {
        const std::string name = condition.key.substr(0, condition.key.find('.'));
        whole.set(name, state_.member(name));
    }
    return against(whole, expected.conditions);
}

}  // namespace workbench
