#include "tools/system_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "tools/ellipsoid_names.h"
#include "tools/json_section.h"
#include "tools/name_match.h"
#include "tools/projection_names.h"
#include "tools/user_error.h"

using namespace zel_cs::geomath;
using nlohmann::json;

namespace geomath_tools {
namespace {

// What an ellipsoid of a planet or moon has; a figure in kilometres or feet is caught.
constexpr double kSmallestAxis = 1e5, kLargestAxis = 1e8;  // metres

// Axis texts as AxisRotation knows them, with what the first coordinate is.
struct AxisText {
  const char* text;
  bool northFirst;
};
constexpr AxisText kAxes[] = {
    {"NE", true},  {"NW", true},  {"SE", true},  {"SW", true},
    {"EN", false}, {"WN", false}, {"ES", false}, {"WS", false},
};

static_assert(std::size(kLocalizationKeys) == kPlaneKeys + kHeightKeys);

std::string ErrnoText(int code) { return std::strerror(code); }

std::wstring Widen(const std::string& text) { return {text.begin(), text.end()}; }

}  // namespace

class SystemReader {
 public:
  explicit SystemReader(std::string file) : file_(std::move(file)) {}

  std::unique_ptr<CoordinateSystem> Read(const json& root, ProjectionNeed need) const {
    const JsonSection top(file_, "", root,
                          {"name", "description", "global", "local", "datum", "projection", "axes",
                           "geoid", "localization"});
    for (const char* note : {"name", "description"}) {
      if (top.Has(note)) top.Text(note, "a text");
    }
    auto system = std::make_unique<CoordinateSystem>();
    ReadEllipsoids(top, *system);
    if (top.Has("datum")) ReadDatum(top, *system);
    if (need == ProjectionNeed::required || top.Has("projection")) ReadProjection(top, *system);
    if (top.Has("axes")) ReadAxes(top, *system);
    if (top.Has("localization")) ReadLocalization(top, *system);
    CoordinateChain& chain = system->chain_;
    chain.SetGlobalEllipsoid(&system->global_);
    if (system->datum_) chain.SetDatum(&*system->datum_);
    chain.SetProjection(system->projection_.get());
    if (top.Has("geoid")) ReadGeoid(top, *system);
    if (system->localization_) chain.SetLocalization(&*system->localization_);
    return system;
  }

