#include "tools/table.h"

#include <algorithm>

#include "tools/printable.h"

namespace vorn::tool {

namespace {

std::string laidOut(const std::vector<std::string>& row, const std::vector<size_t>& widths) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) {
        line += row[i];
        line.append(widths[i] - columns(row[i]) + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

}  // namespace

std::string joined(const std::vector<std::string>& strings, const char* between) {
    std::string all;
    for (const std::string& text : strings) {
        all += (all.empty() ? "" : between) + text;
    }
    return all;
}

void Table::print(std::FILE* out, const char* indent) const {
    std::vector<size_t> widths;
    for (const auto& row : rows_) {
        widths.resize(std::max(widths.size(), row.size()));
        for (size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], columns(row[i]));
        }
    }
    for (const auto& row : rows_) {
        std::fprintf(out, "%s%s\n", indent, laidOut(row, widths).c_str());
    }
}

}  // namespace vorn::tool
