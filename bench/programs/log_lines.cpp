// Logs lines that the platform drops, for counting what one costs where it stands and in the platform:
// log-lines COUNT KIND, where KIND is "value" (the kind that walks log for each device), "words" (many
// arguments) or "none" (the loop alone). Nothing sets a level here, so info is dropped.
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "Counting.h"
#include "MMLogger.h"

namespace {

constexpr int USAGE = 2;

void logValues(long count, void* pointer) {
    for (long i = 0; i < count; ++i) {
        MM_INFO("pNode:%p", pointer);
    }
}

void logWords(long count, const char* text) {
    for (long i = 0; i < count; ++i) {
        MM_INFO("Product:%s key=%s name=%s nValidIndex=%d", text, text, text, 1);
    }
}

/// A loop that the compiler cannot leave out.
void logNothing(long count) {
    for (long i = 0; i < count; ++i) {
        __asm__ volatile("" : : : "memory");
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        (void)std::fputs("log-lines COUNT value|words|none\n", stderr);
        return USAGE;
    }
    const long count = std::strtol(argv[1], nullptr, 10);
    const std::string_view kind = argv[2];
    MM_INFO("the first line of a process has the level read");
    startCounting();
    if (kind == "value") {
        logValues(count, argv);
    } else if (kind == "words") {
        logWords(count, argv[0]);
    } else {
        logNothing(count);
    }
    stopCounting();
    return 0;
}
