// The record of a pop-up as a television reads it: by the offsets of its 22 words, byte after byte, without
// the header that the daemon was compiled with.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// While it lives, it keeps the bytes of each record that is handed to the notification service, which gets
/// the record all the same. One at a time.
class RecordBytes {
public:
    /// The words of one record: "OFFSET=NUMBER", "OFFSET=\"TEXT\"" or, for a text that is not there,
    /// "OFFSET=null". Offsets are those of a 32-bit machine.
    using Words = std::vector<std::string>;

    RecordBytes();
    ~RecordBytes();
    RecordBytes(const RecordBytes&) = delete;
    RecordBytes& operator=(const RecordBytes&) = delete;

    /// The records so far, the oldest first.
    const std::vector<Words>& records() const { return records_; }

    /// Bytes of a record, where each text is a pointer of this machine: 88 where that has 32 bits.
    static std::size_t size();

    /// Takes a record, for the function that stands before the service's own.
    static void take(const void* record);

private:
    static RecordBytes* current_;
    std::vector<Words> records_;
};
