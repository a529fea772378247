#include "files/design/design_report.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <filesystem>

#include "files/design/designed_zone.h"
#include "files/design/distortion_map.h"
#include "files/words/markup.h"
#include "geomath/base/angle.h"
#include "geomath/proj/methods/utm_proj.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

constexpr double kPpm = 1e6;

std::string Ppm(double value) { return fmt::format("{:.2f}", value * kPpm); }

std::string CriterionInWords(const DesignCriterion& criterion) {
  switch (criterion.measure) {
    case DesignMeasure::largest:
      return "the largest distortion";
    case DesignMeasure::percentile:
      return fmt::format("the distortion that {:g} % of the ground does not exceed",
                         criterion.percentile * 100);
    case DesignMeasure::range:
      return "the range of distortions";
    default:
      return "the weighted mean square of distortions";
  }
}

// The same figures of the zone and of every grid beside it.
struct FigureTable {
  std::vector<std::string> header = {"ppm"};
  std::vector<std::vector<std::string>> rows;
};

FigureTable Figures(const DesignedZone& zone) {
  std::vector<DistortionFigures> all;
  FigureTable table;
  const auto add = [&](const std::string& name, const TGeoProj& projection) {
    table.header.push_back(name);
    all.emplace_back(DistortionsOf(projection, *zone.ground), zone.ground->weight);
  };
  add("this zone", *zone.Zone().Projection(zone.ground->ellipsoid));
  for (const GridBeside& grid : zone.beside) add(grid.name, *grid.projection);
  const auto row = [&](const std::string& name, const auto& value) {
    table.rows.push_back({name});
    for (const DistortionFigures& figures : all) table.rows.back().push_back(value(figures));
  };
  row("smallest", [](const auto& f) { return Ppm(f.Least()); });
  row("largest", [](const auto& f) { return Ppm(f.Greatest()); });
  row("mean", [](const auto& f) { return Ppm(f.Mean()); });
  row("root mean square", [](const auto& f) { return Ppm(f.RootMeanSquare()); });
  for (const double share : {0.5, 0.9, 0.95, 0.99, 1.0})
    row(fmt::format("{:g} % within", share * 100),
        [share](const auto& f) { return Ppm(f.Percentile(share)); });
  for (const double limit : {5e-6, 10e-6, 20e-6, 50e-6, 100e-6})
    row(fmt::format("share within {:g} ppm", limit * kPpm),
        [limit](const auto& f) { return fmt::format("{:.1f} %", f.ShareWithin(limit) * 100); });
  return table;
}

const std::vector<std::string> kFamilyHeader = {
    "family", "axis", "scale", "best, ppm", "published, ppm", "axis in the middle, ppm"};

std::vector<std::vector<std::string>> FamilyRows(const DesignedZone& zone) {
  std::vector<std::vector<std::string>> rows;
  for (const FamilyDesign& family : zone.design.families)
    rows.push_back({FamilyName(family.rounded.family), AxisInWords(family.rounded),
                    fmt::format("{:.9g}", family.rounded.scale), Ppm(family.value),
                    Ppm(family.roundedValue), Ppm(family.centredValue)});
  return rows;
}

bool AxisIsOutside(const DesignedZone& zone) {
  const auto outside = [](const std::vector<double>& x, double at) {
    const auto [low, high] = std::minmax_element(x.begin(), x.end());
    return at < *low || at > *high;
  };
  const ZoneDefinition& z = zone.Zone();
  const Ground& ground = *zone.ground;
  const double near = ground.l.front();
  const bool lon = outside(ground.l, near + std::remainder(z.lon0 - near, kTwoPi));
  const bool lat = outside(ground.b, z.lat0);
  switch (z.family) {
    case ZoneFamily::transverseMercator:
      return lon;
    case ZoneFamily::lambert:
      return lat;
    default:
      return lon || lat;
  }
}

