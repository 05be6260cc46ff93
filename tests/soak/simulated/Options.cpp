// Reading the command line.
#include "Options.h"

#include <algorithm>
#include <charconv>
#include <sstream>
#include <stdexcept>

namespace soak {

namespace {

std::uint64_t number(const std::string& text) {
    std::uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) {
        throw std::invalid_argument("'" + text + "' is no number");
    }
    return value;
}

/// "3,7,12-20"
std::set<std::uint64_t> numbers(const std::string& text) {
    std::set<std::uint64_t> all;
    std::istringstream parts(text);
    for (std::string part; std::getline(parts, part, ',');) {
        const std::size_t dash = part.find('-');
        const std::uint64_t first = number(part.substr(0, dash));
        const std::uint64_t last =
            dash == std::string::npos ? first : number(part.substr(dash + 1));
        for (std::uint64_t each = first; each <= last; ++each) {
            all.insert(each);
        }
    }
    return all;
}

}  // namespace

Options readOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        const std::string value = argv[i + 1];
        if (name == "--seed") {
            options.seed = number(value);
        } else if (name == "--cycles") {
            options.cycles = static_cast<long>(number(value));
        } else if (name == "--steps") {
            options.steps = number(value);
        } else if (name == "--only") {
            options.only = numbers(value);
        } else if (name == "--rest-every") {
            options.restEvery = std::max<std::uint64_t>(number(value), 1);
        } else if (name == "--step-file") {
            options.stepFile = value;
        } else if (name == "--resources") {
            options.resources = value;
        } else {
            throw std::invalid_argument("unknown option " + name);
        }
    }
    if (argc % 2 == 0 || options.resources.empty()) {
        throw std::invalid_argument(
            "usage: soak-simulated --resources FOLDER [--seed N] [--cycles N | --steps N] "
            "[--only N,N-N,...] [--rest-every STEPS] [--step-file FILE]");
    }
    if (!options.only.empty() && options.steps == 0) {
        throw std::invalid_argument("--only takes --steps, as cycles may never come about");
    }
    return options;
}

}  // namespace soak
