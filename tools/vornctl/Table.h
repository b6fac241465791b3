// Aligned text tables for people.
#pragma once

#include <string>
#include <vector>

namespace vornctl {

class Table {
 public:
  explicit Table(std::vector<std::string> header) : header_(std::move(header)) {}
  void row(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
  // Columns padded to their widest cell; numbers right-aligned.
  std::string render() const;

 private:
  std::vector<std::string> header_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace vornctl
