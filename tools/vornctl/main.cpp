// vornctl: runs the library's jobs by hand — bring a system up against the
// driver, read the driver's tables back, show the defaults the library
// computes, convert identifiers.
#include <cstdio>
#include <string>

#include "vornctl/Commands.h"

int main(int argc, char** argv) {
  CLI::App app{"vornctl: the Vorn hardware-support library's jobs by hand", "vornctl"};
  app.require_subcommand(1);
  // The global options go before or after the command, as people type them:
  // every subcommand hands the options it does not know to the application.
  app.fallthrough();
  app.set_version_flag("--version", "vornctl " VORN_VERSION);
  app.set_help_all_flag("--help-all", "print the help of every command and exit");
  std::string driver = "auto";
  bool json = false;
  app.add_option("--driver", driver,
                 "the driver: auto (the fabric daemon when VORN_FABRIC is set, else the "
                 "kernel's when /dev/fabric is present, else emulated), kernel, emulated (in "
                 "this process), or remote[=PATH] (the fabric daemon at PATH; default: "
                 "VORN_FABRIC, or where vorn-fabricd listens by default)")
      ->check(
          [](const std::string& value) {
            if (value == "auto" || value == "kernel" || value == "emulated" || value == "remote" ||
                (value.rfind("remote=", 0) == 0 && value.size() > 7))
              return std::string();
            return "auto, kernel, emulated, remote or remote=PATH: " + value;
          },
          "DRIVER")
      ->capture_default_str();
  app.add_flag("--json", json, "one JSON document on standard output, for scripts");

  std::vector<std::string> emuScript;
  app.add_option("--emu-answer", emuScript, "scripted emulator answers keyword=errno[:count]")
      ->group("");  // for tests, not in the help
  vornctl::Action action;
  vornctl::addBringup(app, action);
  vornctl::addDevices(app, action);
  vornctl::addTrace(app, action);
  vornctl::addCopp(app, action);
  vornctl::addId(app, action);
  vornctl::addLags(app, action);
  vornctl::addThresholds(app, action);
  vornctl::addDriverServices(app, action);
  vornctl::addFault(app, action);

  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp& e) {
    return app.exit(e);
  } catch (const CLI::CallForAllHelp& e) {
    return app.exit(e);
  } catch (const CLI::CallForVersion& e) {
    return app.exit(e);
  } catch (const CLI::ParseError& e) {
    // Name a mistyped command rather than only saying one is missing.
    for (int i = 1; i < argc; ++i) {
      std::string word = argv[i];
      if (word.rfind("-", 0) == 0) {
        if (word == "--driver" || word == "--emu-answer") ++i;  // skip the option's value
        continue;
      }
      std::string names;
      bool known = false;
      for (const CLI::App* sub : app.get_subcommands([](CLI::App*) { return true; })) {
        names += (names.empty() ? "" : ", ") + sub->get_name();
        known = known || sub->get_name() == word;
      }
      if (!known) {
        std::fprintf(stderr, "vornctl: %s: not a command (commands: %s)\n", word.c_str(),
                     names.c_str());
        return vornctl::kBadInput;
      }
      break;
    }
    std::fprintf(stderr, "vornctl: %s\n", e.what());
    return vornctl::kBadInput;
  }

  try {
    vornctl::Context context(vornctl::driverChoiceOf(driver), json);
    context.emulatorScriptIs(emuScript);
    return action(context);
  } catch (const vornctl::BadInput& e) {
    std::fprintf(stderr, "vornctl: %s\n", e.what());
    return vornctl::kBadInput;
  } catch (const vornctl::Refusal& e) {
    std::fprintf(stderr, "vornctl: %s\n", e.what());
    return vornctl::kRefused;
  }
}
