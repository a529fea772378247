#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <functional>
#include <map>

#include "files/words/user_error.h"
#include "tools/command.h"
#include "tools/exit_status.h"

using namespace geomath_tools;

namespace {

int Run(int argc, char** argv) {
  CLI::App app("Geodetic conversions for surveying and mapping", "geomath");
  app.require_subcommand(1);
  std::map<const CLI::App*, std::function<int()>> runs;
  for (const Command& command : Commands()) {
    CLI::App* arguments = app.add_subcommand(command.name, command.summary);
    runs[arguments] = command.prepare(*arguments);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kExitDone : kExitStopped;
  }
  const int status = runs.at(app.get_subcommands().front())();
  if (std::fflush(stdout) != 0 || std::ferror(stdout))
    throw UserError("standard output: writing failed");
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const UserError& error) {
    std::fprintf(stderr, "geomath: %s\n", error.what());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "geomath: stopped: %s\n", error.what());
  }
  return kExitStopped;
}
