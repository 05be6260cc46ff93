// Endurance on the simulated TV: the daemon with its own entry, events in random order, virtual time, and
// after every step a comparison with a model of it. Ends with one line of figures, or with the step at
// which something differed and what it was. ./dev soak starts it, and says how to see that again.
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <exception>
#include <fstream>
#include <functional>
#include <memory>

#include <glib.h>

#include "Checker.h"
#include "Driver.h"
#include "MMLogger.h"
#include "MemoryJudge.h"
#include "Options.h"
#include "Resources.h"
#include "SimulatedTv.h"
#include "Stage.h"

/// src/main.cpp, compiled under this name.
int portmeld_main(int argc, char** argv);

extern "C" void __wrap_g_main_loop_run(GMainLoop* loop);

namespace {

// Exit status of a whole run in which memory was never judged.
constexpr int TOO_SHORT = 3;
constexpr std::size_t HISTORY = 30;   // steps that a failure shows
constexpr std::size_t JOURNAL = 200;  // entries that the TV keeps

std::function<void()> mainLoop;

class Run {
public:
    Run(simulated::SimulatedTv& tv, const soak::WorkFolder& folder, soak::Options options)
        : tv_(tv), options_(std::move(options)), stepFile_(options_.stepFile) {
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
        tellNumber();
        driver_->start(options_.seed);
        compare("start");
        checker_->keepCount();
        while (!failed_ && !isOver()) {
            ++number_;
            tellNumber();
            if (options_.only.empty() || options_.only.count(number_) != 0) {
                compare(driver_->step(options_.seed, number_));
                ++steps_;
            }
            // Whatever is left out: rests stay where they are.
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
        const bool tooShort = soak::memoryCanBeMeasured() && !memory_.hasJudged();
        std::printf("%ld cycles in %ld steps, seed %llu: %s\n", driver_->cycles(), steps_,
                    static_cast<unsigned long long>(options_.seed),
                    !soak::memoryCanBeMeasured() ? "memory is the sanitizer's to judge"
                    : tooShort                   ? "too short for a judgement of memory"
                                                 : memory_.figures().c_str());
        // A part of a run, as a failure asks for it, may be.
        return tooShort && options_.steps == 0 ? TOO_SHORT : EXIT_SUCCESS;
    }

private:
    bool isOver() const {
        return options_.steps != 0 ? number_ >= options_.steps
                                   : driver_->cycles() >= options_.cycles;
    }

    /// Who started this program reads it where the daemon has ended it.
    void tellNumber() {
        stepFile_.seekp(0);
        stepFile_ << number_ << std::flush;
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
        // What the TV notes of the calls is none of the daemon's, and differs by tens of KiB.
        tv_.journal().setLimit(1);
        tv_.journal().setLimit(JOURNAL);
        fail(memory_.judge(soak::measureMemory()));
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
        failed_ = true;
    }

    simulated::SimulatedTv& tv_;
    soak::Options options_;
    std::ofstream stepFile_;  // open all the time; none when nobody asks for it
    FakeBus bus_;
    soak::World world_;
    std::unique_ptr<soak::Driver> driver_;
    std::unique_ptr<soak::Checker> checker_;
    std::deque<std::string> history_;
    std::uint64_t number_ = 0;
    long steps_ = 0;
    soak::MemoryJudge memory_;
    bool failed_ = false;
};

int soakTheDaemon(int argc, char** argv) {
    const soak::Options options = soak::readOptions(argc, argv);
    (void)setenv("TZ", "UTC0", 1);
    soak::steadyMemory();
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
