#include "tools/design_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "files/design/design_problem.h"
#include "files/design/design_report.h"
#include "files/design/designed_zone.h"
#include "files/epsg/epsg_system.h"
#include "files/system/system_file.h"
#include "files/words/name_match.h"
#include "files/words/number_text.h"
#include "files/words/output_file.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"
#include "tools/exit_status.h"
#include "tools/interrupt.h"
#include "tools/operation_options.h"
#include "tools/progress.h"

using namespace zel_cs::geomath;

namespace geomath_files::program {
namespace {

struct DesignArguments {
  GroundChoice ground;
  std::string name = "low-distortion zone", criterion = "square", limit, output, report;
  std::vector<std::string> families, beside;
};

// "20ppm", "20 ppm" or "20": the distortion.
std::optional<double> LimitOf(std::string text) {
  if (text.empty()) return std::nullopt;
  if (LowerCase(text).ends_with("ppm")) text.resize(text.size() - 3);
  const ParsedNumber ppm = ParseNumber(text);
  if (!ppm || !(ppm.value > 0))
    throw UserError("--limit: parts per million above 0 belong there, such as 20ppm");
  return ppm.value * 1e-6;
}

DesignCriterion CriterionOf(const std::string& text) {
  if (text == "square") return {DesignMeasure::square};
  if (text == "largest") return {DesignMeasure::largest};
  if (text == "range") return {DesignMeasure::range};
  const ParsedNumber percent = text.starts_with("p") ? ParseNumber(text.substr(1)) : ParsedNumber{};
  if (!text.starts_with("p") || !percent || !(percent.value > 0 && percent.value <= 100))
    throw UserError("--criterion: square, largest, range, or a percentile such as p95");
  return {DesignMeasure::percentile, percent.value / 100};
}

std::vector<ZoneFamily> FamiliesOf(const std::vector<std::string>& names) {
  struct Row {
    const char* name;
    ZoneFamily family;
  };
  static constexpr Row kRows[] = {{"tm", ZoneFamily::transverseMercator},
                                  {"lambert", ZoneFamily::lambert},
                                  {"oblique", ZoneFamily::obliqueMercator},
                                  {"stereographic", ZoneFamily::stereographic}};
  std::vector<ZoneFamily> families;
  for (const Row& row : kRows)
    if (names.empty() || std::find(names.begin(), names.end(), row.name) != names.end())
      families.push_back(row.family);
  return families;
}

GridBeside BesideOf(const std::string& code) {
  const std::string digits = CodeOf("--beside", code);
  const EpsgSystem made = MakeEpsgSystem(digits, {.none = true});
  // The projection lives in its system.
  const std::shared_ptr<const CoordinateSystem> system =
      ParseSystem(made.document.dump(), "EPSG:" + digits);
  return {system->Name(), std::shared_ptr<const TGeoProj>(system, system->Projection())};
}

void RequireDone(DesignStatus status, const DesignArguments& options) {
  if (status == DesignStatus::stopped) throw UserError("interrupted; nothing is written");
  if (status != DesignStatus::done)
    throw UserError(options.ground.heights + ": " + DesignProblem(status));
}

int Design(const DesignArguments& options) {
  if (options.output.empty() && options.report.empty())
    throw UserError("name the system file with --output FILE, or the report with --report FILE");
  DesignedZone zone;
  zone.name = options.name;
  zone.limit = LimitOf(options.limit);
  zone.criterion = CriterionOf(options.criterion);
  const Ground ground = ReadGround(options.ground);
  zone.ground = &ground;
  RefuseOverwriting(ground.files, {options.output, options.report});
  zone.beside.push_back(UtmBeside(ground));
  for (const std::string& code : options.beside) zone.beside.push_back(BesideOf(code));

  CatchInterrupts();
  Progress progress("steps");
  long long steps = 0;
  DesignOptions design;
  design.ellipsoid = ground.ellipsoid;
  design.criterion = zone.criterion;
  design.families = FamiliesOf(options.families);
  for (const GridBeside& grid : zone.beside) design.neighbours.push_back(grid.projection.get());
  design.progress = [&](double done) {
    progress.Update(++steps, done);
    return !Interrupted();
  };
  zone.design = DesignZone(ground.Points(), design);
  RequireDone(zone.design.status, options);
  const DistortionFigures figures(DistortionsOf(*zone.Zone().Projection(ground.ellipsoid), ground),
                                  ground.weight);
  if (!zone.Meets(figures)) {
    zone.split = SplitZones(ground.Points(), design, *zone.limit);
    RequireDone(zone.split->status, options);
  }

  std::vector<NamedText> files;
  if (!options.output.empty())
    files.push_back({options.output, WriteZone(zone.name, zone.Zone(), ground).system});
  if (!options.report.empty()) files.push_back({options.report, DesignPage(zone)});
  WriteTextFiles(files);
  for (const std::string& warning : DesignWarnings(zone))
    std::fprintf(stderr, "geomath: %s\n", warning.c_str());
  const bool onOutput = options.output == "-" || options.report == "-";
  std::fputs(DesignText(zone).c_str(), onOutput ? stderr : stdout);
  return kExitDone;
}

}  // namespace

std::function<int()> PrepareDesign(CLI::App& arguments) {
  const auto options = std::make_shared<DesignArguments>();
  GroundChoice& ground = options->ground;
  arguments.footer(
      "Finds axis and scale of the projection whose grid distances are those on the ground as\n"
      "nearly as --criterion says, for each family, and rounds them to what people publish: axes\n"
      "to the minute, scales to six decimals, false coordinates unlike those of the grids beside.\n"
      "Where no single zone meets --limit, it says how many strips would. UTM is compared always.\n"
      "Exit status: 0 done, 2 stopped.");
  arguments
      .add_option("--heights", ground.heights,
                  "terrain: a raster in any system (GeoTIFF, ASCII, SRTM, DTED, …), or points with "
                  "lat, lon, h")
      ->required();
  arguments.add_option("--geoid", ground.geoid,
                       "geoid grid or model (.gfc), where heights are above the sea");
  arguments.add_option("--area", ground.area, "polygons in which the zone is to serve");
  auto* along = arguments.add_option("--along", ground.along, "lines along which it is to serve");
  arguments.add_option("--corridor", ground.corridor, "metres to both sides of --along (1000)")
      ->needs(along)
      ->check(CLI::PositiveNumber);
  arguments.add_option("--weights", ground.weights,
                       "importance: a raster, or the column of a file of points");
  arguments.add_option("--crs", ground.crs,
                       "geographic system of the zone, such as EPSG:6318; that of the raster, or "
                       "WGS 84, unless given");
  arguments.add_option("--layer", ground.layer, "layer of the points, when there are several");
  arguments.add_option("--limit", options->limit, "distortion to stay within, such as 20ppm");
  arguments.add_option("--criterion", options->criterion,
                       "what is made small: square (weighted, the default), largest, range, or a "
                       "percentile such as p95");
  arguments
      .add_option("--family", options->families,
                  "tm, lambert, oblique, stereographic; all unless given; may be repeated")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->check(CLI::IsMember({"tm", "lambert", "oblique", "stereographic"}));
  arguments
      .add_option("--beside", options->beside,
                  "EPSG code of a grid to compare with and to keep apart from, a state plane for "
                  "example; may be repeated")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  arguments.add_option("--name", options->name, "of the zone");
  arguments.add_option("-o,--output", options->output,
                       "system file, replaced if it exists; - for standard output");
  arguments.add_option("--report", options->report,
                       "HTML page with map, histogram and definition; - for standard output");
  return [options] { return Design(*options); };
}

}  // namespace geomath_files::program
