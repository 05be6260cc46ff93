// Endurance on the simulated TV: the daemon with its own entry, events in random order, virtual time, and
// after every step a comparison with a model of it. Ends with one line of figures, or with the step at
// which something differed, what it was, and how to see it again.
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <tuple>

#include <glib.h>

#include "Checker.h"
#include "Driver.h"
#include "MMLogger.h"
#include "Options.h"
#include "Resources.h"
#include "SimulatedTv.h"
#include "Stage.h"

/// src/main.cpp, compiled under this name.
int portmeld_main(int argc, char** argv);

extern "C" void __wrap_g_main_loop_run(GMainLoop* loop);

namespace {

using soak::Memory;

constexpr int WARM_UP = 10;  // rests after which memory must stay as it is
// Bytes in use are exact. Pages are not: where small things come to lie in the heap, and how many threads
// there were at a time, moves tens of pages. They tell of what malloc does not know.
constexpr std::size_t MOST_GROWTH_IN_USE = 65'536;         // bytes
constexpr std::size_t MOST_GROWTH_OF_PAGES = 16 * 65'536;  // bytes
constexpr std::size_t HISTORY = 30;                        // steps that a failure shows
constexpr std::size_t JOURNAL = 200;                       // entries that the TV keeps

std::function<void()> mainLoop;

class Run {
public:
    Run(simulated::SimulatedTv& tv, const soak::WorkFolder& folder, soak::Options options)
        : tv_(tv), options_(std::move(options)) {
        folder.makeFolders(world_);
        world_.language = "en";
        soak::setSizesOf(&world_);
        driver_ = std::make_unique<soak::Driver>(tv_, bus_, folder, world_);
        checker_ = std::make_unique<soak::Checker>(tv_, bus_, *driver_);
    }
    ~Run() { soak::setSizesOf(nullptr); }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    /// The whole run, in place of the main loop.
    void run() {
        driver_->start(options_.seed);
        compare("start");
        checker_->keepCount();
        while (!failed_ && !isOver()) {
            ++number_;
            if (!options_.only.empty() && options_.only.count(number_) == 0) {
                continue;
            }
            compare(driver_->step(options_.seed, number_));
            ++steps_;
            if (number_ % options_.restEvery == 0 && !failed_) {
                rest();
            }
        }
        if (!failed_) {
            rest();
        }
    }

    /// What is to be printed after the daemon has ended, and the exit status.
    int report(int daemonStatus) {
        if (daemonStatus != 0) {
            fail({"the daemon ended with status " + std::to_string(daemonStatus)});
        }
        for (const std::string& breach : tv_.journal().breaches()) {
            fail({"at the end: " + breach});
        }
        if (failed_) {
            return EXIT_FAILURE;
        }
        std::printf("%ld cycles in %ld steps, seed %llu: %s\n", driver_->cycles(), steps_,
                    static_cast<unsigned long long>(options_.seed), memoryText().c_str());
        return EXIT_SUCCESS;
    }

private:
    bool isOver() const {
        return options_.steps != 0 ? number_ >= options_.steps
                                   : driver_->cycles() >= options_.cycles;
    }

    void compare(const std::string& doing) {
        history_.push_back(std::to_string(number_) + " " + doing);
        if (history_.size() > HISTORY) {
            history_.pop_front();
        }
        fail(checker_->differences());
    }

    void rest() {
        driver_->rest([this](const std::string& doing) {
            if (!failed_) {
                compare(doing);
            }
        });
        if (failed_ || !soak::memoryCanBeMeasured()) {
            return;
        }
        now_ = soak::measureMemory();
        if (++rests_ == WARM_UP) {
            warm_ = now_;
        } else if (rests_ > WARM_UP) {
            for (const auto& [what, most, before, after] :
                 {std::tuple("in use", MOST_GROWTH_IN_USE, warm_.inUse, now_.inUse),
                  std::tuple("private and dirty", MOST_GROWTH_OF_PAGES, warm_.privateDirty,
                             now_.privateDirty)}) {
                if (after > before + most) {
                    fail({std::string("memory ") + what + ": " + std::to_string(before) +
                          " bytes after the warm-up, " + std::to_string(after) + " now"});
                }
            }
        }
    }

    std::string memoryText() const {
        if (!soak::memoryCanBeMeasured()) {
            return "memory is the sanitizer's to judge";
        }
        if (rests_ <= WARM_UP) {
            return "too short for a judgement of memory";
        }
        const auto growth = [](std::size_t before, std::size_t after) {
            return std::to_string(static_cast<long long>(after) - static_cast<long long>(before)) +
                   " of " + std::to_string(after);
        };
        return "growth of bytes in use " + growth(warm_.inUse, now_.inUse) +
               ", private and dirty " + growth(warm_.privateDirty, now_.privateDirty);
    }

    void fail(const std::vector<std::string>& differences) {
        if (differences.empty()) {
            return;
        }
        if (!failed_) {
            std::printf("the last steps:\n");
            for (const std::string& line : history_) {
                std::printf("  %s\n", line.c_str());
            }
            std::printf("FAILED at step %llu of seed %llu:\n",
                        static_cast<unsigned long long>(number_),
                        static_cast<unsigned long long>(options_.seed));
        }
        for (const std::string& line : differences) {
            std::printf("  %s\n", line.c_str());
        }
        if (!failed_) {
            std::printf("again: ./dev soak simulated --seed %llu --steps %llu\n",
                        static_cast<unsigned long long>(options_.seed),
                        static_cast<unsigned long long>(number_));
        }
        failed_ = true;
    }

    simulated::SimulatedTv& tv_;
    soak::Options options_;
    FakeBus bus_;
    soak::World world_;
    std::unique_ptr<soak::Driver> driver_;
    std::unique_ptr<soak::Checker> checker_;
    std::deque<std::string> history_;
    std::uint64_t number_ = 0;
    long steps_ = 0;
    int rests_ = 0;
    Memory warm_, now_;
    bool failed_ = false;
};

int soakTheDaemon(int argc, char** argv) {
    const soak::Options options = soak::readOptions(argc, argv);
    (void)setenv("TZ", "UTC0", 1);
    // Scans have threads: with an arena for each of them memory would depend on their timing.
    soak::useOneArena();
    const soak::WorkFolder folder(options.resources);
    simulated::SimulatedTv tv;
    tv.journal().setLimit(JOURNAL);
    Run run(tv, folder, options);
    mainLoop = [&] { run.run(); };
    const int status = portmeld_main(argc, argv);
    CMMLogService::Get()->Destroy();
    tv.settle();
    tv.checkLeaks();
    return run.report(status);
}

}  // namespace

void __wrap_g_main_loop_run(GMainLoop*) {
    mainLoop();
}

int main(int argc, char** argv) {
    try {
        return soakTheDaemon(argc, argv);
    } catch (const std::exception& failure) {
        (void)std::fprintf(stderr, "soak: %s\n", failure.what());
        return 2;
    }
}
