#include "files/system/system_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

#include "files/system/json_section.h"
#include "files/system/projection_names.h"
#include "files/system/shift_section.h"
#include "files/system/system_document.h"
#include "files/system/system_sections.h"
#include "files/system/units_section.h"
#include "files/words/name_match.h"
#include "files/words/sibling_path.h"
#include "files/words/user_error.h"

using namespace zel_cs::geomath;
using nlohmann::json;

namespace geomath_files {
namespace {

std::wstring Widen(const std::string& text) { return {text.begin(), text.end()}; }

}  // namespace

class SystemReader {
 public:
  explicit SystemReader(std::string file) : file_(std::move(file)) {}

  std::unique_ptr<CoordinateSystem> Read(const json& root, ProjectionNeed need) const {
    const JsonSection top(
        file_, "", root,
        {"name", "description", "area", "global", "local", "datum", "projection", "axes", "units",
         "crs", "geoid", "frame", "shifts", "localization", "ground"});
    for (const char* note : {"name", "description"}) {
      if (top.Has(note)) top.Text(note, "a text");
    }
    auto system = std::make_unique<CoordinateSystem>();
    if (top.Has("name")) system->name_ = top.Text("name", "a text");
    if (top.Has("area")) ReadArea(top, *system);
    ReadEllipsoids(top, *system);
    if (top.Has("datum")) ReadDatumAt(top, *system);
    if (need == ProjectionNeed::required || top.Has("projection")) ReadProjectionAt(top, *system);
    if (top.Has("axes")) ReadAxes(top, *system);
    if (top.Has("units")) system->units_ = ReadUnits(file_, top.Section("units", kUnitsKeys));
    if (top.Has("localization")) ReadSite(top, *system);
    if (top.Has("ground")) system->ground_ = ReadGround(top.Section("ground", kGroundKeys));
    ReadCrs(top, *system);
    CoordinateChain& chain = system->chain_;
    chain.SetGlobalEllipsoid(&system->global_);
    if (system->datum_ && !system->fixedHeight_) chain.SetDatum(&*system->datum_);
    chain.SetProjection(system->Projection());
    if (top.Has("geoid")) ReadGeoid(top, *system);
    if (top.Has("frame"))
      ReadFrame(top.Section("frame", {"from", "to", "date", "epoch", "motion"}), *system);
    if (top.Has("shifts")) ReadShifts(top, *system);
    std::vector<const SystemShift*> shifts;
    for (const SystemShift& shift : system->shifts_) shifts.push_back(&shift);
    AddShifts(chain, shifts, system->fixedHeight_ ? &*system->fixedHeight_ : nullptr);
    if (system->localization_) chain.SetLocalization(&*system->localization_);
    if (system->ground_) chain.SetGround(&*system->ground_);
    return system;
  }

 private:
  void ReadSite(const JsonSection& top, CoordinateSystem& system) const {
    const JsonSection section = top.Section("localization", LocalizationKeys());
    system.localization_ = ReadLocalization(section);
    if (section.Has(kSiteErrorsKey))
      system.siteErrors_ = ReadSiteErrors(section.Section(kSiteErrorsKey, kSiteErrorsKeys));
  }

  Ellipsoid ReadEllipsoidAt(const JsonSection& top, std::string_view key) const {
    return ReadEllipsoid(top.Section(key, kEllipsoidKeys));
  }

  // A datum joins two ellipsoids. Without one there is only one ellipsoid, named once or twice.
  void ReadEllipsoids(const JsonSection& top, CoordinateSystem& system) const {
    const bool global = top.Has("global"), local = top.Has("local");
    if (top.Has("datum") || (!global && !local)) {
      system.global_ = ReadEllipsoidAt(top, "global");
      system.local_ = ReadEllipsoidAt(top, "local");
      return;
    }
    system.local_ = ReadEllipsoidAt(top, local ? "local" : "global");
    system.global_ = global ? ReadEllipsoidAt(top, "global") : system.local_;
    if (system.global_.a != system.local_.a || system.global_.invF != system.local_.invF)
      top.Fail("datum",
               "is missing: \"global\" and \"local\" are different ellipsoids, and the "
               "seven parameters between them belong there (0 for those that are not "
               "used)");
  }

  void ReadDatumAt(const JsonSection& top, CoordinateSystem& system) const {
    std::vector<std::string_view> keys(std::begin(kDatumKeys), std::end(kDatumKeys));
    keys.emplace_back("fixedHeight");
    const JsonSection section = top.Section("datum", keys);
    system.datum_.emplace(ReadDatum(section, &system.local_));
    if (section.Has("fixedHeight"))
      system.fixedHeight_.emplace(system.global_, *system.datum_,
                                  section.Number("fixedHeight", "a height in metres"));
  }

  void ReadProjectionAt(const JsonSection& top, CoordinateSystem& system) const {
    const json& object = top.Object("projection");
    system.named_ = ReadProjection({file_, "projection", object, KeySpelling::folded},
                                   system.local_.a, system.local_.invF);
  }

  void ReadArea(const JsonSection& top, CoordinateSystem& system) const {
    const JsonSection section = top.Section("area", {"west", "south", "east", "north"});
    const auto side = [&](const char* key, double limit) {
      const double degrees = section.Number(key, "decimal degrees");
      if (std::abs(degrees) > limit)
        section.Fail(key, fmt::format("is outside -{} to {} degrees", limit, limit));
      return degrees;
    };
    system.area_ = {side("west", 180), side("south", 90), side("east", 180), side("north", 90)};
    if (system.area_->south > system.area_->north) section.Fail("south", "is north of \"north\"");
  }

