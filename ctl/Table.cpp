// Widths of columns, and sizes in human units.
#include "Table.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

#include "Text.h"

namespace ctl {

namespace {

constexpr const char* GAP = "  ";

}  // namespace

Table::Table(std::vector<Column> columns) : columns_(std::move(columns)) {
    std::vector<std::string> titles;
    for (const Column& column : columns_) {
        titles.emplace_back(column.title);
    }
    rows_.push_back(std::move(titles));
}

void Table::add(const std::vector<std::string>& cells) {
    std::vector<std::string> row(cells.size());
    std::transform(cells.begin(), cells.end(), row.begin(),
                   [](const std::string& cell) { return cell.empty() ? "-" : printable(cell); });
    rows_.push_back(std::move(row));
}

std::vector<std::string> Table::lines() const {
    std::vector<std::size_t> widths(columns_.size());
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], columnsOf(row[i]));
        }
    }
    std::vector<std::string> lines;
    for (const auto& row : rows_) {
        std::string line;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const bool last = i + 1 == widths.size();
            if (columns_[i].numbers) {
                line += std::string(widths[i] - columnsOf(row[i]), ' ') + row[i];
            } else {
                line += last ? row[i] : padded(row[i], widths[i]);
            }
            line += last ? "" : GAP;
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

std::string humanSize(std::uint64_t bytes) {
    constexpr std::array<char, 7> UNITS = {'B', 'K', 'M', 'G', 'T', 'P', 'E'};
    // Tenths of the unit, so that 1023.96K is not shown as "1024K".
    double tenths = static_cast<double>(bytes) * 10;
    std::size_t unit = 0;
    while (std::round(tenths) >= 10240 && unit + 1 < UNITS.size()) {
        tenths /= 1024;
        ++unit;
    }
    const auto rounded = static_cast<std::uint64_t>(std::llround(tenths));
    std::string text = std::to_string(rounded / 10);
    if (rounded % 10 != 0) {
        text += '.' + std::to_string(rounded % 10);
    }
    return text + UNITS[unit];
}

}  // namespace ctl
