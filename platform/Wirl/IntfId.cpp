#include "Wirl/IntfId.h"

#include <string>
#include <string_view>

namespace Wirl {

namespace {

// How the names of one kind are spelled.
struct KindSpelling {
  IntfId::Kind kind;
  std::string_view prefix;
  const char* shortPrefix;
  unsigned maxNumbers;  // numbers separated by '/'
  bool subIntfs;        // may carry ".<sub>"
  unsigned minFirst, maxFirst;
};

constexpr KindSpelling kSpellings[] = {
    {IntfId::Kind::ethernet, "Ethernet", "Et", 3, true, 0, 65535},
    {IntfId::Kind::portChannel, "Port-Channel", "Po", 1, true, 0, 65535},
    {IntfId::Kind::vlan, "Vlan", "Vl", 1, false, 1, 4094},
    {IntfId::Kind::loopback, "Loopback", "Lo", 1, false, 0, 65535},
    {IntfId::Kind::management, "Management", "Ma", 2, false, 0, 65535},
    {IntfId::Kind::vxlanTunnel, "Vxlan", "Vx", 1, false, 0, 65535},
};

const KindSpelling* spellingOf(IntfId::Kind kind) {
  for (const KindSpelling& s : kSpellings)
    if (s.kind == kind) return &s;
  return nullptr;
}

// Reads a decimal number of at most 5 digits, without a leading zero, at `pos`.
bool readNumber(std::string_view text, std::size_t& pos, unsigned& out) {
  std::size_t start = pos;
  unsigned value = 0;
  while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9' && pos - start < 6) {
    value = value * 10 + static_cast<unsigned>(text[pos] - '0');
    ++pos;
  }
  const std::size_t digits = pos - start;
  if (digits == 0 || digits > 5 || (digits > 1 && text[start] == '0') || value > 65535)
    return false;
  out = value;
  return true;
}

}  // namespace

IntfId::IntfId(const Mox::String& name) : name_(name) {
  const std::string_view text = name.view();
  if (text.empty()) return;
  for (const KindSpelling& s : kSpellings) {
    if (text.substr(0, s.prefix.size()) != s.prefix) continue;
    std::size_t pos = s.prefix.size();
    unsigned numbers[3] = {0, 0, 0};
    unsigned count = 0;
    bool ok = readNumber(text, pos, numbers[count++]);
    while (ok && count < s.maxNumbers && pos < text.size() && text[pos] == '/') {
      ++pos;
      ok = readNumber(text, pos, numbers[count++]);
    }
    ok = ok && numbers[0] >= s.minFirst && numbers[0] <= s.maxFirst;
    parentLength_ = static_cast<U16>(pos);
    unsigned sub = 0;
    if (ok && s.subIntfs && pos < text.size() && text[pos] == '.') {
      ++pos;
      ok = readNumber(text, pos, sub) && sub > 0;
    }
    if (!ok || pos != text.size()) break;
    kind_ = s.kind;
    subIntf_ = static_cast<U16>(sub);
    if (s.kind == Kind::ethernet && count == 3) module_ = static_cast<U16>(numbers[0]);
    return;
  }
  throw InvalidIntfName(name.stdString());
}

Mox::String IntfId::shortName() const {
  const KindSpelling* s = spellingOf(kind_);
  if (!s) return Mox::String();
  std::string text(s->shortPrefix);
  text.append(name_.view().substr(s->prefix.size()));
  return Mox::String(text);
}

IntfId IntfId::parent() const {
  if (subIntf_ == 0) return *this;
  return IntfId(name_.substr(0, parentLength_));
}

U32 IntfId::hash() const noexcept {
  // FNV-1a over the name: the same 32 bits on every build.
  U32 h = 2166136261u;
  for (char c : name_.view()) h = (h ^ static_cast<unsigned char>(c)) * 16777619u;
  return h;
}

std::ostream& operator<<(std::ostream& os, const IntfId& id) {
  return os << id.stringValue();
}

Mox::String intfDeviceName(const IntfId& id) {
  const bool eth = EthIntfId::isEthIntfId(id);
  if (!eth && !PortChannelIntfId::isPortChannelIntfId(id)) return Mox::String();
  const std::string_view rest =
      id.stringValue().view().substr(eth ? sizeof("Ethernet") - 1 : sizeof("Port-Channel") - 1);
  std::string device(eth ? "et" : "po");
  for (char c : rest) device.push_back(c == '/' ? '_' : c);
  return Mox::String(device);
}

}  // namespace Wirl
