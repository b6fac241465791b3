// libvorn.so's dynamic symbol table shows exactly the exported names.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>

namespace {

const std::set<std::string> kExported = {
#include "Vorn/ExportedNames.inc"
};

// "Hardware::Vorn::fab_ioctl(char*, unsigned int)@@VORN_1" -> "fab_ioctl";
// "Hardware::Vorn::ShapeRateSmState::fwkType() const" -> "ShapeRateSmState::fwkType";
// "vtable for Hardware::Vorn::ShapeRateSmState" -> "vtable for ShapeRateSmState".
std::string exportedName(std::string sym) {
  if (auto at = sym.find('@'); at != std::string::npos) sym.resize(at);
  std::string what;  // "vtable for ", "typeinfo for ", "typeinfo name for "
  if (auto f = sym.find(" for "); f != std::string::npos && sym.find('(') > f) {
    what = sym.substr(0, f + 5);
    sym.erase(0, f + 5);
  }
  int depth = 0;
  for (std::size_t i = 0; i < sym.size(); ++i) {
    if (sym[i] == '<') ++depth;
    if (sym[i] == '>') --depth;
    if (sym[i] == '(' && depth == 0) {
      sym.resize(i);
      break;
    }
  }
  const std::string prefix = "Hardware::Vorn::";
  if (sym.compare(0, prefix.size(), prefix) == 0) sym.erase(0, prefix.size());
  return what + sym;
}

std::set<std::string> dynamicSymbols() {
  std::set<std::string> names;
  std::string cmd = std::string("nm -D --defined-only -C ") + VORN_LIBRARY_PATH;
  FILE* p = popen(cmd.c_str(), "r");
  if (!p) return names;
  char line[4096];
  while (fgets(line, sizeof line, p)) {
    std::string l(line);
    if (!l.empty() && l.back() == '\n') l.pop_back();
    // "<address> <type> <name>"; the version node itself is type A.
    auto first = l.find(' ');
    if (first == std::string::npos) continue;
    char type = l[first + 1];
    if (type == 'A') continue;
    names.insert(exportedName(l.substr(first + 3)));
  }
  pclose(p);
  return names;
}

TEST(Exports, DynamicSymbolTableIsExactlyTheExportedNames) {
  std::set<std::string> symbols = dynamicSymbols();
  ASSERT_FALSE(symbols.empty()) << "nm found no dynamic symbols in " << VORN_LIBRARY_PATH;
  for (const std::string& name : kExported)
    EXPECT_TRUE(symbols.count(name)) << "not exported: " << name;
  for (const std::string& name : symbols)
    EXPECT_TRUE(kExported.count(name)) << "exported by mistake: " << name;
}

}  // namespace
