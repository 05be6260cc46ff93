// The daemon as a process for the tests of its bus: the entry that people run, on a simulated TV
// that takes commands on standard input and answers each with a line on standard output. Its log
// goes to standard error. The end of standard input, or "quit", ends the main loop, which nothing
// in the daemon itself does; a last line then tells what the shut-down did. What the commands are
// lives in Commands.cpp.
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>

#include <glib-unix.h>

#include "Commands.h"
#include "Json.h"
#include "SimulatedTv.h"

/// src/main.cpp, compiled under this name.
int portmeld_main(int argc, char** argv);

extern "C" {
void __real_g_main_loop_run(GMainLoop* loop);
void __wrap_g_main_loop_run(GMainLoop* loop);
}

namespace {

GMainLoop* runningLoop = nullptr;

void quitLoop() {
    if (runningLoop != nullptr) {
        g_main_loop_quit(runningLoop);
    }
}

void printLine(std::FILE* stream, const std::string& line) {
    std::fprintf(stream, "%s\n", line.c_str());
    std::fflush(stream);
}

void printLog(const simulated::LogLine& line, void*) {
    printLine(stderr, "?DIW"[line.priority - 2] + (" " + line.function) + ": " + line.message);
}

/// Lines from standard input to Commands, as they come.
class CommandInput {
public:
    explicit CommandInput(Commands& commands)
        : commands_(commands), source_(g_unix_fd_add(STDIN_FILENO, CONDITIONS, readable, this)) {}
    ~CommandInput() {
        if (source_ != 0) {
            g_source_remove(source_);
        }
    }
    CommandInput(const CommandInput&) = delete;
    CommandInput& operator=(const CommandInput&) = delete;

private:
    static constexpr auto CONDITIONS = static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR);

    static gboolean readable(int descriptor, GIOCondition, void* self) {
        auto& input = *static_cast<CommandInput*>(self);
        std::array<char, 4096> bytes{};
        const ssize_t count = read(descriptor, bytes.data(), bytes.size());
        if (count <= 0) {
            input.source_ = 0;
            quitLoop();
            return G_SOURCE_REMOVE;
        }
        input.take(std::string(bytes.data(), static_cast<std::size_t>(count)));
        return G_SOURCE_CONTINUE;
    }

    void take(const std::string& bytes) {
        pending_ += bytes;
        for (std::size_t end = pending_.find('\n'); end != std::string::npos;
             end = pending_.find('\n')) {
            const std::string line = pending_.substr(0, end);
            pending_.erase(0, end + 1);
            printLine(stdout, commands_.answer(line));
        }
    }

    Commands& commands_;
    unsigned source_;
    std::string pending_;
};

}  // namespace

void __wrap_g_main_loop_run(GMainLoop* loop) {
    runningLoop = loop;
    __real_g_main_loop_run(loop);
    runningLoop = nullptr;
}

int main(int argc, char** argv) {
    simulated::SimulatedTv tv;
    tv.journal().setLogSink(printLog, nullptr);
    Commands commands(tv, quitLoop);
    const CommandInput input(commands);

    const int status = portmeld_main(argc, argv);

    printLine(stdout, print(JsonMembers()
                                .with("status", number(status))
                                .with("calls", texts(tv.journal().calls()))
                                .with("breaches", texts(tv.journal().breaches()))
                                .done()));
    return status;
}
