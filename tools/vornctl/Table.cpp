#include "vornctl/Table.h"

#include <algorithm>
#include <cctype>

namespace vornctl {
namespace {

bool numeric(const std::string& s) {
  return !s.empty() && std::all_of(s.begin(), s.end(), [](unsigned char c) {
    return std::isdigit(c) || c == '.' || c == '-' || c == 'x' || c == ' ';
  }) && std::isdigit(static_cast<unsigned char>(s.front()));
}

}  // namespace

std::string Table::render() const {
  std::vector<std::size_t> width(header_.size(), 0);
  auto measure = [&](const std::vector<std::string>& cells) {
    for (std::size_t i = 0; i < cells.size() && i < width.size(); ++i)
      width[i] = std::max(width[i], cells[i].size());
  };
  measure(header_);
  for (const auto& r : rows_) measure(r);
  std::string out;
  auto line = [&](const std::vector<std::string>& cells) {
    std::string l;
    for (std::size_t i = 0; i < width.size(); ++i) {
      std::string c = i < cells.size() ? cells[i] : "";
      std::string pad(width[i] - c.size(), ' ');
      l += numeric(c) ? pad + c : c + pad;
      if (i + 1 < width.size()) l += "  ";
    }
    while (!l.empty() && l.back() == ' ') l.pop_back();
    out += l + "\n";
  };
  line(header_);
  std::vector<std::string> rule;
  for (std::size_t w : width) rule.push_back(std::string(w, '-'));
  line(rule);
  for (const auto& r : rows_) line(r);
  return out;
}

}  // namespace vornctl
