#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "files/conversion/conversion.h"
#include "files/conversion/operation_leg.h"
#include "files/conversion/operation_search.h"
#include "geomath/base/point_dates.h"

namespace geomath_files {

/// Operations of a stage, ready to be run; const, and for many threads at once.
class StageRun {
 public:
  /// With the operations that were chosen, best first; one that serves `everywhere` does so outside of
  /// its area too.
  StageRun(const EpsgRegistry& registry, const ConversionStage& stage,
           const std::vector<const CandidateOperation*>& chosen, bool everywhere);

  using Columns = std::array<double*, 3>;
  static constexpr std::size_t kBlock = OperationLeg::kMostPoints;

  const std::vector<std::unique_ptr<OperationLeg>>& Legs() const { return legs_; }
  bool IsVertical() const { return vertical_; }
  bool NeedsDates() const;

  /// Runs the points that have not failed yet.
  void Run(const Columns& columns, std::size_t count, ConversionOutcome* outcomes,
           zel_cs::geomath::PointDates dates, bool inverse) const;

 private:
  using Numbers = std::array<std::uint16_t, kBlock>;

  void RunLeg(std::size_t leg, const Columns& columns, std::size_t count,
              zel_cs::geomath::ChainStep* failed, zel_cs::geomath::PointDates dates,
              bool inverse) const;
  void Undo(const OperationLeg& leg, const Columns& columns, std::size_t count,
            zel_cs::geomath::ChainStep* failed, zel_cs::geomath::PointDates dates) const;
  void RunSome(std::size_t leg, const Columns& columns, const Numbers& chosen, std::size_t count,
               ConversionOutcome* outcomes, zel_cs::geomath::PointDates dates, bool inverse) const;

  bool keepsHeights_, vertical_;
  bool everywhere_;  // areas do not count
  std::vector<std::unique_ptr<OperationLeg>> legs_;
};

}  // namespace geomath_files
