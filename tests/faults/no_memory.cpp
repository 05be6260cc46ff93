// Preloaded into a program under test: a machine that runs out of memory while a JSON text is made or read.
//
// While the file that PORTMELD_TEST_NO_MEMORY names is there, it says what for: WORK NUMBER HOW. The piece of
// memory of that number, counted from one, is refused to a thread at that work, however small it is. HOW is
// "once", or "ever" if nothing is given to that thread from then on, not even for the words of a complaint.
// WORK is
//   build   what json-glib needs to put a text together
//   print   what it needs to write it down
//   copy    what the program asks for after that
//   parse   what json-glib needs to take a text apart
//   read    what the program asks for after that
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <json-glib/json-glib.h>
#include <unistd.h>

namespace {

/// What the file says.
struct Scarcity {
    char work[8] = "";
    unsigned number = 0;
    char how[8] = "";
};

/// What becomes of the pieces of one thread.
struct Pieces {
    unsigned asked = 0;    ///< that were counted
    unsigned refused = 0;  ///< the number of the one that is refused; 0: none is counted
    bool ever = false;     ///< and all that come after it
    bool exhausted = false;
};

/// Not allocated when it is first used, since that would need memory.
[[gnu::tls_model("initial-exec")]] thread_local Pieces pieces;

Scarcity scarcity() {
    Scarcity now;
    const char* const file = std::getenv("PORTMELD_TEST_NO_MEMORY");
    const int descriptor = file != nullptr ? open(file, O_RDONLY | O_CLOEXEC) : -1;
    if (descriptor >= 0) {
        char text[32] = "";
        if (read(descriptor, text, sizeof text - 1) < 0 ||
            std::sscanf(text, "%7s %u %7s", now.work, &now.number, now.how) != 3) {
            std::abort();
        }
        close(descriptor);
    }
    return now;
}

bool refuses() {
    if (!pieces.exhausted) {
        if (pieces.refused == 0 || ++pieces.asked != pieces.refused) {
            return false;
        }
        pieces.refused = 0;
        pieces.exhausted = pieces.ever;
    }
    errno = ENOMEM;
    return true;
}

/// A call of json-glib, which is a part of one work and begins another.
class Call {
public:
    Call(const char* part, const char* next) : next_(next), now_(scarcity()) {
        pieces.ever = std::strcmp(now_.how, "ever") == 0;
        if (std::strcmp(now_.work, part) == 0) {
            pieces.refused = now_.number;
        }
    }
    ~Call() { pieces.refused = std::strcmp(now_.work, next_) == 0 ? now_.number : 0; }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

private:
    const char* next_;
    Scarcity now_;
};

/// Calls json-glib's own function of this name. That is looked up before, which may need memory as well.
template <class Result, class... Arguments>
Result within(const char* part, const char* next, const char* name, Arguments... arguments) {
    const auto original = reinterpret_cast<Result (*)(Arguments...)>(dlsym(RTLD_NEXT, name));
    const Call call(part, next);
    return original(arguments...);
}

template <class Result, class... Arguments>
Result build(const char* name, Arguments... arguments) {
    return within<Result>("build", "", name, arguments...);
}

template <class... Arguments>
char* print(const char* name, Arguments... arguments) {
    return within<char*>("print", "copy", name, arguments...);
}

}  // namespace

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) {
    return refuses() ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    return refuses() ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
    return refuses() ? nullptr : __libc_realloc(memory, size);
}

/// Here GLib gets the stock of small pieces that it deals out itself.
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    void* const made = refuses() ? nullptr : __libc_memalign(alignment, size);
    *memory = made;
    return made != nullptr ? 0 : ENOMEM;
}

JsonObject* json_object_new() {
    return build<JsonObject*>("json_object_new");
}

void json_object_set_boolean_member(JsonObject* object, const char* name, gboolean value) {
    build<void>("json_object_set_boolean_member", object, name, value);
}

void json_object_set_int_member(JsonObject* object, const char* name, gint64 value) {
    build<void>("json_object_set_int_member", object, name, value);
}

void json_object_set_string_member(JsonObject* object, const char* name, const char* value) {
    build<void>("json_object_set_string_member", object, name, value);
}

JsonNode* json_node_new(JsonNodeType type) {
    return build<JsonNode*>("json_node_new", type);
}

JsonGenerator* json_generator_new() {
    return build<JsonGenerator*>("json_generator_new");
}

void json_generator_set_root(JsonGenerator* generator, JsonNode* node) {
    build<void>("json_generator_set_root", generator, node);
}

char* json_generator_to_data(JsonGenerator* generator, gsize* length) {
    return print("json_generator_to_data", generator, length);
}

char* json_to_string(JsonNode* node, gboolean pretty) {
    return print("json_to_string", node, pretty);
}

JsonParser* json_parser_new() {
    return within<JsonParser*>("parse", "", "json_parser_new");
}

gboolean json_parser_load_from_data(JsonParser* parser,
                                    const char* text,
                                    gssize length,
                                    GError** error) {
    return within<gboolean>("parse", "read", "json_parser_load_from_data", parser, text, length,
                            error);
}

}  // extern "C"
