#include "files/site/calibration_report.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <span>

#include "files/site/site_judgement.h"
#include "files/site/uncertainty_map.h"
#include "files/system/projection_names.h"
#include "files/words/markup.h"
#include "geomath/base/angle.h"
#include "geomath/local/plane_rotation.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

constexpr const char* kUseNames[] = {"none", "vertical", "horizontal", "both", "rotation"};

// A cell: empty for what is not computed (NaN, DBL_MAX); lengths in the unit.
std::string Cell(double value, int decimals, const LengthUnit& unit = {}) {
  if (!std::isfinite(value) || std::abs(value) == DBL_MAX) return "";
  return fmt::format("{:.{}f}", value / unit.metres, decimals);
}

// A length in words, to a tenth of a millimetre.
std::string LengthIn(double metres, const LengthUnit& unit) {
  return fmt::format("{:.4f} {}", metres / unit.metres, unit.Sign());
}

// "m", or both units where they differ: "US ft, heights ft".
std::string SignsOf(const GridUnits& units) {
  const std::string plane = units.plane.Sign(), height = units.height.Sign();
  return plane == height ? plane : plane + ", heights " + height;
}

std::string UnitsInWords(const GridUnits& units) {
  return units.AreMetres() ? "metres" : SignsOf(units);
}

struct ParameterRow {
  std::string name;
  std::string value, deviation;
};

std::vector<ParameterRow> ParameterRows(const Calibration& calibration) {
  std::vector<ParameterRow> rows;
  const GridUnits& in = calibration.Units();
  const CalibrationDeviations& d = calibration.Check().Deviations();
  const LocalToGrid& site = calibration.Site();
  const auto plane = [&](int i) { return site.GetPlaneParam(i, 0); };
  const auto height = [&](int i) { return site.GetHeightParam(i, 0); };
  constexpr double kPpm = 1e6, kSeconds = 3600 * kDegPerRad;
  if (site.mode & LocalToGrid::kHorizontal) {
    rows.push_back(
        {"Shift N, " + in.plane.Sign(), Cell(plane(0), 4, in.plane), Cell(d.tN, 4, in.plane)});
    rows.push_back(
        {"Shift E, " + in.plane.Sign(), Cell(plane(1), 4, in.plane), Cell(d.tE, 4, in.plane)});
    rows.push_back({"Scale", Cell(plane(2), 10), Cell(d.scale, 10)});
    rows.push_back({"Scale - 1, ppm", Cell((plane(2) - 1) * kPpm, 3), Cell(d.scale * kPpm, 3)});
    constexpr double kNoTurn =
        5e-10 * kRadPerDeg;  // what prints as a full turn, or as none below 0
    const double turned = std::remainder(plane(3), kTwoPi);
    const double rotation = std::abs(turned) < kNoTurn ? 0 : plane(3);
    rows.push_back(
        {"Rotation, deg", Cell(rotation * kDegPerRad, 9), Cell(d.rotation * kDegPerRad, 9)});
    rows.push_back({"Rotation, arc-seconds", Cell(rotation == 0 ? 0 : turned * kSeconds, 3),
                    Cell(d.rotation * kSeconds, 3)});
  }
  if (site.mode & LocalToGrid::kVertical) {
    rows.push_back(
        {"Shift H, " + in.height.Sign(), Cell(height(0), 4, in.height), Cell(d.h0, 4, in.height)});
    rows.push_back({"Slope N, mm/km", Cell(height(1) * kPpm, 3), Cell(d.aN * kPpm, 3)});
    rows.push_back({"Slope E, mm/km", Cell(height(2) * kPpm, 3), Cell(d.aE * kPpm, 3)});
  }
  return rows;
}

const std::vector<std::string> kResidualHeader = {"point",     "use",       "res N",    "res E",
                                                  "res H",     "std N",     "std E",    "std H",
                                                  "without N", "without E", "without H"};

std::vector<std::string> ResidualRow(const Calibration& calibration, std::size_t i) {
  const IdenticalPoint& p = calibration.Points()[i];
  const PointCheck& c = calibration.Check().Points()[i];
  std::vector<std::string> row = {calibration.NameOf(i), kUseNames[p.use]};
  const GridUnits& in = calibration.Units();
  const auto add = [&](double north, double east, double height) {
    for (const double metres : {north, east}) row.push_back(Cell(metres, 4, in.plane));
    row.push_back(Cell(height, 4, in.height));
  };
  add(p.residualN, p.residualE, p.residualH);
  for (const double ratio : {c.standardN, c.standardE, c.standardH}) row.push_back(Cell(ratio, 2));
  add(c.predictedN, c.predictedE, c.predictedH);
  return row;
}

