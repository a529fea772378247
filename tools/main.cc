#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <functional>
#include <map>

#include "files/gdal/use_gdal.h"
#include "files/words/user_error.h"
#include "tools/command.h"
#include "tools/exit_status.h"
#include "tools/usage.h"

using namespace geomath_files;
using namespace geomath_files::program;

namespace {

int Run(int argc, char** argv) {
  CLI::App app("Geodetic conversions for surveying and mapping", "geomath");
  app.require_subcommand(1);
  app.set_version_flag("--version", "geomath " GEOMATH_VERSION, "Print the version and exit");
  std::map<const CLI::App*, std::function<int()>> runs;
  for (const Command& command : Commands()) {
    CLI::App* arguments = app.add_subcommand(command.name, command.summary);
    runs[arguments] = command.prepare(*arguments);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);  // help or version, printed
    throw UserError(UsageProblem(app, error));
  }
  const int status = runs.at(app.get_subcommands().front())();
  if (std::fflush(stdout) != 0 || std::ferror(stdout))
    throw UserError("standard output: writing failed");
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  UseGdal();
  try {
    return Run(argc, argv);
  } catch (const UserError& error) {
    std::fprintf(stderr, "geomath: %s\n", error.what());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "geomath: stopped: %s\n", error.what());
  }
  return kExitStopped;
}
