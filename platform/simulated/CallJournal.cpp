// Keeping and reading the journal, ordering faults, noting breaches. Taking a log line apart lives
// in LogLine.cpp, the list of functions that can fail in Faultable.cpp.
#include "CallJournal.h"

#include <algorithm>

namespace simulated {

namespace {

bool isPropertyGetter(const std::string& function) {
    const auto begins = [&](const char* prefix) { return function.rfind(prefix, 0) == 0; };
    return (begins("usb_device_get_") && function != "usb_device_get_device_list") ||
           begins("usb_mass_storage_get_");
}

}  // namespace

template <class Take>
void CallJournal::each(std::size_t since, const Take& take) const {
    for (std::size_t i = std::max(since, dropped_) - dropped_; i < entries_.size(); ++i) {
        take(entries_[i]);
    }
}

std::vector<std::string> CallJournal::calls(std::size_t since) const {
    std::vector<std::string> texts;
    each(since, [&](const Entry& entry) {
        if (!entry.log && !isPropertyGetter(entry.function)) {
            texts.push_back(entry.text);
        }
    });
    return texts;
}

std::vector<std::string> CallJournal::allCalls(std::size_t since) const {
    std::vector<std::string> texts;
    each(since, [&](const Entry& entry) {
        if (!entry.log) {
            texts.push_back(entry.text);
        }
    });
    return texts;
}

std::size_t CallJournal::count(const std::string& function, std::size_t since) const {
    std::size_t times = 0;
    each(since, [&](const Entry& entry) {
        if (!entry.log && entry.function == function) {
            ++times;
        }
    });
    return times;
}

std::vector<LogLine> CallJournal::log(std::size_t since, int leastPriority) const {
    std::vector<LogLine> lines;
    each(since, [&](const Entry& entry) {
        if (entry.log && entry.log->priority >= leastPriority) {
            lines.push_back(*entry.log);
        }
    });
    return lines;
}

std::vector<std::string> CallJournal::messages(std::size_t since, int leastPriority) const {
    std::vector<std::string> texts;
    for (LogLine& line : log(since, leastPriority)) {
        texts.push_back(std::move(line.message));
    }
    return texts;
}

bool CallJournal::logged(int priority, const std::string& message, std::size_t since) const {
    bool found = false;
    each(since, [&](const Entry& entry) {
        found = found ||
                (entry.log && entry.log->priority == priority && entry.log->message == message);
    });
    return found;
}

std::vector<std::string> CallJournal::story(std::size_t since, int leastPriority) const {
    std::vector<std::string> texts;
    each(since, [&](const Entry& entry) {
        if (!entry.log) {
            if (!isPropertyGetter(entry.function)) {
                texts.push_back(entry.text);
            }
        } else if (entry.log->priority >= leastPriority) {
            const int priority = entry.log->priority;
            texts.push_back((priority == 3   ? "D "
                             : priority == 4 ? "I "
                                             : "W ") +
                            entry.log->message);
        }
    });
    return texts;
}

void CallJournal::setLimit(std::size_t limit) {
    limit_ = limit;
    trim();
}

void CallJournal::trim() {
    while (limit_ != 0 && entries_.size() > limit_) {
        entries_.pop_front();
        ++dropped_;
    }
}

void CallJournal::setLogSink(void (*sink)(const LogLine&, void*), void* data) {
    sink_ = sink;
    sinkData_ = data;
}

void CallJournal::order(const std::string& function, Fault fault, int times) {
    faults_[function] = {fault, times};
}

void CallJournal::clearFaults() {
    faults_.clear();
}

std::optional<Fault> CallJournal::fault(const std::string& function) {
    const auto ordered = faults_.find(function);
    if (ordered == faults_.end() || ordered->second.times == 0) {
        return std::nullopt;
    }
    if (ordered->second.times > 0) {
        --ordered->second.times;
    }
    return ordered->second.fault;
}

void CallJournal::called(const std::string& function, const std::string& arguments) {
    append({function, function + '(' + arguments + ')', std::nullopt});
}

void CallJournal::logLine(int priority, const char* tag, const std::string& text) {
    LogLine line = parseLogLine(priority, tag != nullptr ? tag : "", text);
    if (sink_ != nullptr) {
        sink_(line, sinkData_);
    }
    append({"__dlog_print", text, std::move(line)});
}

void CallJournal::breach(std::string text) {
    breaches_.push_back(std::move(text));
}

void CallJournal::append(Entry entry) {
    entries_.push_back(std::move(entry));
    trim();
}

}  // namespace simulated
