// vornctl trace FILE: a ring trace file decoded to text, oldest first.
#include <cstdio>

#include "Ringlog/RingFile.h"
#include "vornctl/Commands.h"

namespace vornctl {

void addTrace(CLI::App& app, Action& action) {
  auto* cmd = app.add_subcommand("trace", "decode a ring trace file, oldest record first");
  static std::string file;
  cmd->add_option("FILE", file, "the ring trace file")->required()->check(CLI::ExistingFile);
  cmd->callback([&action] {
    action = [](Context& ctx) {
      std::vector<Ringlog::DecodedRecord> records;
      std::string error;
      if (!Ringlog::readRingFile(file, records, error)) throw BadInput("FILE", error);
      if (ctx.json()) {
        nlohmann::json list = nlohmann::json::array();
        for (const auto& r : records) {
          nlohmann::json record = {{"sequence", r.sequence},
                                   {"time", Ringlog::formatWallTime(r.wallNs)},
                                   {"text", r.text}};
          if (r.block == Ringlog::DecodedRecord::Block::kClosed) record["elapsed_ns"] = r.elapsedNs;
          if (r.block == Ringlog::DecodedRecord::Block::kOpen) record["open"] = true;
          list.push_back(record);
        }
        ctx.printJson({{"file", file}, {"records", list}});
      } else {
        for (const auto& r : records) std::printf("%s\n", Ringlog::formatRecord(r).c_str());
      }
      return kOk;
    };
  });
}

}  // namespace vornctl