const std::vector<std::string> kParameterHeader = {"parameter", "value", "deviation"};

const std::vector<std::string> kCoordinateHeader = {
    "point", "lat", "lon", "h", "local_n", "local_e", "local_h", "grid N", "grid E", "H"};

std::vector<std::string> CoordinateRow(const Calibration& calibration, std::size_t i) {
  constexpr int kMetres = 4, kDegrees = 10;
  constexpr std::uint32_t kPlane = kHasNorth | kHasEast;
  const GridUnits& in = calibration.Units();
  std::vector<std::string> row = {calibration.NameOf(i)};
  for (std::size_t column = 0; column < std::size(kControlColumns); ++column) {
    const auto value = GetControl(calibration.Control()[i].given, column);
    const LengthUnit unit = UnitOfControl(column, in);
    row.push_back(value ? Cell(*value, column < 2 ? kDegrees : kMetres, unit) : "");
  }
  const IdenticalPoint& p = calibration.Points()[i];
  const bool placed = (p.globalFlags & kPlane) == kPlane;
  row.push_back(placed ? Cell(p.globalN, kMetres, in.plane) : "");
  row.push_back(placed ? Cell(p.globalE, kMetres, in.plane) : "");
  row.push_back(p.globalFlags & kHasHeight ? Cell(p.globalH, kMetres, in.height) : "");
  return row;
}

std::vector<std::vector<std::string>> AccuracyRows(const Calibration& calibration) {
  std::vector<std::vector<std::string>> rows;
  bool any = false;
  for (std::size_t i = 0; i < calibration.Control().size(); ++i) {
    rows.push_back({calibration.NameOf(i)});
    for (const auto& value : calibration.Control()[i].accuracy) {
      rows.back().push_back(value ? Cell(*value, 4) : "");
      any |= value.has_value();
    }
  }
  return any ? rows : std::vector<std::vector<std::string>>();
}

std::string FileNameOf(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}

std::string ProjectionDescription(const Calibration& calibration) {
  const ProjectionKind& kind = *FindProjection(calibration.ProjectionName());
  const std::vector<double> own = OwnProjectionValues(calibration);
  const std::vector<double>& values =
      calibration.System().Projection() ? calibration.System().Named().values : own;
  std::string text = kind.name;
  for (std::size_t i = 0; i < values.size(); ++i)
    text += fmt::format("{} {} {}", i == 0 ? ":" : ",", kind.parameters[i].name, values[i]);
  const Ellipsoid& on = calibration.Projection().GetEllipsoid();
  return text + fmt::format("; ellipsoid a {}, 1/f {}", on.a, on.invF);
}

std::vector<std::vector<std::string>> OriginRows(const Calibration& calibration,
                                                 const CalibrationFiles& files) {
  const std::string& name = calibration.System().Name();
  return {{"made", fmt::format("{:%Y-%m-%d %H:%M} UTC", fmt::gmtime(std::time(nullptr)))},
          {"program", "geomath " GEOMATH_VERSION},
          {"control", FileNameOf(files.control)},
          {"system", FileNameOf(files.system) + (name.empty() ? "" : ": " + name)},
          {"projection", ProjectionDescription(calibration)}};
}

std::vector<std::string> Estimates(const Calibration& calibration) {
  std::vector<std::string> lines;
  const GridUnits& in = calibration.Units();
  const CalibrationCheck& check = calibration.Check();
  if (const auto rms = calibration.Rms())
    lines.push_back("Horizontal rms " + LengthIn(*rms, in.plane));
  if (const auto angle = calibration.RotationError())
    lines.push_back(
        fmt::format("Estimated rotation error {:.3f} arc-seconds", *angle * 3600 * kDegPerRad));
  if (std::isfinite(check.HorizontalSigma()))
    lines.push_back("Standard deviation of a coordinate " +
                    LengthIn(check.HorizontalSigma(), in.plane));
  if (std::isfinite(check.VerticalSigma()))
    lines.push_back("Standard deviation of a height " + LengthIn(check.VerticalSigma(), in.height));
  const auto worst = [&](int point, const char* what, const std::string& misfit) {
    if (point < 0) return;
    lines.push_back(fmt::format("Fits worst {}: {}, {} from what the others predict", what,
                                calibration.NameOf(static_cast<std::size_t>(point)), misfit));
  };
  const auto at = [&](int i) { return check.Points()[static_cast<std::size_t>(std::max(i, 0))]; };
  worst(check.WorstHorizontal(), "horizontally",
        LengthIn(std::hypot(at(check.WorstHorizontal()).predictedN,
                            at(check.WorstHorizontal()).predictedE),
                 in.plane));
  worst(check.WorstVertical(), "in height",
        LengthIn(std::abs(at(check.WorstVertical()).predictedH), in.height));
  return lines;
}

