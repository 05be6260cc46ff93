// The size of file systems as a test wants it: no machine has a stick of five tebibytes at hand.
#pragma once

#include <cstdint>
#include <string>

/// While it lives, every file system that anyone asks for has this size. One at a time.
class FileSystemSize {
public:
    struct Blocks {
        long size;                ///< bytes of a block
        std::uint64_t total;      ///< blocks in all
        std::uint64_t free;       ///< blocks free to the super-user
        std::uint64_t available;  ///< blocks free to others
    };

    explicit FileSystemSize(const Blocks& blocks);
    ~FileSystemSize();
    FileSystemSize(const FileSystemSize&) = delete;
    FileSystemSize& operator=(const FileSystemSize&) = delete;

    /// The path that was asked for last.
    const std::string& askedFor() const { return askedFor_; }

    /// The answer to statfs(), for the function that takes its place.
    static bool answer(const char* path, void* out);

private:
    static FileSystemSize* current_;
    Blocks blocks_;
    std::string askedFor_;
};