// A transverse Mercator or Lambert zone that is nearly as good as an oblique one.
const FamilyDesign* SimplerFamily(const DesignedZone& zone) {
  constexpr double kNearly = 1.05;
  const auto isSimple = [](const FamilyDesign& family) {
    return family.rounded.family == ZoneFamily::transverseMercator ||
           family.rounded.family == ZoneFamily::lambert;
  };
  const std::vector<FamilyDesign>& families = zone.design.families;
  if (isSimple(families.front())) return nullptr;
  const auto simple = std::find_if(families.begin(), families.end(), isSimple);
  if (simple == families.end() || simple->roundedValue > kNearly * families.front().roundedValue)
    return nullptr;
  return &*simple;
}

std::string SplitInWords(const DesignedZone& zone) {
  const ZoneSplit& split = *zone.split;
  if (split.zones.empty())
    return "no number of zones up to 40 does either: the ground is too steep within them";
  return fmt::format("{} zones would, cut {} the long side", split.zones.size(),
                     split.across ? "along" : "across");
}

std::string TextTable(const std::vector<std::string>& header,
                      const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths(header.size(), 0);
  const auto measure = [&](const std::vector<std::string>& row) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  };
  measure(header);
  for (const auto& row : rows) measure(row);
  std::string text;
  const auto line = [&](const std::vector<std::string>& row) {
    for (std::size_t i = 0; i < row.size(); ++i)
      text += i == 0 ? fmt::format("{:<{}}", row[i], widths[i])
                     : fmt::format("  {:>{}}", row[i], widths[i]);
    text += "\n";
  };
  line(header);
  for (const auto& row : rows) line(row);
  return text;
}

std::string Block(const char* id, const std::string& text) {
  return text.empty() ? "<p>None: no method of PROJ describes it.</p>\n"
                      : fmt::format("<pre id=\"{}\">{}</pre>\n", id, Escaped(text));
}

std::string SplitSection(const DesignedZone& zone) {
  if (!zone.split || zone.split->zones.empty()) return "";
  std::vector<std::vector<std::string>> rows;
  for (std::size_t i = 0; i < zone.split->zones.size(); ++i) {
    const SplitZone& part = zone.split->zones[i];
    rows.push_back({fmt::format("{}. {}", i + 1, ZoneInWords(part.zone)), Ppm(part.value),
                    std::to_string(part.points.size())});
  }
  return "<h2>Zones that would meet the limit</h2>\n" +
         Table("zones", std::vector<std::string>{"zone", "within, ppm", "points"}, rows);
}

constexpr const char* kMapStyle =
    ".contour{fill:none;stroke:#222;stroke-width:1.5}.bar-in{fill:#26a269}.bar-out{fill:#c64600}"
    "pre{background:#f4f4f4;padding:.7em;overflow-x:auto;font-size:13px}";

}  // namespace

GridBeside UtmBeside(const Ground& ground) {
  const auto [west, east] = std::minmax_element(ground.l.begin(), ground.l.end());
  const double middle = std::remainder((*west + *east) / 2, kTwoPi) * kDegPerRad;
  const int zone = std::clamp(static_cast<int>(std::floor((middle + 180) / 6)), 0, 59) + 1;
  const bool south = ground.b.front() < 0;
  return {fmt::format("UTM {}{}", zone, south ? "S" : "N"),
          std::make_shared<TUTMProj>(ground.ellipsoid.a, ground.ellipsoid.invF,
                                     (6 * zone - 183) * kRadPerDeg, 0.9996, 0, 500e3,
                                     south ? 10000e3 : 0)};
}

std::vector<double> DistortionsOf(const TGeoProj& projection, const Ground& ground) {
  std::vector<double> deltas(ground.b.size());
  LinearDistortion(projection, ground.b.data(), ground.l.data(), ground.h.data(), deltas.data(),
                   deltas.size());
  return deltas;
}

bool DesignedZone::Meets(const DistortionFigures& figures) const {
  const bool percentile = criterion.measure == DesignMeasure::percentile;
  return !limit || figures.Percentile(percentile ? criterion.percentile : 1) <= *limit;
}