// The largest of 1, 2, 5 times a power of ten that is not above `value`.
double RoundLength(double value) {
  const double power = std::pow(10, std::floor(std::log10(value)));
  for (const double step : {5.0, 2.0})
    if (step * power <= value) return step * power;
  return power;
}

std::string LengthText(double metres) {
  if (metres >= 1000) return fmt::format("{:g} km", metres / 1000);
  return metres < 1 ? fmt::format("{:g} mm", metres * 1000) : fmt::format("{:g} m", metres);
}

// Grid coordinates drawn with north up; lengths of the drawing are pixels.
class Map {
 public:
  explicit Map(const Calibration& calibration) : calibration_(calibration) {
    for (const IdenticalPoint& p : calibration.Points()) {
      if (!Drawn(p)) continue;
      const double n = p.globalN, e = p.globalE;
      north_ = std::max(north_, n);
      south_ = std::min(south_, n);
      east_ = std::max(east_, e);
      west_ = std::min(west_, e);
      if (HasResidual(p)) largest_ = std::max(largest_, std::hypot(p.residualN, p.residualE));
      ++count_;
    }
    const double extent = std::max({north_ - south_, east_ - west_, 1.0});
    perMetre_ = kSize / extent;
    if (largest_ > kNothing) vectorPerMetre_ = kLongestVector / largest_;
  }

  std::string Svg() const {
    if (count_ == 0) return "";
    const double height = (north_ - south_) * perMetre_ + 2 * kMargin + kLegend;
    const double width = std::max((east_ - west_) * perMetre_, kSize) + 2 * kMargin;
    std::string svg = fmt::format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" role=\"img\" aria-label=\"Map of the control "
        "points with residual vectors\" viewBox=\"0 0 {0:.0f} {1:.0f}\" width=\"{0:.0f}\" "
        "height=\"{1:.0f}\">\n"
        "<defs><marker id=\"head\" markerWidth=\"8\" markerHeight=\"8\" refX=\"6\" refY=\"3\" "
        "orient=\"auto\"><path d=\"M0,0 L7,3 L0,6 z\" class=\"head\"/></marker></defs>\n",
        width, height);
    for (std::size_t i = 0; i < calibration_.Points().size(); ++i) svg += Point(i);
    return svg + Legend(height - kLegend) + "</svg>\n";
  }

 private:
  static constexpr double kSize = 640, kMargin = 70, kLegend = 60, kLongestVector = 60;
  static constexpr double kNothing = 1e-9;  // metres: no vector is drawn

  static bool Drawn(const IdenticalPoint& p) {
    constexpr std::uint32_t kPlane = kHasNorth | kHasEast;
    return (p.globalFlags & kPlane) == kPlane;
  }
  static bool HasResidual(const IdenticalPoint& p) {
    return std::abs(p.residualN) < DBL_MAX && std::abs(p.residualE) < DBL_MAX;
  }

  std::string Point(std::size_t i) const {
    const IdenticalPoint& p = calibration_.Points()[i];
    if (!Drawn(p)) return "";
    const double x = kMargin + (p.globalE - west_) * perMetre_;
    const double y = kMargin + (north_ - p.globalN) * perMetre_;
    std::string svg = fmt::format(
        "<circle cx=\"{:.1f}\" cy=\"{:.1f}\" r=\"4\" class=\"{}\"/>"
        "<text x=\"{:.1f}\" y=\"{:.1f}\">{}</text>\n",
        x, y, kUseNames[p.use], x + 7, y + 14, Escaped(calibration_.NameOf(i)));
    if (HasResidual(p) && std::hypot(p.residualN, p.residualE) > kNothing) {
      // Residuals are in local axes: turned back to the grid's, as the map is.
      const auto [n, e] =
          PlaneRotation(calibration_.Site().GetPlaneParam(3, 0)).TurnBack(p.residualN, p.residualE);
      svg += fmt::format(
          "<line x1=\"{:.1f}\" y1=\"{:.1f}\" x2=\"{:.1f}\" y2=\"{:.1f}\" class=\"residual\" "
          "marker-end=\"url(#head)\"/>\n",
          x, y, x + e * vectorPerMetre_, y - n * vectorPerMetre_);
    }
    return svg;
  }

  static std::string Bar(double x, double y, double pixels, const std::string& cssClass,
                         const std::string& text) {
    return fmt::format(
        "<path d=\"M{0:.1f},{1:.1f} v8 h{2:.1f} v-8\" class=\"{3}\"/>"
        "<text x=\"{0:.1f}\" y=\"{4:.1f}\">{5}</text>\n",
        x, y, pixels, cssClass, y + 24, text);
  }

  std::string Legend(double y) const {
    const double map = RoundLength(0.25 * kSize / perMetre_);
    std::string svg = Bar(kMargin, y, map * perMetre_, "bar", LengthText(map));
    if (vectorPerMetre_ > 0) {
      const double vector = RoundLength(largest_);
      svg += Bar(kMargin + 0.5 * kSize, y, vector * vectorPerMetre_, "bar residual",
                 "residuals: " + LengthText(vector));
    }
    return svg;
  }

  const Calibration& calibration_;
  double north_ = -DBL_MAX, south_ = DBL_MAX, east_ = -DBL_MAX, west_ = DBL_MAX;
  double largest_ = 0, perMetre_ = 1, vectorPerMetre_ = 0;
  int count_ = 0;
};