  void ReadAxes(const JsonSection& top, CoordinateSystem& system) const {
    const JsonSection section = top.Section("axes", {"grid", "geographic"});
    if (!system.Projection()) section.Fail("grid", "needs a projection: the axes are those of it");
    if (const AxisText* grid = ReadAxisPair(section, "grid")) {
      system.Projection()->SetNEAxes(Widen(grid->text).c_str());
      system.grid_ = grid->pair;
    }
    if (const AxisText* geographic = ReadAxisPair(section, "geographic")) {
      system.Projection()->SetBLAxes(Widen(geographic->text).c_str());
      system.geographic_ = geographic->pair;
    }
  }

  // Positions on the ellipsoid WGS84 are taken for WGS 84 where nothing is said.
  void ReadCrs(const JsonSection& top, CoordinateSystem& system) const {
    if (system.global_.a == kWgs84A && system.global_.invF == kWgs84InvF)
      system.geographicCrs_ = "EPSG:4326";
    if (!top.Has("crs")) return;
    const JsonSection section = top.Section("crs", {"grid", "geographic"});
    constexpr const char* kWhat = "an EPSG code (\"EPSG:27700\") or WKT";
    if (section.Has("geographic")) system.geographicCrs_ = section.Text("geographic", kWhat);
    if (section.Has("grid") && !system.localization_ && !system.ground_)
      system.gridCrs_ = section.Text("grid", kWhat);
  }

  // Files are looked for beside the system file.
  void ReadGeoid(const JsonSection& top, CoordinateSystem& system) const {
    const JsonSection section = top.Section(
        "geoid", {"grid", "interpolation", "model", "correction", "subtractNormalField", "frame"});
    const auto text = [&](const char* key, const char* what) {
      return section.Has(key) ? section.Text(key, what) : std::string();
    };
    const auto path = [&](const char* key) {
      const std::string name = text(key, "the name of a file");
      return name.empty() ? name : SiblingPath(file_, name);
    };
    GeoidChoice choice{path("grid"), text("interpolation", "the name of a scheme"), path("model"),
                       path("correction"), false};
    choice.subtractNormalField = ReadWord(section, "subtractNormalField", {"yes", "no"}) == "yes";
    const bool local = ReadWord(section, "frame", {"global", "local"}) == "local";
    system.files_ = {choice.grid, choice.model, choice.correction};
    system.geoid_ = OpenGeoid(choice);
    system.chain_.SetGeoid(&system.geoid_->Heights(),
                           local ? GeoidFrame::local : GeoidFrame::global);
  }

  void ReadShifts(const JsonSection& top, CoordinateSystem& system) const {
    const json& list = top.Object("shifts");
    if (!list.is_array()) top.Fail("shifts", "must be a list in brackets");
    for (std::size_t i = 0; i < list.size(); ++i) {
      const std::string path = fmt::format("shifts[{}]", i);
      SystemShift read = ReadShift(file_, path, list[i], system.global_);
      if (system.fixedHeight_ && read.place == ShiftPlace::afterDatum &&
          read.shift->Space() == ShiftSpace::geocentric)
        top.Fail("shifts",
                 "moves geocentric coordinates, which there are none of behind a datum with a "
                 "\"fixedHeight\"");
      Keep(std::move(read), system);
    }
  }

  static void Keep(SystemShift read, CoordinateSystem& system) {
    if (!read.choice.file.empty()) system.files_.push_back(read.choice.file);
    system.shifts_.push_back(std::move(read));
  }

  // The change of frame and the motion to the date of the datum, as entries of "shifts".
  void ReadFrame(const JsonSection& section, CoordinateSystem& system) const {
    const json place = {{"place", "before datum"}};
    if (section.Has("date")) system.date_ = ReadDate(section, "date");
    if (section.Has("from") || section.Has("to")) {
      const ReferenceFrame from = ReadFrameName(section, "from"), to = ReadFrameName(section, "to");
      json entry = place;
      entry["frame"] = {{"from", FrameName(from)}, {"to", FrameName(to)}};
      if (from != to) Keep(ReadShift(file_, "frame", entry, system.global_), system);
    }
    if (!section.Has("motion")) {
      if (section.Has("epoch"))
        section.Fail("epoch", "needs a \"motion\", by which positions come to this date");
      return;
    }
    const JsonSection motion = section.Section("motion", {"file", "plate"});
    json entry = place;
    entry.update(section.Object("motion"));
    entry["inverse"] = "yes";
    if (section.Has("epoch")) {
      const double epoch = ReadDate(section, "epoch");
      (motion.Has("plate") && entry["plate"].is_object() ? entry["plate"] : entry)["epoch"] = epoch;
    }
    SystemShift read = ReadShift(file_, section.PathOf("motion"), entry, system.global_);
    if (read.shift->Kind() != ShiftKind::pointMotion)
      motion.Fail("file", "has no motion: velocities or a deformation model belong there");
    Keep(std::move(read), system);
  }

  std::string file_;
};

std::unique_ptr<CoordinateSystem> ParseSystem(const std::string& text, const std::string& name,
                                              ProjectionNeed need) {
  return MakeSystem(ParseJson(text, name), name, need);
}

std::unique_ptr<CoordinateSystem> MakeSystem(const json& document, const std::string& name,
                                             ProjectionNeed need) {
  return SystemReader(name).Read(document, need);
}

}  // namespace geomath_files
