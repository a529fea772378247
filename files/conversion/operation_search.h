#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "files/conversion/conversion.h"
#include "files/conversion/conversion_end.h"
#include "files/epsg/epsg_registry.h"
#include "files/epsg/grid_folders.h"
#include "files/epsg/operation_chooser.h"

namespace geomath_files {

/// One step of a conversion: what leads from one system of positions, or of heights, to the next.
struct ConversionStage {
  std::string from, to;       ///< as the registry is asked for operations
  bool keepsHeights = false;  ///< though its operations may change them
  bool vertical = false;
  std::vector<CandidateOperation> candidates = {};
};

/// Whether heights are changed: both systems have some, of two kinds or above two ellipsoids. Behind X, Y
/// and Z there always are heights, which then are above the ellipsoid on the other side too.
bool ChangesHeights(const ConversionEnd& source, const ConversionEnd& target);

/// What the user should know of heights that stay as they are; empty for nothing.
std::string HeightNote(const ConversionEnd& source, const ConversionEnd& target);

/// Plans the way from one system to another and chooses its operations.
class OperationSearch {
 public:
  /// All stay alive as long as the search.
  OperationSearch(const EpsgRegistry& registry, const ConversionEnd& source,
                  const ConversionEnd& target, const ConversionWish& wish);

  /// Empty where positions and heights of both are the same.
  std::vector<ConversionStage> Plan() const;
  /// The operations of a stage that points may take, best first; `wished` where they are the user's
  /// choice. Throws UserError where there is none.
  std::vector<const CandidateOperation*> Choose(const ConversionStage& stage, bool& wished) const;
  /// Throws UserError: no stage has the operation of the user's choice.
  [[noreturn]] void RefuseWished() const;

 private:
  // What leads between heights above an ellipsoid and others, or nothing.
  struct Geoid {
    std::string positions;  // above whose ellipsoid
    std::string beside;     // the other heights; another system where positions are moved as well
    std::vector<CandidateOperation> candidates = {};
  };

  std::vector<ConversionStage> Positions(const std::pair<std::string, std::string>& systems,
                                         bool keepsHeights) const;
  void PreferUsualFrame(ConversionStage& stage) const;
  std::optional<std::vector<ConversionStage>> ByNationalSystem(const ConversionStage& whole) const;
  std::optional<std::vector<ConversionStage>> BetweenHeights(const std::string& low,
                                                             const std::string& high) const;
  std::optional<Geoid> WishedGeoid(const std::string& heights, bool toEllipsoid) const;
  Geoid FindGeoid(const std::string& heights, bool toEllipsoid) const;
  std::string Between() const;
  void AddWished(const std::string& from, const std::string& to,
                 std::vector<CandidateOperation>& candidates) const;
  const CandidateOperation* FindWished(const std::vector<CandidateOperation>& candidates) const;
  [[noreturn]] void Complain(const std::vector<CandidateOperation>& candidates) const;

  const EpsgRegistry& registry_;
  const ConversionEnd &source_, &target_;
  const ConversionWish& wish_;
  const OperationPlace place_;
  const GridFolders folders_;
  const OperationChooser chooser_;
};

}  // namespace geomath_files
