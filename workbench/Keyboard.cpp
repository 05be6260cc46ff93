// The keys of the person: the terminal's settings, reading, and telling a pressed escape key from the
// beginning of a sequence by the time that passes.
#include "Keyboard.h"

#include <cerrno>
#include <utility>

#include <unistd.h>

#include "LastWill.h"

namespace workbench {

namespace {

/// A terminal sends the bytes of a sequence at once; a line in between may spread them a little.
constexpr unsigned escapeMilliseconds = 50;

/// The settings of a terminal of which the process is in charge; nothing for anything else.
std::optional<termios> settingsOf(int input) {
    termios settings{};
    if (isatty(input) == 0 || tcgetattr(input, &settings) != 0) {
        return std::nullopt;
    }
    return settings;
}

}  // namespace

Keyboard::Keyboard(int input, std::function<void(int key)> function)
    : input_(input), function_(std::move(function)), formerSettings_(settingsOf(input)) {
    if (formerSettings_) {
        termios settings = *formerSettings_;
        settings.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        settings.c_iflag &= ~static_cast<tcflag_t>(IXON);
        // Ctrl-C stays a signal; being suspended or ended with a core would leave the settings behind.
        settings.c_cc[VSUSP] = _POSIX_VDISABLE;
        settings.c_cc[VQUIT] = _POSIX_VDISABLE;
        settings.c_cc[VMIN] = 1;
        settings.c_cc[VTIME] = 0;
        lastWill::restoreTerminal(input_, *formerSettings_);
        tcsetattr(input_, TCSANOW, &settings);
    }
    readable_ = whenReadable(input_, [this] { return read(); });
}

Keyboard::~Keyboard() {
    if (formerSettings_) {
        tcsetattr(input_, TCSAFLUSH, &*formerSettings_);
        lastWill::forgetTerminal();
    }
}

/// Returns whether there may be more.
bool Keyboard::read() {
    char buffer[256];
    const ssize_t count = ::read(input_, buffer, sizeof buffer);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
        return true;
    }
    if (count <= 0) {
        function_(KeyEnd);
        return false;
    }
    const std::string_view bytes(buffer, static_cast<std::size_t>(count));
    if (!isTerminal()) {
        hand(keysOfPipe(bytes));
        return true;
    }
    waiting_.reset();
    hand(decoder_.decode(bytes));
    if (decoder_.isWaiting()) {
        waiting_ = everyMilliseconds(escapeMilliseconds, [this] {
            hand(decoder_.giveUpWaiting());
            return false;
        });
    }
    return true;
}

void Keyboard::hand(const std::vector<int>& keys) const {
    for (const int key : keys) {
        function_(key);
    }
}

}  // namespace workbench
