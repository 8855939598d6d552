// Aligned columns of text, and lists in one string.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace vorn::tool {

std::string joined(const std::vector<std::string>& strings, const char* between);

// Rows of printable cells. Each column is as wide as its widest cell; nothing is padded at the end
// of a line.
class Table {
  public:
    void addRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    void print(std::FILE* out, const char* indent) const;

  private:
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace vorn::tool
