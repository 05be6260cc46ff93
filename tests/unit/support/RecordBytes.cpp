// The layout is written down here a second time, from the television's side. A machine with longer pointers
// has the same words in the same order, each at the next address that suits its kind.
#include "RecordBytes.h"

#include <platform/notification.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace {

constexpr std::size_t WORD = 4;
constexpr std::size_t WORDS = 22;
constexpr std::size_t POINTER = sizeof(void*);
constexpr std::array<std::size_t, 8> TEXT_OFFSETS = {12, 32, 36, 40, 64, 68, 76, 80};

bool isText(std::size_t offset) {
    return std::find(TEXT_OFFSETS.begin(), TEXT_OFFSETS.end(), offset) != TEXT_OFFSETS.end();
}

std::size_t aligned(std::size_t address, std::size_t alignment) {
    return (address + alignment - 1) / alignment * alignment;
}

/// Bytes as one number, the lowest first.
std::uint64_t number(const unsigned char* bytes, std::size_t count) {
    std::uint64_t value = 0;
    for (std::size_t at = count; at > 0; --at) {
        value = value << 8 | bytes[at - 1];
    }
    return value;
}

std::string text(std::uint64_t address) {
    if (address == 0) {
        return "null";
    }
    return '"' + std::string(reinterpret_cast<const char*>(static_cast<std::uintptr_t>(address))) +
           '"';
}

}  // namespace

RecordBytes* RecordBytes::current_ = nullptr;

RecordBytes::RecordBytes() {
    current_ = this;
}

RecordBytes::~RecordBytes() {
    current_ = nullptr;
}

std::size_t RecordBytes::size() {
    std::size_t end = 0;
    for (std::size_t offset = 0; offset < WORDS * WORD; offset += WORD) {
        const std::size_t width = isText(offset) ? POINTER : WORD;
        end = aligned(end, width) + width;
    }
    return aligned(end, POINTER);
}

void RecordBytes::take(const void* record) {
    if (current_ == nullptr) {
        return;
    }
    const auto* bytes = static_cast<const unsigned char*>(record);
    Words words;
    std::size_t at = 0;
    for (std::size_t offset = 0; offset < WORDS * WORD; offset += WORD) {
        const std::size_t width = isText(offset) ? POINTER : WORD;
        at = aligned(at, width);
        const std::uint64_t value = number(bytes + at, width);
        words.push_back(
            std::to_string(offset) + "=" +
            (isText(offset) ? text(value) : std::to_string(static_cast<std::int32_t>(value))));
        at += width;
    }
    current_->records_.push_back(words);
}

// The linker routes the daemon's calls of add_notification_data() here.
extern "C" {
int __real_add_notification_data(NotificationRecord* record);
int __wrap_add_notification_data(NotificationRecord* record);

int __wrap_add_notification_data(NotificationRecord* record) {
    RecordBytes::take(record);
    return __real_add_notification_data(record);
}
}
