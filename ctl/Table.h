// A table for people: columns side by side, each as wide as its widest cell, as lsblk(8) prints it. It is
// the same on a terminal and in a pipe, and nothing is cut; programs are better served with JSON.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ctl {

struct Column {
    const char* title;
    bool numbers = false;  ///< flush right
};

class Table {
public:
    explicit Table(std::vector<Column> columns);

    /// Add a row; one cell for each column. Cells may hold anything: they are made printable() here.
    /// An empty one is shown as "-".
    void add(const std::vector<std::string>& cells);

    /// The lines, the titles first.
    std::vector<std::string> lines() const;

private:
    std::vector<Column> columns_;
    std::vector<std::vector<std::string>> rows_;
};

/// A number of bytes for people, in units of 1024: "512B", "14.9G".
std::string humanSize(std::uint64_t bytes);

}  // namespace ctl
