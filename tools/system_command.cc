#include "tools/system_command.h"

#include <fmt/format.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "files/epsg/epsg_system.h"
#include "files/words/number_text.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"
#include "tools/epoch_option.h"
#include "tools/exit_status.h"
#include "tools/given_system.h"
#include "tools/operation_options.h"

namespace geomath_files::program {
namespace {

struct SystemOptions {
  std::string code, find, output, fromFrame, toFrame, epoch;
  OperationOptions operation;
  bool noDatum = false;
};

// The place of --find when its text is one.
int MakeSystem(const SystemOptions& options) {
  if (!options.find.empty()) {
    std::fputs(FindEpsgSystems(options.find, PlaceIn(options.find).position).c_str(), stdout);
    return kExitDone;
  }
  if (options.code.empty()) throw UserError("give --epsg CODE; --find PLACE|NAME finds one");
  const std::string code = CodeOf("--epsg", options.code);
  DatumWish wish{options.noDatum, {}, NearOf(options.operation.near)};
  wish.grids = options.operation.grids;
  wish.output = options.output;
  wish.fromFrame = options.fromFrame;
  wish.toFrame = options.toFrame;
  wish.date = GivenDate(options.epoch);
  if (!options.operation.operation.empty())
    wish.operation = CodeOf("--operation", options.operation.operation);
  if (options.operation.list) {
    std::fputs(ListEpsgOperations(code, wish).c_str(), stdout);
    return kExitDone;
  }
  if (options.output.empty()) throw UserError("name the system file with --output FILE");
  const EpsgSystem system = MakeEpsgSystem(code, wish);
  if (wish.date && !system.document.contains("frame"))
    throw UserError("--epoch: no frame of the system moves; --from-frame names one that does");
  const std::string text = system.document.dump(2) + "\n";
  WriteTextFiles({{options.output, text}});
  TellSystem(system);
  return kExitDone;
}

}  // namespace

std::function<int()> PrepareSystem(CLI::App& arguments) {
  const auto options = std::make_shared<SystemOptions>();
  arguments.footer(
      "Takes a projected system from the EPSG registry, in PROJ's database on this machine: its\n"
      "projection, ellipsoid and axes, and a transformation to WGS 84 or to what the registry "
      "takes\n"
      "for it: the one that covers the system's area, and of these the most accurate whose files\n"
      "are found. Standard error says which. Files of grids are looked for in --grids, in\n"
      "GEOMATH_GRIDS (folders separated by colons), beside the output and in PROJ's folders.\n"
      "Grid coordinates have the units of the registry.");
  auto* code =
      arguments.add_option("--epsg", options->code, "code of the system: 27700 or EPSG:27700");
  arguments
      .add_option("--find", options->find,
                  "only list the projected systems at a place, LAT,LON, or of a name: \"lower "
                  "saxony\"")
      ->excludes(code);
  arguments.add_option("-o,--output", options->output,
                       "system file, replaced if it exists; - for standard output");
  const auto [operation, near] =
      AddOperationOptions(arguments, options->operation, "the transformation to WGS 84");
  auto* noDatum = arguments
                      .add_flag("--no-datum", options->noDatum,
                                "no transformation: positions are those of the system's own datum")
                      ->excludes(operation)
                      ->excludes(near);
  auto* from = arguments.add_option(
      "--from-frame", options->fromFrame,
      "the frame that positions come in, instead of WGS 84: ITRF2020, ITRF2014, …; for systems on "
      "ETRS89, NAD83(2011), NAD83(CSRS), GDA94, GDA2020, NZGD2000, or reached from these");
  from->excludes(noDatum);
  arguments
      .add_option("--to-frame", options->toFrame,
                  "with --from-frame: the realization of the system's datum, such as ETRF2014")
      ->needs(from);
  arguments.add_option("--epoch", options->epoch,
                       "date of all positions, which is written into the file: 2026.9 or "
                       "2026-11-23");
  return [options] { return MakeSystem(*options); };
}

}  // namespace geomath_files::program
