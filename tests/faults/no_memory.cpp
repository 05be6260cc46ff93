// Preloaded into a program under test: a machine that has no memory for a JSON text. While the file that
// PORTMELD_TEST_NO_MEMORY names is there, every larger piece of memory is refused to json-glib's two functions
// that print a text, and to nobody else.
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include <dlfcn.h>
#include <unistd.h>

namespace {

/// What the words of a complaint about it need is still there.
constexpr std::size_t LARGER = 256;

/// Not allocated when it is first used, since that would need memory.
[[gnu::tls_model("initial-exec")]] thread_local bool printing = false;

bool refuses(std::size_t size) {
    if (printing && size >= LARGER) {
        errno = ENOMEM;
        return true;
    }
    return false;
}

bool isScarce() {
    const char* const file = std::getenv("PORTMELD_TEST_NO_MEMORY");
    return file != nullptr && access(file, F_OK) == 0;
}

template <class Function>
Function real(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

char* json_generator_to_data(void* generator, std::size_t* length);
char* json_to_string(void* node, int pretty);

void* malloc(std::size_t size) {
    return refuses(size) ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    return refuses(count * size) ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
    return refuses(size) ? nullptr : __libc_realloc(memory, size);
}

char* json_generator_to_data(void* generator, std::size_t* length) {
    static const auto original = real<char* (*)(void*, std::size_t*)>("json_generator_to_data");
    printing = isScarce();
    char* const text = original(generator, length);
    printing = false;
    return text;
}

char* json_to_string(void* node, int pretty) {
    static const auto original = real<char* (*)(void*, int)>("json_to_string");
    printing = isScarce();
    char* const text = original(node, pretty);
    printing = false;
    return text;
}

}  // extern "C"
