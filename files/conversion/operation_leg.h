#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "files/system/geo_box.h"
#include "files/system/system_file.h"
#include "geomath/base/point_dates.h"
#include "geomath/chain/coordinate_chain.h"

namespace geomath_files {

class EpsgRegistry;
struct CandidateOperation;

/// An operation of the registry between two geographic systems, ready to be run: const, and from many
/// threads at once. Latitudes and longitudes from Greenwich are radians, heights metres.
class OperationLeg {
 public:
  /// Reads its grids. Throws UserError for a file that is damaged.
  OperationLeg(const EpsgRegistry& registry, const CandidateOperation& candidate);

  /// "EPSG:1314 OSGB36 to WGS 84 (6), accuracy 2 m".
  const std::string& Title() const { return title_; }
  /// Metres; negative where it is unknown.
  double Accuracy() const { return accuracy_; }
  const GeoBox& Area() const { return area_; }
  bool HasGrid() const { return hasGrid_; }
  const std::vector<std::string>& Files() const { return files_; }
  bool NeedsDates() const;
  /// Whether heights come out otherwise than they go in.
  bool ChangesHeights() const { return changesHeights_; }

  /// Points that one call takes.
  static constexpr std::size_t kMostPoints = 512;

  /// In place; NaN in all three where a step fails, which `failed` receives.
  void Forward(double* b, double* l, double* h, std::size_t count,
               zel_cs::geomath::PointDates dates, zel_cs::geomath::ChainStep* failed) const;
  void Inverse(double* b, double* l, double* h, std::size_t count,
               zel_cs::geomath::PointDates dates, zel_cs::geomath::ChainStep* failed) const;

 private:
  std::string title_;
  double accuracy_;
  GeoBox area_;
  bool hasGrid_, changesHeights_;
  std::vector<std::string> files_;
  // One after the other, each from its local to its global side, or the other way.
  struct Part {
    std::unique_ptr<CoordinateSystem> system;
    bool toGlobal = true;
  };
  void TakeRoute(const EpsgRegistry& registry, const CandidateOperation& candidate);
  static void RunPart(const Part& part, bool inverse, double* b, double* l, double* h,
                      std::size_t count, zel_cs::geomath::PointDates dates,
                      zel_cs::geomath::ChainStep* failed);

  std::vector<Part> parts_;
};

}  // namespace geomath_files