 private:
  Ellipsoid ReadEllipsoid(const JsonSection& top, const std::string& key) const {
    const JsonSection section(file_, key, top.Object(key), {"ellipsoid", "a", "invF", "b"});
    const auto has = [&](const char* name) { return section.Has(name); };
    if (has("ellipsoid")) {
      for (const char* other : {"a", "b", "invF"}) {
        if (has(other)) section.Fail(other, "cannot stand beside \"ellipsoid\": give one of them");
      }
      const std::string name = section.Text("ellipsoid", "the name of an ellipsoid");
      const NamedEllipsoid* row = FindEllipsoid(name);
      if (!row)
        section.Fail("ellipsoid",
                     fmt::format("names the unknown ellipsoid \"{}\"; {}", Printable(name),
                                 SuggestName(name, EllipsoidNames())));
      return MakeEllipsoid(row->a, row->invF);
    }
    const auto axis = [&](const char* name, const char* what) {
      const double metres = section.Number(name, what);
      if (!(metres >= kSmallestAxis && metres <= kLargestAxis))
        section.Fail(name, fmt::format("is {}: the semi-axis in metres belongs there (WGS84: "
                                       "6378137.0)",
                                       metres));
      return metres;
    };
    Ellipsoid ellipsoid;
    ellipsoid.a = axis("a", "the semi-major axis in metres, or \"ellipsoid\" with a name,");
    if (has("b") && has("invF"))
      section.Fail("b", "cannot stand beside \"invF\": give one of them");
    if (has("b")) {
      ellipsoid.b = axis("b", "the semi-minor axis in metres");
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

  // A datum joins two ellipsoids. Without one there is only one ellipsoid, named once or twice.
  void ReadEllipsoids(const JsonSection& top, CoordinateSystem& system) const {
    const bool global = top.Has("global"), local = top.Has("local");
    if (top.Has("datum") || (!global && !local)) {
      system.global_ = ReadEllipsoid(top, "global");
      system.local_ = ReadEllipsoid(top, "local");
      return;
    }
    system.local_ = ReadEllipsoid(top, local ? "local" : "global");
    system.global_ = global ? ReadEllipsoid(top, "global") : system.local_;
    if (system.global_.a != system.local_.a || system.global_.invF != system.local_.invF)
      top.Fail("datum",
               "is missing: \"global\" and \"local\" are different ellipsoids, and the "
               "seven parameters between them belong there (0 for those that are not "
               "used)");
  }

  void ReadDatum(const JsonSection& top, CoordinateSystem& system) const {
    const JsonSection section(file_, "datum", top.Object("datum"),
                              {"dX", "dY", "dZ", "rX", "rY", "rZ", "ppm", "rotation"});
    const auto metres = [&](const char* key) { return section.Number(key, "a shift in metres"); };
    const auto seconds = [&](const char* key) {
      return section.Number(key, "a rotation in arc-seconds");
    };
    const TAbstractPoint3<double> shift(metres("dX"), metres("dY"), metres("dZ"));
    TAbstractPoint3<double> rotation(seconds("rX"), seconds("rY"), seconds("rZ"));
    const double scale = section.Number("ppm", "the scale in parts per million") * 1e-6;
    if (!(std::abs(scale) < 1))
      section.Fail("ppm",
                   "is a million or more: the difference of the scale from 1, in parts per "
                   "million, belongs there");
    if (section.Has("rotation")) {
      const std::vector<std::string> senses = {"coordinate-frame", "position-vector"};
      const std::string sense = section.Text("rotation", "the sense of the rotations");
      if (std::find(senses.begin(), senses.end(), sense) == senses.end())
        section.Fail("rotation",
                     fmt::format("is \"{}\"; {}", Printable(sense), SuggestName(sense, senses)));
      if (sense == senses[1]) rotation = rotation * -1.0;
    }
    system.datum_.emplace(&system.local_, shift, rotation, scale, userTypeUser, false, nullptr);
  }

  void ReadProjection(const JsonSection& top, CoordinateSystem& system) const {
    const json& object = top.Object("projection");
    const ProjectionKind& kind = ReadKind(object);
    std::vector<std::string> known = {"name"};
    for (const ProjectionParameter& parameter : kind.parameters) known.push_back(parameter.name);
    const JsonSection section(file_, "projection", object, known, true);
    const std::vector<std::string> names(known.begin() + 1, known.end());
    std::vector<double> values;
    for (const ProjectionParameter& parameter : kind.parameters) {
      if (!section.Has(parameter.name))
        section.Fail(parameter.name,
                     fmt::format("is missing; {} needs {}", kind.name, ListNames(names)));
      values.push_back(ReadParameter(section, parameter));
    }
    system.projectionName_ = kind.name;
    system.projection_ = MakeProjection(kind, system.local_.a, system.local_.invF, values);
  }

  const ProjectionKind& ReadKind(const json& object) const {
    if (!object.is_object()) JsonSection(file_, "projection", object, {});
    json name = json::object();
    for (const auto& [key, value] : object.items()) {
      if (FoldName(key) == "name") name["name"] = value;
    }
    const JsonSection section(file_, "projection", name, {"name"});
    const std::string text = section.Text("name", "the short name of a projection");
    const ProjectionKind* kind = FindProjection(text);
    if (!kind)
      section.Fail("name", fmt::format("is the unknown projection \"{}\"; {}", Printable(text),
                                       SuggestName(text, ProjectionNames())));
    return *kind;
  }

  static double ReadAngle(const JsonSection& section, const std::string& name, double limit) {
    const double value = section.Number(name, "an angle in decimal degrees");
    if (std::abs(value) > limit)
      section.Fail(name, fmt::format("is {}: decimal degrees from -{} to {} belong there", value,
                                     limit, limit));
    return value;
  }

  static double ReadParameter(const JsonSection& section, const ProjectionParameter& parameter) {
    const std::string& name = parameter.name;
    switch (parameter.unit) {
      case ParameterUnit::latitude:
        return ReadAngle(section, name, 90);
      case ParameterUnit::degrees:
        return ReadAngle(section, name, 360);
      case ParameterUnit::factor: {
        const double value = section.Number(name, "a scale factor");
        if (!(value > 0)) section.Fail(name, "must be above 0");
        return value;
      }
      case ParameterUnit::metres:
        return section.Number(name, "a length in metres");
      case ParameterUnit::number:
        break;
    }
    return section.Number(name, "a number");
  }

  const AxisText* ReadAxisPair(const JsonSection& section, const std::string& key) const {
    if (!section.Has(key)) return nullptr;
    const std::string text = section.Text(key, "an axis text such as \"NE\"");
    std::vector<std::string> known;
    for (const AxisText& row : kAxes) {
      if (FoldName(row.text) == FoldName(text)) return &row;
      known.emplace_back(row.text);
    }
    section.Fail(key, fmt::format("is \"{}\": the directions of the first and second coordinate "
                                  "belong there; {}",
                                  Printable(text), SuggestName(text, known)));
  }

  void ReadAxes(const JsonSection& top, CoordinateSystem& system) const {
    const JsonSection section(file_, "axes", top.Object("axes"), {"grid", "geographic"});
    if (!system.projection_) section.Fail("grid", "needs a projection: the axes are those of it");
    if (const AxisText* grid = ReadAxisPair(section, "grid")) {
      system.projection_->SetNEAxes(Widen(grid->text).c_str());
      system.grid_.northFirst = grid->northFirst;
    }
    if (const AxisText* geographic = ReadAxisPair(section, "geographic")) {
      system.projection_->SetBLAxes(Widen(geographic->text).c_str());
      system.geographic_.northFirst = geographic->northFirst;
    }
  }

  // Files are looked for beside the system file.
  void ReadGeoid(const JsonSection& top, CoordinateSystem& system) const {
    const JsonSection section(
        file_, "geoid", top.Object("geoid"),
        {"grid", "interpolation", "model", "correction", "subtractNormalField", "frame"});
    const auto text = [&](const char* key, const char* what) {
      return section.Has(key) ? section.Text(key, what) : std::string();
    };
    const auto path = [&](const char* key) {
      const std::string name = text(key, "the name of a file");
      return name.empty() ? name : (std::filesystem::path(file_).parent_path() / name).string();
    };
    GeoidChoice choice{path("grid"), text("interpolation", "the name of a scheme"), path("model"),
                       path("correction"), false};
    const auto chooseOne = [&](const char* key, const std::vector<std::string>& known) {
      const std::string chosen = text(key, "one of two words");
      if (!chosen.empty() && std::find(known.begin(), known.end(), chosen) == known.end())
        section.Fail(key,
                     fmt::format("is \"{}\"; {}", Printable(chosen), SuggestName(chosen, known)));
      return chosen;
    };
    choice.subtractNormalField = chooseOne("subtractNormalField", {"yes", "no"}) == "yes";
    const bool local = chooseOne("frame", {"global", "local"}) == "local";
    system.geoid_ = OpenGeoid(choice);
    system.chain_.SetGeoid(&system.geoid_->Heights(),
                           local ? GeoidFrame::local : GeoidFrame::global);
  }

  // A part, horizontal or vertical, is given whole or not at all.
  void ReadLocalization(const JsonSection& top, CoordinateSystem& system) const {
    const std::string* keys = kLocalizationKeys;
    const JsonSection section(file_, "localization", top.Object("localization"),
                              {keys, keys + std::size(kLocalizationKeys)});
    LocalToGrid& site = system.localization_.emplace();
    const auto readPart = [&](int first, int count, unsigned char mode, auto set) {
      bool any = false;
      for (int i = 0; i < count; ++i) any = any || section.Has(keys[first + i]);
      if (!any) return;
      for (int i = 0; i < count; ++i)
        set(section.Number(keys[first + i], "a parameter of the site calibration"), i);
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
  }

  std::string file_;
};

std::unique_ptr<CoordinateSystem> ParseSystem(const std::string& text, const std::string& name,
                                              ProjectionNeed need) {
  return SystemReader(name).Read(ParseJson(text, name), need);
}

std::unique_ptr<CoordinateSystem> ReadSystemFile(const std::string& path) {
  return ParseSystem(ReadSystemText(path), path);
}

std::string ReadSystemText(const std::string& path) {
  constexpr std::size_t kLargestFile = 1 << 20;  // bytes; a description takes a few hundred
  std::ifstream file(path, std::ios::binary);
  std::string text;
  char part[4096];
  errno = 0;
  while (file && text.size() <= kLargestFile) {
    file.read(part, sizeof part);
    text.append(part, static_cast<std::size_t>(file.gcount()));
  }
  if (text.size() > kLargestFile)
    throw UserError(fmt::format("{}: too large for a system file (1 MiB)", path));
  if (!file.eof()) throw UserError(fmt::format("{}: cannot be read: {}", path, ErrnoText(errno)));
  return text;
}

}  // namespace geomath_tools
