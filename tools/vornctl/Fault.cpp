// vornctl fault: scripted refusals on the fabric daemon's driver, seen by
// every process that uses it (watch how running agents take a refusal).
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "Kernel/RemoteFabric.h"
#include "vornctl/Commands.h"

namespace vornctl {
namespace {

using Kernel::fabric::Type;

// Sends one control request to the daemon in use; its answer's text.
std::string control(Context& ctx, Type type, const iovec* parts, int count) {
  if (!ctx.remote())
    throw BadInput("fault", "needs the fabric daemon (--driver remote[=PATH], or VORN_FABRIC)");
  ctx.useDriver();
  std::string text;
  int status = Kernel::fabric::control(Kernel::fabricPath(), type, parts, count, text);
  if (status < 0)
    throw Refusal("fault: the fabric daemon at " + std::string(Kernel::fabricPath()), errno);
  ctx.check("fault", status);
  return text;
}

// "xN" or "N": how many commands the fault answers.
std::uint32_t countOf(const std::string& text) {
  std::string digits = !text.empty() && text[0] == 'x' ? text.substr(1) : text;
  char* end = nullptr;
  errno = 0;
  unsigned long n = digits.empty() ? 0 : std::strtoul(digits.c_str(), &end, 10);
  if (n == 0 || errno || *end || n > 0xffffffffUL) throw BadInput(text, "a count xN of at least 1");
  return static_cast<std::uint32_t>(n);
}

int add(Context& ctx, const std::string& prefix, int error, const std::string& count) {
  if (prefix.empty() || prefix.size() > Kernel::fabric::kMaxFaultPrefix)
    throw BadInput(prefix, "a command prefix of 1 to 255 characters");
  Kernel::fabric::FaultAdd fault{error, countOf(count)};
  iovec parts[] = {{&fault, sizeof fault}, {const_cast<char*>(prefix.data()), prefix.size()}};
  control(ctx, Type::kFaultAdd, parts, 2);
  if (ctx.json())
    ctx.printJson({{"added", {{"prefix", prefix}, {"errno", error}, {"count", fault.count}}}});
  else
    std::printf("the next %u \"%s\" commands are answered %d (%s)\n", fault.count, prefix.c_str(),
                error, std::strerror(error));
  return kOk;
}

int list(Context& ctx) {
  std::string text = control(ctx, Type::kFaultList, nullptr, 0);
  if (!ctx.json()) {
    std::printf("%s", text.empty() ? "no scripted answers\n" : text.c_str());
    return kOk;
  }
  nlohmann::json faults = nlohmann::json::array();
  for (std::size_t at = 0, end; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
    std::string line = text.substr(at, end - at);
    std::size_t count = line.rfind(' '), error = line.rfind(' ', count - 1);
    if (count == std::string::npos || error == std::string::npos) continue;
    faults.push_back({{"prefix", line.substr(0, error)},
                      {"errno", std::stoi(line.substr(error + 1))},
                      {"count", std::stoul(line.substr(count + 1))}});
  }
  ctx.printJson({{"faults", faults}});
  return kOk;
}

}  // namespace

void addFault(CLI::App& app, Action& action) {
  auto* fault = app.add_subcommand(
      "fault", "scripted refusals on the fabric daemon's driver, for every process using it");
  fault->require_subcommand(1);
  auto* addCmd = fault->add_subcommand(
      "add", "answer the next commands that start with PREFIX with ERRNO (xN: N of them)");
  static std::string prefix, count = "x1";
  static int error = 0;
  addCmd->add_option("PREFIX", prefix, "a command's first words, as \"lagmember_add po1\"")
      ->required();
  addCmd->add_option("ERRNO", error, "the errno to answer (0: succeed without effect)")
      ->required()
      ->check(CLI::Range(0, 4095));
  addCmd->add_option("COUNT", count, "xN: how many commands (default x1)");
  addCmd->callback(
      [&action] { action = [](Context& ctx) { return add(ctx, prefix, error, count); }; });
  fault->add_subcommand("list", "the scripted answers still pending")->callback([&action] {
    action = [](Context& ctx) { return list(ctx); };
  });
  fault->add_subcommand("clear", "drop every scripted answer")->callback([&action] {
    action = [](Context& ctx) {
      control(ctx, Type::kFaultClear, nullptr, 0);
      if (ctx.json())
        ctx.printJson({{"cleared", true}});
      else
        std::printf("scripted answers cleared\n");
      return kOk;
    };
  });
}

}  // namespace vornctl
