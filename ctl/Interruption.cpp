// Signals and the other end of standard output, as sources of the default main context.
#include "Interruption.h"

#include <csignal>

#include <glib-unix.h>
#include <unistd.h>

#include "Failure.h"

namespace ctl {

namespace {

int cameSignal = 0;
bool readerIsGone = false;

template <int NUMBER>
gboolean take(void*) {
    cameSignal = NUMBER;
    return G_SOURCE_CONTINUE;
}

gboolean takeEndOfReader(int, GIOCondition, void*) {
    readerIsGone = true;
    return G_SOURCE_REMOVE;
}

}  // namespace

void watchForInterruption() {
    g_unix_signal_add(SIGINT, take<SIGINT>, nullptr);
    g_unix_signal_add(SIGTERM, take<SIGTERM>, nullptr);
    g_unix_signal_add(SIGHUP, take<SIGHUP>, nullptr);
    // poll(2) tells of it on pipes and sockets, and never on files and terminals that are there.
    g_unix_fd_add(STDOUT_FILENO, G_IO_ERR, takeEndOfReader, nullptr);
}

void throwIfInterrupted() {
    if (cameSignal != 0) {
        throw Interrupted{cameSignal};
    }
    if (readerIsGone) {
        throw ReaderGone();
    }
}

}  // namespace ctl