const std::vector<std::string> kReliabilityHeader = {
    "point",    "checked N", "checked E", "checked H", "finds N",  "finds E", "finds H",
    "effect N", "effect E",  "effect H",  "misfit N",  "misfit E", "misfit H"};

std::vector<std::vector<std::string>> ReliabilityRows(const Calibration& calibration,
                                                      const SiteAdjustment& adjusted) {
  std::vector<std::vector<std::string>> rows;
  for (std::size_t i = 0; i < adjusted.Points().size(); ++i) {
    std::vector<std::string> row = {calibration.NameOf(i)};
    const auto cells = [&](double AdjustedCoordinate::*value, int decimals) {
      for (int c = 0; c < 3; ++c) row.push_back(Cell(adjusted.At(i, c).*value, decimals));
    };
    cells(&AdjustedCoordinate::redundancy, 2);
    cells(&AdjustedCoordinate::detectable, 3);
    cells(&AdjustedCoordinate::effect, 3);
    cells(&AdjustedCoordinate::predicted, 4);
    rows.push_back(row);
  }
  return rows;
}

// The verdict in words, its drawings and the numbers behind it.
std::string JudgementSection(const Calibration& calibration) {
  const SiteJudgement judgement(calibration);
  std::string section = "<h2>What it is worth</h2>\n";
  for (std::size_t i = 0; i < judgement.Verdict().size(); ++i)
    section += fmt::format("<p class=\"{}\">{}</p>\n",
                           i > 0                ? "remark"
                           : judgement.Usable() ? "verdict usable"
                                                : "verdict",
                           Escaped(judgement.Verdict()[i]));
  if (const std::string map = UncertaintyMap(calibration, judgement); !map.empty())
    section += map +
               "<p>Shading: the radius within which a position is certain (95 %, the site's "
               "own part). Ellipses: standard deviations, enlarged.</p>\n";
  if (const std::string plan = HeightPlan(calibration, judgement); !plan.empty())
    section +=
        plan + "<p>Shading: what the site adds to heights. Numbers: residuals of heights.</p>\n";
  if (!judgement.Adjusted()) return section;
  return section +
         "<p>From a least-squares adjustment of the same control, beside the calibration: the "
         "share "
         "of an error that shows (checked), the smallest error that a test finds (finds), what it "
         "does to the site if it is not found (effect), misfit to all other points (misfit); "
         "metres.</p>\n" +
         Table("reliability", kReliabilityHeader,
               ReliabilityRows(calibration, *judgement.Adjusted()));
}

