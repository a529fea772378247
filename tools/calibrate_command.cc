#include "tools/calibrate_command.h"

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "files/exchange/proj_pipeline.h"
#include "files/points/point_source.h"
#include "files/site/calibration.h"
#include "files/site/calibration_report.h"
#include "files/site/control_file.h"
#include "files/system/system_file.h"
#include "files/words/output_file.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"
#include "tools/epoch_option.h"
#include "tools/exit_status.h"
#include "tools/given_system.h"

namespace geomath_files::program {
namespace {

struct CalibrateOptions {
  ControlSource control;
  std::string system, output, report, placement = "centre", columns, unit;
  bool fixedScale = false, pipeline = false, noHeader = false, sigmaKnown = false;
  std::vector<double> common;
  EpochOption epoch;
};

zel_cs::geomath::AdjustmentOptions AdjustmentOf(const CalibrateOptions& options) {
  zel_cs::geomath::AdjustmentOptions adjustment;
  if (options.fixedScale) adjustment.model = zel_cs::geomath::SiteModel::rigid;
  adjustment.sigmaKnown = options.sigmaKnown;
  for (std::size_t k = 0; k < options.common.size(); ++k) {
    if (!(options.common[k] >= 0 && std::isfinite(options.common[k])))
      throw UserError("--sigma-common: a standard deviation is not negative");
    adjustment.common[k] = options.common[k];
  }
  return adjustment;
}

int Calibrate(const CalibrateOptions& options) {
  ControlSource from = options.control;
  if (options.noHeader) {
    from.columns = NamesOfAllColumns(options.columns);
  } else if (!options.columns.empty()) {
    throw UserError("--columns: goes with --no-header; the header of a file names its columns");
  }
  const std::string& path = from.path;
  RefuseReadingTwice({path, options.system});
  const bool onOutput = options.output == "-" || options.report == "-";
  if (onOutput && options.pipeline)
    throw UserError("--pipeline: is printed on standard output, where another output goes");
  const std::string text = GivenSystemText(options.system);
  const std::string systemName = InputName(options.system);
  const auto system = ParseSystem(text, systemName, ProjectionNeed::optional);
  std::vector<std::string> inputs = system->Files();
  inputs.insert(inputs.end(), {path, options.system});
  RefuseOverwriting(inputs, {options.output, options.report});
  from.units = options.unit.empty() ? system->Units() : ParseGridUnits(options.unit);
  const ControlTable control = ReadControl(from);
  if (!control.note.empty()) std::fprintf(stderr, "geomath: %s\n", control.note.c_str());
  const Calibration calibration(
      *system, control.points,
      {options.fixedScale, options.placement == "first",
       DateOf(options.epoch, *system, options.system), AdjustmentOf(options)},
      from.units);
  const std::string pipeline = options.pipeline ? ProjPipeline(calibration) + "\n" : "";
  std::vector<NamedText> files = {
      {options.output, calibration.SystemText(text, options.system, options.output)}};
  if (!options.report.empty()) {
    files.push_back({options.report, CalibrationPage(calibration, {InputName(path), systemName})});
  }
  WriteTextFiles(files);
  std::fputs((CalibrationText(calibration) + pipeline).c_str(), onOutput ? stderr : stdout);
  return kExitDone;
}

constexpr const char* kFooter =
    "Solves a site calibration: a similarity in the plane of the system's projection and an\n"
    "inclined plane for the heights. A system without projection gets a stereographic one,\n"
    "centred on the site. CONTROL has the columns lat, lon, h (global), local_n, local_e,\n"
    "local_h and use (none, vertical, horizontal, both, rotation, or 0 to 4), and may have "
    "name;\n"
    "other usual names, such as Latitude or Rechtswert, are taken where one thing only is "
    "meant.\n"
    "The output is a system file for \"geomath convert\".";

}  // namespace

std::function<int()> PrepareCalibrate(CLI::App& arguments) {
  const auto options = std::make_shared<CalibrateOptions>();
  arguments.footer(kFooter);
  arguments
      .add_option("CONTROL", options->control.path,
                  "control points: CSV, GeoPackage, …; - for CSV from standard input")
      ->required();
  arguments.add_option("--system", options->system, kSystemHelp)->required();
  arguments
      .add_option("-o,--output", options->output,
                  "system file with the calibration; - for standard output, and the "
                  "summary goes to standard error")
      ->required();
  arguments.add_option("--report", options->report,
                       "HTML page with tables and a map; - for standard output");
  arguments.add_flag("--pipeline", options->pipeline,
                     "also print the site as a PROJ pipeline, on the last line");
  arguments.add_flag("--fixed-scale", options->fixedScale, "keep the scale at 1");
  arguments.add_flag("--sigma-known", options->sigmaKnown,
                     "the standard deviations of the control are what they say, and are tested; "
                     "else they are weights, and their size is estimated");
  arguments
      .add_option("--sigma-common", options->common,
                  "standard deviations north, east and up, metres, of an error that all points "
                  "share, such as the base station's")
      ->delimiter(',')
      ->expected(3)
      ->allow_extra_args(false);
  arguments
      .add_option("--placement", options->placement,
                  "where a projection of the site's own stands: centre (of the extent, the "
                  "default) or first (control point)")
      ->check(CLI::IsMember({"centre", "first"}));
  arguments.add_flag("--no-header", options->noHeader,
                     "the CSV control file has no header; --columns names all its columns");
  arguments.add_option("--columns", options->columns,
                       "the columns of a control file without header, in their order");
  arguments.add_option(
      "--unit", options->unit,
      "unit of the local coordinates instead of the system's: m, ft, us-ft, …; two "
      "for the plane and the heights: us-ft,ft");
  arguments.add_option("--layer", options->control.layer,
                       "layer of the input, when it has several");
  arguments.add_flag("--decimal-comma", options->control.decimalComma,
                     "numbers of the input have a decimal comma, where that cannot be recognised");
  AddEpoch(arguments, options->epoch);
  return [options] { return Calibrate(*options); };
}

}  // namespace geomath_files::program