std::vector<std::string> DesignWarnings(const DesignedZone& zone) {
  std::vector<std::string> warnings;
  if (zone.split)
    warnings.push_back(
        fmt::format("No single zone meets {:g} ppm; {}.", *zone.limit * kPpm, SplitInWords(zone)));
  if (AxisIsOutside(zone))
    warnings.push_back(
        "The axis lies outside of the ground, which slopes: whoever checks the zone "
        "should know that this is meant.");
  if (const FamilyDesign* simple = SimplerFamily(zone))
    warnings.push_back(
        fmt::format("A {} zone, which is simpler, is only {} ppm worse ({} instead of {}).",
                    FamilyName(simple->rounded.family),
                    Ppm(simple->roundedValue - zone.design.families.front().roundedValue),
                    Ppm(simple->roundedValue), Ppm(zone.design.families.front().roundedValue)));
  warnings.insert(warnings.end(), zone.ground->notes.begin(), zone.ground->notes.end());
  return warnings;
}

std::string DesignText(const DesignedZone& zone) {
  const FigureTable figures = Figures(zone);
  const FamilyDesign& best = zone.design.families.front();
  std::string text = ZoneInWords(zone.Zone()) + "\n";
  text += fmt::format("Made small: {}; {} ppm, of which rounding costs {} ppm\n\n",
                      CriterionInWords(zone.criterion), Ppm(best.roundedValue),
                      Ppm(best.roundedValue - best.value));
  text +=
      TextTable(figures.header, figures.rows) + "\n" + TextTable(kFamilyHeader, FamilyRows(zone));
  if (zone.split && !zone.split->zones.empty()) {
    text += "\nZones that would meet the limit\n";
    for (const SplitZone& part : zone.split->zones)
      text += fmt::format("{} ({} ppm)\n", ZoneInWords(part.zone), Ppm(part.value));
  }
  return text;
}

std::string DesignPage(const DesignedZone& zone) {
  const Ground& ground = *zone.ground;
  const FamilyDesign& best = zone.design.families.front();
  const std::vector<double> deltas =
      DistortionsOf(*zone.Zone().Projection(ground.ellipsoid), ground);
  const ZoneTexts texts = WriteZone(zone.name, zone.Zone(), ground);
  std::string page = PageHead("Zone: " + zone.name, kMapStyle);
  for (const std::string& warning : DesignWarnings(zone))
    page += "<p class=\"warning\">" + Escaped(warning) + "</p>\n";
  page += fmt::format("<p class=\"verdict usable\">{}</p>\n", Escaped(ZoneInWords(zone.Zone())));
  page += fmt::format(
      "<p>Made small: {}. It is {} ppm; the best axis and scale before rounding have {} ppm.</p>\n",
      CriterionInWords(zone.criterion), Ppm(best.roundedValue), Ppm(best.value));
  page += "<h2>Distortion</h2>\n" + DistortionMap(ground, deltas, zone.limit);
  page += fmt::format(
      "<p>Grid distance over ground distance, less 1: blue where the grid is too short, "
      "red where it is too long{}.</p>\n",
      zone.limit ? fmt::format("; the line is {:g} ppm", *zone.limit * kPpm) : "");
  page += DistortionHistogram(ground, deltas, zone.limit);
  const FigureTable figures = Figures(zone);
  page += "<h2>Figures</h2>\n" + Table("figures", figures.header, figures.rows);
  page +=
      "<h2>Families</h2>\n<p>What each family has of what was made small: with its best axis and "
      "scale, rounded to be published, and with its axis through the middle.</p>\n" +
      Table("families", kFamilyHeader, FamilyRows(zone)) + SplitSection(zone);
  page += "<h2>Definition</h2>\n<h3>System file</h3>\n" + Block("system", texts.system);
  page +=
      "<h3>WKT 2</h3>\n" + Block("wkt", texts.wkt) + "<h3>PROJ</h3>\n" + Block("proj", texts.proj);
  std::string files;
  for (const std::string& file : ground.files)
    files += (files.empty() ? "" : ", ") + std::filesystem::path(file).filename().string();
  page += "<h2>Origin</h2>\n" +
          Table("origin", std::vector<std::string>{},
                {{"made", fmt::format("{:%Y-%m-%d %H:%M} UTC", fmt::gmtime(std::time(nullptr)))},
                 {"program", "geomath " GEOMATH_VERSION},
                 {"ground", files},
                 {"points", std::to_string(zone.design.used)},
                 {"distortion", "k R/(R + h) - 1, R the Gaussian mean radius of the place"}});
  return page + "</body></html>\n";
}

}  // namespace geomath_files
