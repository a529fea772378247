#include "files/system/system_sections.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "files/system/ellipsoid_names.h"
#include "files/words/date_text.h"
#include "files/words/name_match.h"
#include "geomath/base/angle.h"
#include "geomath/chain/chain_uncertainty.h"

using namespace zel_cs::geomath;
using nlohmann::json;

namespace geomath_files {
namespace {

// What an ellipsoid of a planet or moon has; a figure in kilometres or feet is caught.
constexpr double kSmallestAxis = 1e5, kLargestAxis = 1e8;  // metres
constexpr double kLargestHeight = 1e5;                     // metres, of a site

constexpr AxisText kAxes[] = {
    {"NE", {true, 1, 1}},  {"NW", {true, 1, -1}},  {"SE", {true, -1, 1}},  {"SW", {true, -1, -1}},
    {"EN", {false, 1, 1}}, {"WN", {false, 1, -1}}, {"ES", {false, -1, 1}}, {"WS", {false, -1, -1}},
};

Ellipsoid ReadNamedEllipsoid(const JsonSection& section) {
  for (const char* other : {"a", "b", "invF"}) {
    if (section.Has(other))
      section.Fail(other, "cannot stand beside \"ellipsoid\": give one of them");
  }
  const std::string name = section.Text("ellipsoid", "the name of an ellipsoid");
  const NamedEllipsoid* row = FindEllipsoid(name);
  if (!row)
    section.Fail("ellipsoid", fmt::format("names the unknown ellipsoid \"{}\"; {}", Printable(name),
                                          SuggestName(name, EllipsoidNames())));
  return MakeEllipsoid(row->a, row->invF);
}

double ReadAxis(const JsonSection& section, const char* name, const char* what) {
  const double metres = section.Number(name, what);
  if (!(metres >= kSmallestAxis && metres <= kLargestAxis))
    section.Fail(name, fmt::format("is {}: the semi-axis in metres belongs there (WGS84: "
                                   "6378137.0)",
                                   metres));
  return metres;
}

const ProjectionKind& ReadKind(const ProjectionSection& source) {
  if (!source.object.is_object()) JsonSection(source.file, source.path, source.object, {});
  json name = json::object();
  for (const auto& [key, value] : source.object.items()) {
    if (SameName(key, "name")) name["name"] = value;
  }
  const JsonSection section(source.file, source.path, name, {"name"});
  const std::string text = section.Text("name", "the short name of a projection");
  const ProjectionKind* kind = FindProjection(text);
  if (!kind)
    section.Fail("name", fmt::format("is the unknown projection \"{}\"; {}", Printable(text),
                                     SuggestName(text, ProjectionNames())));
  return *kind;
}

double ReadAngle(const JsonSection& section, const std::string& name, double limit) {
  const double value = section.Number(name, "an angle in decimal degrees");
  if (std::abs(value) > limit)
    section.Fail(name, fmt::format("is {}: decimal degrees from -{} to {} belong there", value,
                                   limit, limit));
  return value;
}

double ReadTurn(const JsonSection& section, const std::string& name, const std::string& what,
                double turn) {
  const double value = section.Number(name, what);
  if (std::abs(value) > turn)
    section.Fail(name, fmt::format("is beyond a full turn: {} belongs there", what));
  return value;
}

double ReadFactor(const JsonSection& section, const std::string& name, const std::string& what) {
  const double value = section.Number(name, what);
  if (!(value > 0)) section.Fail(name, "must be above 0");
  return value;
}

double ReadParameter(const JsonSection& section, const ProjectionParameter& parameter) {
  const std::string& name = parameter.name;
  switch (parameter.unit) {
    case ParameterUnit::latitude:
      return ReadAngle(section, name, 90);
    case ParameterUnit::degrees:
      return ReadAngle(section, name, 360);
    case ParameterUnit::factor:
      return ReadFactor(section, name, "a scale factor");
    case ParameterUnit::metres:
      return section.Number(name, "a length in metres");
    case ParameterUnit::number:
      break;
  }
  return section.Number(name, "a number");
}

static_assert(std::size(kLocalizationKeys) == kPlaneKeys + kHeightKeys);
constexpr int kRotationKey = 3;  // in kLocalizationKeys

// The scale is given, or derived from the height of the site and the scale of the grid there.
void ReadGroundScale(const JsonSection& section, GridToGround& ground) {
  const char *height = "height", *factor = "gridScaleFactor";
  if (!section.Has(height) && !section.Has(factor)) {
    ground.scale = ReadFactor(section, "scale",
                              fmt::format("the scale from grid to ground (1 means unchanged), or "
                                          "\"{}\" with \"{}\",",
                                          height, section.Spelled(factor)));
    return;
  }
  if (section.Has("scale"))
    section.Fail("scale", fmt::format("cannot stand beside \"{}\" and \"{}\", which give it",
                                      height, section.Spelled(factor)));
  ground.flags |= GridToGround::kDeriveScale;
  ground.height = section.Number(height, "the height of the site in metres");
  if (!(std::abs(ground.height) <= kLargestHeight))
    section.Fail(height, fmt::format("is {}: the height of the site in metres belongs there",
                                     ground.height));
  ground.gridScaleFactor =
      ReadFactor(section, factor, "the scale factor of the projection at the site");
}

// A northing and an easting, both or none; false when they are absent.
bool ReadPlanePair(const JsonSection& section, const std::string& name, double& north,
                   double& east) {
  const std::string keys[] = {name + "N", name + "E"};
  if (!section.Has(keys[0]) && !section.Has(keys[1])) return false;
  north = section.Number(keys[0], "a length in metres");
  east = section.Number(keys[1], "a length in metres");
  return true;
}

}  // namespace

std::string ReadWord(const JsonSection& section, std::string_view key,
                     std::span<const std::string_view> known) {
  if (!section.Has(key)) return "";
  const std::vector<std::string> words(known.begin(), known.end());
  const std::string word = section.Text(key, "one of the words " + ListNames(words));
  if (std::find(words.begin(), words.end(), word) == words.end())
    section.Fail(key, fmt::format("is \"{}\"; {}", Printable(word), SuggestName(word, words)));
  return word;
}

Ellipsoid ReadEllipsoid(const JsonSection& section) {
  if (section.Has("ellipsoid")) return ReadNamedEllipsoid(section);
  Ellipsoid ellipsoid;
  ellipsoid.a =
      ReadAxis(section, "a", "the semi-major axis in metres, or \"ellipsoid\" with a name,");
  if (section.Has("b") && section.Has("invF"))
    section.Fail(
        "b", fmt::format("cannot stand beside \"{}\": give one of them", section.Spelled("invF")));
  if (section.Has("b")) {
    ellipsoid.b = ReadAxis(section, "b", "the semi-minor axis in metres");
    if (ellipsoid.b > ellipsoid.a) section.Fail("b", "is larger than \"a\"");
    ellipsoid.SetEllipsoid(true);
    return ellipsoid;
  }
  ellipsoid.invF = section.Number("invF", "the inverse flattening (WGS84: 298.257223563)");
  if (!(ellipsoid.invF > 1))
    section.Fail("invF", fmt::format("is {}: the inverse flattening, a number above 1, belongs "
                                     "there (WGS84: 298.257223563)",
                                     ellipsoid.invF));
  ellipsoid.SetEllipsoid(false);
  return ellipsoid;
}

Datum ReadDatum(const JsonSection& section, Ellipsoid* local) {
  const auto metres = [&](const char* key) { return section.Number(key, "a shift in metres"); };
  const auto seconds = [&](const char* key) {
    constexpr double kTurn = 360 * 3600;
    return ReadTurn(section, key, "a rotation in arc-seconds", kTurn);
  };
  const TAbstractPoint3<double> shift(metres("dX"), metres("dY"), metres("dZ"));
  TAbstractPoint3<double> rotation(seconds("rX"), seconds("rY"), seconds("rZ"));
  const double scale = section.Number("ppm", "the scale in parts per million") * 1e-6;
  if (!(std::abs(scale) < 1))
    section.Fail("ppm",
                 "is a million or more: the difference of the scale from 1, in parts per "
                 "million, belongs there");
  if (ReadWord(section, "rotation", {"coordinate-frame", "position-vector"}) == "position-vector")
    rotation = rotation * -1.0;
  return {local, shift, rotation, scale, userTypeUser, false, nullptr};
}

NamedProjection ReadProjection(const ProjectionSection& source, double a, double invF) {
  const ProjectionKind& kind = ReadKind(source);
  std::vector<std::string_view> known = {"name"};
  for (const ProjectionParameter& parameter : kind.parameters) known.push_back(parameter.name);
  const JsonSection section(source.file, source.path, source.object, known, source.spelling);
  std::vector<double> values;
  for (const ProjectionParameter& parameter : kind.parameters) {
    if (!section.Has(parameter.name))
      section.Fail(parameter.name,
                   fmt::format("is missing; {} needs {}", kind.name,
                               ListNames(section.SpelledAll(KnownKeys(known).subspan(1)))));
    values.push_back(ReadParameter(section, parameter));
  }
  return {&kind, values, MakeProjection(kind, a, invF, values)};
}

const AxisText* ReadAxisPair(const JsonSection& section, std::string_view key) {
  if (!section.Has(key)) return nullptr;
  const std::string text = section.Text(key, "an axis text such as \"NE\"");
  std::vector<std::string> known;
  for (const AxisText& row : kAxes) {
    if (SameName(row.text, text)) return &row;
    known.emplace_back(row.text);
  }
  section.Fail(key, fmt::format("is \"{}\": the directions of the first and second coordinate "
                                "belong there; {}",
                                Printable(text), SuggestName(text, known)));
}

AxisPair AxisPairOf(const std::string& text) {
  for (const AxisText& row : kAxes)
    if (row.text == text) return row.pair;
  return {};
}

std::vector<std::string_view> LocalizationKeys() {
  std::vector<std::string_view> keys(std::begin(kLocalizationKeys), std::end(kLocalizationKeys));
  keys.push_back(kRotationDegrees);
  keys.push_back(kSiteErrorsKey);
  return keys;
}

LocalToGrid ReadLocalization(const JsonSection& section) {
  const std::string* keys = kLocalizationKeys;
  const bool radians = section.Has(keys[kRotationKey]);
  if (radians && section.Has(kRotationDegrees))
    section.Fail(keys[kRotationKey],
                 fmt::format("(radians) cannot stand beside \"{}\"", kRotationDegrees));
  const auto given = [&](int i) {
    return section.Has(keys[i]) || (i == kRotationKey && section.Has(kRotationDegrees));
  };
  const auto read = [&](int i) {
    if (i == kRotationKey && !radians)
      return ReadAngle(section, kRotationDegrees, 360) * kRadPerDeg;
    if (i == kRotationKey) return ReadTurn(section, keys[i], "the rotation of the site", kTwoPi);
    return section.Number(keys[i], "a parameter of the site calibration");
  };
  LocalToGrid site;
  const auto readPart = [&](int first, int count, unsigned char mode, auto set) {
    bool any = false;
    for (int i = 0; i < count; ++i) any = any || given(first + i);
    if (!any) return;
    for (int i = 0; i < count; ++i) set(read(first + i), i);
    site.mode = static_cast<unsigned char>(site.mode | mode);
  };
  readPart(0, kPlaneKeys, LocalToGrid::kHorizontal,
           [&](double value, int i) { site.SetPlaneParam(value, i, 0); });
  readPart(kPlaneKeys, kHeightKeys, LocalToGrid::kVertical,
           [&](double value, int i) { site.SetHeightParam(value, i, 0); });
  if (site.mode == LocalToGrid::kNotSetUp)
    section.Fail(keys[0], "is missing: the parameters of the site calibration belong there");
  if (site.mode & LocalToGrid::kHorizontal && !(site.GetPlaneParam(2, 0) > 0))
    section.Fail(keys[2], "must be above 0");
  return site;
}

namespace {

// The upper triangle of a symmetric matrix, row by row.
template <std::size_t N>
void TakeUpper(const std::vector<double>& numbers, double (&matrix)[N][N]) {
  auto at = numbers.begin();
  for (std::size_t r = 0; r < N; ++r)
    for (std::size_t c = r; c < N; ++c) matrix[r][c] = matrix[c][r] = *at++;
}

template <std::size_t N>
std::vector<double> UpperOf(const double (&matrix)[N][N]) {
  std::vector<double> numbers;
  for (std::size_t r = 0; r < N; ++r) numbers.insert(numbers.end(), matrix[r] + r, matrix[r] + N);
  return numbers;
}

}  // namespace

SiteErrors ReadSiteErrors(const JsonSection& section) {
  constexpr const char* kWhat = "the upper triangle of a covariance, row by row";
  SiteErrors errors;
  SiteCovariance& covariance = errors.covariance;
  covariance.pivotN = section.Number("pivotN", "the grid northing that the parameters are about");
  covariance.pivotE = section.Number("pivotE", "the grid easting that the parameters are about");
  const auto take = [&](const char* key, std::size_t count, unsigned char part, auto& matrix) {
    if (!section.Has(key)) return;
    TakeUpper(section.Numbers(key, count, kWhat), matrix);
    errors.parts = static_cast<unsigned char>(errors.parts | part);
    if (!ChainUncertainty::IsCovariance(covariance))
      section.Fail(key, "is no covariance: a variance is negative in some direction");
  };
  take("plane", 10, LocalToGrid::kHorizontal, covariance.ofPlane);
  take("height", 6, LocalToGrid::kVertical, covariance.ofHeight);
  return errors;
}

nlohmann::ordered_json SiteErrorsSection(const SiteErrors& errors) {
  const SiteCovariance& covariance = errors.covariance;
  nlohmann::ordered_json section = {{"pivotN", covariance.pivotN}, {"pivotE", covariance.pivotE}};
  if (errors.parts & LocalToGrid::kHorizontal) section["plane"] = UpperOf(covariance.ofPlane);
  if (errors.parts & LocalToGrid::kVertical) section["height"] = UpperOf(covariance.ofHeight);
  return section;
}

nlohmann::ordered_json LocalizationSection(const LocalToGrid& site) {
  nlohmann::ordered_json section;
  if (site.mode & LocalToGrid::kHorizontal) {
    for (int i = 0; i < kPlaneKeys; ++i) {
      const double value = site.GetPlaneParam(i, 0);
      if (i == kRotationKey)
        section[kRotationDegrees] = value * kDegPerRad;
      else
        section[kLocalizationKeys[i]] = value;
    }
  }
  if (site.mode & LocalToGrid::kVertical)
    for (int i = 0; i < kHeightKeys; ++i)
      section[kLocalizationKeys[kPlaneKeys + i]] = site.GetHeightParam(i, 0);
  return section;
}

GridToGround ReadGround(const JsonSection& section) {
  GridToGround ground;
  ground.flags = 0;
  ReadGroundScale(section, ground);
  if (section.Has("rotation")) ground.rotation = ReadAngle(section, "rotation", 360) * kRadPerDeg;
  if (ReadPlanePair(section, "origin", ground.originN, ground.originE))
    ground.flags |= GridToGround::kHasOrigin;
  ReadPlanePair(section, "offset", ground.offsetN, ground.offsetE);
  ground.SetEnabled(ReadWord(section, "enabled", {"yes", "no"}) != "no");
  return ground;
}

double ReadDate(const JsonSection& section, std::string_view key) {
  constexpr const char* kWhat = "a decimal year (2026.9) or a day (\"2026-11-23\")";
  const std::string text = section.Object(key).is_string()
                               ? section.Text(key, kWhat)
                               : fmt::format("{}", section.Number(key, kWhat));
  const ParsedNumber date = ParseDate(text);
  if (!date) section.Fail(key, "must be a date: " + date.problem);
  return date.value;
}

ReferenceFrame ReadFrameName(const JsonSection& section, std::string_view key) {
  const std::string name = section.Text(key, "the name of a reference frame");
  const std::optional<ReferenceFrame> frame = FrameNamed(name);
  if (!frame) section.Fail(key, UnknownFrame(name));
  return *frame;
}

// Some frames exist whose parameters are not had: the frame of a similar name is another plate's, and is
// not offered for them.
std::string UnknownFrame(const std::string& name) {
  constexpr std::string_view kWithoutParameters[] = {"PATRF2022", "CATRF2022", "MATRF2022"};
  if (std::ranges::find(kWithoutParameters, name) != std::end(kWithoutParameters))
    return fmt::format(
        "is \"{}\", whose parameters are not in the table of frames, and no other frame stands for "
        "it; who has them states them in \"shifts\", as \"similarity\" with \"rates\" or as "
        "\"plate\"",
        name);
  std::vector<std::string> known;
  for (std::size_t i = 0; i <= static_cast<std::size_t>(ReferenceFrame::natrf2022); ++i)
    known.emplace_back(FrameName(static_cast<ReferenceFrame>(i)));
  return fmt::format("is \"{}\", which is no frame that is known; {}", Printable(name),
                     SuggestName(Printable(name), known));
}

}  // namespace geomath_files
