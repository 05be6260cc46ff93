// The TV as a whole: being the platform, the main context, time, and the beginning of every
// contract function. The services are its members' affair.
#include "SimulatedTv.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace simulated {

namespace {

[[noreturn]] void giveUp(const char* message) {
    (void)std::fprintf(stderr, "simulated TV: %s\n", message);
    std::abort();
}

}  // namespace

/// A function that waits for its turn on the main context.
struct SimulatedTv::Posted {
    SimulatedTv* tv;
    std::function<void()> function;
    unsigned id;
};

SimulatedTv* SimulatedTv::current_ = nullptr;

SimulatedTv::SimulatedTv()
    : settings_(*this),
      ports_(*this),
      screen_(*this),
      power_(*this),
      applications_(*this),
      scanner_(*this) {
    if (current_ != nullptr) {
        giveUp("there is one already");
    }
    current_ = this;
}

SimulatedTv::~SimulatedTv() {
    for (const unsigned id : std::set<unsigned>(posted_)) {
        g_source_remove(id);
    }
    current_ = nullptr;
}

SimulatedTv& SimulatedTv::current() {
    if (current_ == nullptr) {
        giveUp("a function of the platform was called while there is no TV");
    }
    return *current_;
}

void SimulatedTv::settle() {
    constexpr gboolean WAIT = TRUE;
    while (g_main_context_iteration(nullptr, !WAIT)) {
    }
    while (scanner_.walking()) {
        g_main_context_iteration(nullptr, WAIT);
        while (g_main_context_iteration(nullptr, !WAIT)) {
        }
    }
}

void SimulatedTv::advance(std::int64_t milliseconds) {
    clock_.advance(milliseconds, [this] { settle(); });
}

void SimulatedTv::checkLeaks() {
    ports_.checkLeaks();
    if (small_.contextQueries > 0) {
        journal_.breach("tvcontext_init: " + std::to_string(small_.contextQueries) +
                        " without tvcontext_fini");
    }
}

void SimulatedTv::post(std::function<void()> function) {
    auto posted = std::make_unique<Posted>(Posted{this, std::move(function), 0});
    Posted& waiting = *posted;
    // The priority of ordinary events: an idle function would give way to every other source.
    waiting.id = g_idle_add_full(G_PRIORITY_DEFAULT, runPosted, posted.release(),
                                 [](void* data) { delete static_cast<Posted*>(data); });
    posted_.insert(waiting.id);
}

int SimulatedTv::runPosted(void* data) {
    Posted& posted = *static_cast<Posted*>(data);
    posted.tv->posted_.erase(posted.id);
    posted.function();
    return G_SOURCE_REMOVE;
}

bool SimulatedTv::enter(const char* function, const std::string& arguments, Fault* fault) {
    journal_.called(function, arguments);
    const std::optional<Fault> ordered = journal_.fault(function);
    if (ordered && fault != nullptr) {
        *fault = *ordered;
    }
    return ordered.has_value();
}

}  // namespace simulated
