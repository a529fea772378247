#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "files/epsg/epsg_registry.h"
#include "files/epsg/grid_folders.h"
#include "files/epsg/operation_steps.h"
#include "files/epsg/publisher_routes.h"
#include "files/system/geo_box.h"

namespace geomath_files {

/// A file that a step of an operation uses.
struct StepFile {
  std::string path;
  bool inverse = false;  ///< leads the other way than the step is published
};

/// A way from one geographic system to another: of the registry, put together from several of it, or
/// of a publisher.
struct CandidateOperation {
  RegisteredOperation operation;
  std::string target;                ///< code of the system that it leads to
  std::vector<OperationStep> steps;  ///< from source to target; none for a publisher's route
  std::vector<std::optional<StepFile>>
      files;  ///< of the steps, where they need one and it is found
  const PublisherRoute* route = nullptr;
  bool routeReversed = false;            ///< it leads the other way
  std::optional<std::string> routeFile;  ///< path
  double covered = 1;                    ///< of the area where it is to be good, 0 to 1

  /// "EPSG:1314 OSGB36 to WGS 84 (6)".
  std::string Title() const;
  /// "accuracy 2 m".
  std::string Accuracy() const;
  /// Its methods, joined by " + ".
  std::string Method() const;
  /// Where all steps are similarities: one that is the same.
  std::optional<SevenParameters> Parameters() const;
  bool HasGrid() const;
  /// Whether it needs the date of the positions.
  bool IsDated() const;
  /// Whether the library has all of its methods.
  bool IsKnown() const;
  /// The names of the files that are not found: "a.gsb or b.tif".
  std::vector<std::string> Missing() const;
  bool IsUsable() const { return IsKnown() && Missing().empty(); }
  /// What it needs before it can be taken; empty where it can.
  std::string Obstacle() const;
  /// The paths of those that are found.
  std::vector<std::string> Found() const;
};

/// Where an operation is to be good.
struct OperationPlace {
  GeoBox area;
  bool point = false;  ///< a place, whose box is empty
};

/// Where it is to be good at one position. Throws UserError for one that is none on the earth.
OperationPlace PlaceNear(const Position& position);

/// Boxes of transformations are drawn more or less generously: one that leaves out less than this
/// of the place counts as whole.
inline constexpr double kAsGoodAsWhole = 0.9;

/// What leads from one system of the registry to another, in which order, and with which files.
class OperationChooser {
 public:
  /// Both stay alive as long as the chooser.
  OperationChooser(const EpsgRegistry& registry, const GridFolders& folders)
      : registry_(registry), folders_(folders) {}

  /// All between two geographic systems, best first: the one that covers more of the place (nine
  /// tenths count as all), then the more accurate one. Those that lack a file or a method stand
  /// among them.
  std::vector<CandidateOperation> Between(const std::string& source, const std::string& target,
                                          const OperationPlace& place,
                                          Joining joining = Joining::allowed) const;
  /// Those to WGS 84, and the grids to systems that the registry takes for WGS 84, whose own accuracy
  /// counts; none that need a date, of which positions in WGS 84 say nothing. `projected`, unless
  /// it is empty, is the system for which a publisher's route may be.
  std::vector<CandidateOperation> ToWgs84(const std::string& source, const std::string& projected,
                                          const OperationPlace& place) const;
  /// Those to systems from which published parameters lead on to frames that move (NationalSystems).
  std::vector<CandidateOperation> ToNational(const std::string& source,
                                             const std::string& projected,
                                             const OperationPlace& place) const;
  /// The same with publishers' routes, which go before what is as good. The projected systems are those of
  /// the two ends, on which routes may stand; empty for none.
  std::vector<CandidateOperation> BetweenEnds(const std::string& source,
                                              const std::string& sourceProjected,
                                              const std::string& target,
                                              const std::string& targetProjected,
                                              const OperationPlace& place) const;
  /// The operation of a code, from the source, a geographic system or one of heights, to whatever such
  /// system it leads to; nothing when it is none from or to the source. Systems with three axes count as
  /// the geographic one on their datum, compound ones as that of their heights.
  std::optional<CandidateOperation> OfCode(const std::string& code, const std::string& source,
                                           const OperationPlace& place) const;

 private:
  std::vector<CandidateOperation> Routes(const std::string& source, const std::string& projected,
                                         const OperationPlace& place) const;
  void AddRoutes(const std::string& source, const std::string& projected, const std::string& target,
                 bool reversed, const OperationPlace& place,
                 std::vector<CandidateOperation>& candidates) const;
  std::vector<CandidateOperation> Unsorted(const std::string& source, const std::string& target,
                                           const OperationPlace& place, Joining joining) const;
  CandidateOperation Prepare(RegisteredOperation operation, const std::string& target,
                             const OperationPlace& place) const;
  std::optional<StepFile> FileOf(const OperationStep& step) const;
  std::string EndOf(const nlohmann::json& crs) const;

  const EpsgRegistry& registry_;
  const GridFolders& folders_;
};

/// The first that can be used; null when there is none.
const CandidateOperation* BestUsable(const std::vector<CandidateOperation>& candidates);

/// A word for each obstacle that keeps those from being taken which are better than `taken`.
std::vector<std::string> BetterOperations(const std::vector<CandidateOperation>& candidates,
                                          const CandidateOperation& taken);

/// They as text, with their methods and files, and what they lack.
std::string ListOperations(const std::vector<CandidateOperation>& candidates);

/// The entries "shifts" of a system file that leads from the target of steps to their source.
struct ShiftEntries {
  nlohmann::ordered_json shifts;
  bool twoEllipsoids = false;  ///< a datum without parameters stands between them
};
/// Of steps and the files that they have. Files beside the system file, in `folder`, by their names
/// alone. Nothing where the steps stand on more ellipsoids than a system file has.
std::optional<ShiftEntries> EntriesOf(std::span<const OperationStep> steps,
                                      std::span<const std::optional<StepFile>> files,
                                      const zel_cs::geomath::Ellipsoid& source,
                                      const zel_cs::geomath::Ellipsoid& target,
                                      const std::string& folder);

/// The name of a file as a system file in `folder` has it: its path, or its name when it is there.
std::string NameBeside(const std::string& path, const std::string& folder);

}  // namespace geomath_files