constexpr const char* kMapStyle =
    "circle{fill:#1a5fb4}circle.none{fill:#999}circle.vertical{fill:#26a269}"
    "circle.rotation{fill:#c64600}.residual{stroke:#c01c28;stroke-width:1.5;fill:none}"
    ".head{fill:#c01c28}ellipse.sigma{fill:none;stroke:#813d9c;stroke-width:1.5}"
    "svg text.value{fill:#813d9c}.bar{stroke:#333;fill:none}.bar.residual{stroke:#c01c28}";

}  // namespace

std::string CalibrationText(const Calibration& calibration) {
  std::string text = fmt::format("{:<22}{:>18}{:>16}\n", "Parameter", "value", "deviation");
  for (const ParameterRow& row : ParameterRows(calibration))
    text += fmt::format("{:<22}{:>18}{:>16}\n", row.name, row.value, row.deviation);

  std::size_t widest = 8;
  for (std::size_t i = 0; i < calibration.Points().size(); ++i)
    widest = std::max(widest, calibration.NameOf(i).size());
  const auto line = [&](const auto& cells) {
    text += fmt::format("{:<{}} {:<10}", cells[0], widest, cells[1]);
    for (std::size_t i = 2; i < std::size(kResidualHeader); ++i)
      text += fmt::format(" {:>{}}", cells[i], i < 8 && i >= 5 ? 6 : 9);
    text += "\n";
  };
  const std::string units = SignsOf(calibration.Units());
  text += fmt::format(
      "\nResiduals (given minus computed, {0}), the same over their standard deviations, and the\n"
      "misfit to a calibration without the point ({0})\n",
      units);
  line(kResidualHeader);
  for (std::size_t i = 0; i < calibration.Points().size(); ++i) line(ResidualRow(calibration, i));
  text += "\n";
  for (const std::string& estimate : Estimates(calibration)) text += estimate + "\n";
  const SiteJudgement judgement(calibration);
  for (const std::string& sentence : judgement.Verdict()) text += sentence + "\n";
  for (const std::string& warning : calibration.Warnings()) text += "Warning: " + warning + "\n";
  return text;
}

std::string CalibrationPage(const Calibration& calibration, const CalibrationFiles& files) {
  std::string page = PageHead("Site calibration: " + FileNameOf(files.control), kMapStyle);
  for (const std::string& warning : calibration.Warnings())
    page += "<p class=\"warning\">" + Escaped(warning) + "</p>\n";
  page += JudgementSection(calibration) + "<h2>The calibration</h2>\n<ul>\n";
  for (const std::string& estimate : Estimates(calibration))
    page += "<li>" + Escaped(estimate) + "</li>\n";
  page += "</ul>\n" + Map(calibration).Svg();

  std::vector<std::vector<std::string>> parameters, residuals, coordinates;
  for (const ParameterRow& row : ParameterRows(calibration))
    parameters.push_back({row.name, row.value, row.deviation});
  for (std::size_t i = 0; i < calibration.Points().size(); ++i) {
    residuals.push_back(ResidualRow(calibration, i));
    coordinates.push_back(CoordinateRow(calibration, i));
  }
  const std::string units = Escaped(UnitsInWords(calibration.Units()));
  page += "<h2>Parameters</h2>\n" + Table("parameters", kParameterHeader, parameters);
  page += fmt::format(
              "<h2>Residuals</h2>\n<p>Given minus computed, {} (res); the same over their standard "
              "deviations (std); misfit to a calibration without the point (without).</p>\n",
              units) +
          Table("residuals", kResidualHeader, residuals);
  page +=
      fmt::format(
          "<h2>Coordinates</h2>\n<p>As given, degrees, metres and local ones in {0}; and in the "
          "grid, before the site: northing, easting, height in {0}.</p>\n",
          units) +
      Table("coordinates", kCoordinateHeader, coordinates);
  if (const auto accuracies = AccuracyRows(calibration); !accuracies.empty()) {
    std::vector<std::string> header = {"point"};
    header.insert(header.end(), std::begin(kAccuracyColumns), std::end(kAccuracyColumns));
    page +=
        "<h2>Accuracies</h2>\n<p>As given, metres.</p>\n" + Table("accuracies", header, accuracies);
  }
  page += "<h2>Origin</h2>\n" + Table("origin", {}, OriginRows(calibration, files));
  return page + "</body></html>\n";
}

}  // namespace geomath_files
