#include "geomath/chain/coordinate_chain.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

#include "geomath/base/angle.h"
#include "geomath/base/batch.h"
#include "geomath/base/ellipsoid_formulas.h"
#include "geomath/chain/chain_trace.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr unsigned int kToUser = 0, kToInternal = 1;
constexpr double kMaxLatitude = kHalfPi + 1e-12;  // the pole, and the rounding of an inverse there

// Search of the ellipsoidal height that belongs to a height above a geoid (HeightToEllipsoid).
// A rest of 1e-6 m moves the position by 1e-6 m times the angle between the two ellipsoid normals,
// 1e-10 m or less, and the geoid height by less than that.
constexpr double kHeightTolerance = 1e-6;  // metres
constexpr int kMaxHeightRounds = 10;       // each leaves 1e-4 of the rest or less; 3 do

ChainStep StepOf(const CoordinateShift& shift) {
  if (shift.Kind() == ShiftKind::frameChange) return ChainStep::frameChange;
  if (shift.Kind() == ShiftKind::pointMotion) return ChainStep::pointMotion;
  switch (shift.Space()) {
    case ShiftSpace::geographic:
      return ChainStep::geographicShift;
    case ShiftSpace::geocentric:
      return ChainStep::geocentricShift;
    default:
      return ChainStep::planeShift;
  }
}

// Runs a shift over columns in place and lets `outside` decide about the points beyond it. Returns
// the number of points converted; the others are NaN.
std::size_t RunShift(const ChainShift& step, bool toLocal, PointDates dates, double* x, double* y,
                     double* h, std::size_t count, ShiftStatus* status) {
  double* const columns[] = {x, y, h};
  double given[3][kBatchBlock];
  for (std::size_t c = 0; c < 3; ++c) std::copy_n(columns[c], count, given[c]);
  if (!std::isnan(step.date)) dates = PointDates(step.date);
  const CoordinateShift& shift = *step.shift;
  const bool forward = toLocal == (step.direction == ShiftDirection::forward);
  std::size_t converted = forward ? shift.ForwardDatedBatch(dates, x, y, h, count, 1, status)
                                  : shift.InverseDatedBatch(dates, x, y, h, count, 1, status);
  for (std::size_t i = 0; i < count; ++i) {
    if (status[i] == ShiftStatus::outside && step.outside == ShiftOutside::unchanged) {
      for (std::size_t c = 0; c < 3; ++c) columns[c][i] = given[c][i];
      ++converted;
    }
    if (status[i] == ShiftStatus::extrapolated && step.outside != ShiftOutside::extrapolate) {
      const bool stays = step.outside == ShiftOutside::unchanged;
      for (std::size_t c = 0; c < 3; ++c) columns[c][i] = stays ? given[c][i] : kNaN;
      converted -= !stays;
    }
  }
  return converted;
}

// Shifts of planes and heights have no dates.
std::size_t RunShift(const ChainShift& step, bool toLocal, double* x, double* y, double* h,
                     std::size_t count) {
  ShiftStatus status[kBatchBlock];
  return RunShift(step, toLocal, PointDates(), x, y, h, count, status);
}

// A point from one ellipsoid by the seven parameters to another, to the bits of columns. False where one
// of them is missing, and where the columns do not serve the point.
using Transform = bool (Datum::*)(double&, double&, double&) const;
bool CarryAlone(const Ellipsoid* from, const Datum& datum, Transform transform, const Ellipsoid* to,
                double& x, double& y, double& z) {
  if (!from || !to) return false;
  const BlhToXyz up(*from);
  const XyzToBlh down(*to);
  if (!up.Serves(x, y, z)) return false;
  up.Convert<simd::BatchMath>(x, y, z);
  if (!(datum.*transform)(x, y, z) || !down.Serves(x, y, z)) return false;
  down.Convert<simd::BatchMath>(x, y, z);
  return true;
}

// Where a block has been on its way to global, so that a listener hears of it the other way round: the
// positions in the grid before and behind each of its shifts, and on the ellipsoid before and behind each
// step around the datum.
class Journal {
 public:
  static constexpr std::size_t kRoom = 8;  // steps, the projection among them

  struct Step {
    const Ellipsoid* toGeocentric = nullptr;  // one of these is given, none for the projection
    const Ellipsoid* toGeographic = nullptr;
    const Datum* datum = nullptr;
    const ChainShift* shift = nullptr;
    ChainStep place = ChainStep::none;  // of the shift
  };

  Journal(ChainTrace::Points first, std::size_t count) : count_(count) { Keep(first); }

  void Note(const Step& step, ChainTrace::Points behind) {
    steps_[size_ - 1] = step;
    Keep(behind);
  }
  // The positions on the local ellipsoid, which may be converted once all else is told.
  void NoteProjection(ChainTrace::Points geographic) {
    Note({}, geographic);
    for (std::size_t c = 0; c < 3; ++c) local_[c] = points_[size_ - 1][c];
    projection_ = size_ - 1;
  }
  double* const (&Local() const)[3] { return local_; }

  // The steps to local that undo those that are noted, the last one first.
  void TellAroundDatum(ChainTrace& trace) const {
    trace.Start(At(size_ - 1).columns, count_);
    for (std::size_t k = size_ - 1; k > projection_; --k) Tell(trace, k);
  }
  void TellPlane(ChainTrace& trace) const {
    for (std::size_t k = projection_ - 1; k > 0; --k) Tell(trace, k);
  }

 private:
  struct Positions {
    const double* columns[3];
  };
  Positions At(std::size_t k) const { return {points_[k][0], points_[k][1], points_[k][2]}; }

  void Keep(ChainTrace::Points points) {
    for (std::size_t c = 0; c < 3; ++c) std::copy_n(points[c], count_, points_[size_][c]);
    ++size_;
  }
  void Tell(ChainTrace& trace, std::size_t k) const {
    const Step& step = steps_[k - 1];
    const Positions before = At(k), after = At(k - 1);
    if (step.toGeocentric) trace.ToGeographic(*step.toGeocentric, after.columns, count_);
    if (step.toGeographic) trace.ToGeocentric(*step.toGeographic, before.columns, count_);
    if (step.datum) trace.Transform(*step.datum, after.columns, count_);
    if (step.shift) trace.Shift(*step.shift, step.place, before.columns, after.columns, count_);
  }

  std::size_t count_, size_ = 0, projection_ = 0;
  Step steps_[kRoom];
  double points_[kRoom + 1][3][kBatchBlock];
  double* local_[3] = {};
};

}  // namespace

// Points that go through all steps together, in place. Those that fail go on as copies of one that
// has not, so that they do not turn the steps from their columns to single points.
struct CoordinateChain::Block {
  double* const x;
  double* const y;
  double* const h;
  const PointDates dates;
  const std::size_t count;
  std::size_t alive;
  ChainTrace* trace;              // hears of the steps to local; null where nobody listens
  Journal* journal = nullptr;     // of the steps to global, where one is kept
  const Journal* told = nullptr;  // whose steps are told, of a block on the local ellipsoid
  ChainStep failed[kBatchBlock];

  Block(double* const (&columns)[3], PointDates years, std::size_t points,
        ChainTrace* listener = nullptr)
      : x(columns[0]),
        y(columns[1]),
        h(columns[2]),
        dates(years),
        count(points),
        alive(points),
        trace(listener) {
    std::fill_n(failed, count, ChainStep::none);
  }

  // Tells the trace, if there is one, of a step at the points.
  template <class Step, class Object>
  void Tell(Step step, const Object& object) const {
    if (trace) (trace->*step)(object, {x, y, h}, count);
  }

  void Note(const Journal::Step& step) const {
    if (journal) journal->Note(step, {x, y, h});
  }

  bool Alive(std::size_t i) const { return failed[i] == ChainStep::none; }

  // Blames `step` for the points alive of which `fails`, a callable on the index, is true.
  template <class Predicate>
  void FailWhere(ChainStep step, Predicate fails) {
    for (std::size_t i = 0; i < count; ++i) {
      if (!Alive(i) || !fails(i)) continue;
      failed[i] = step;
      --alive;
    }
    if (alive == count || alive == 0) return;
    const auto living = std::find(failed, failed + count, ChainStep::none) - failed;
    for (std::size_t i = 0; i < count; ++i)
      if (!Alive(i)) {
        x[i] = x[living];
        y[i] = y[living];
        h[i] = h[living];
      }
  }

  // Fails the points that have failed in another block of the same ones.
  void Inherit(const Block& other) {
    for (std::size_t i = 0; other.alive < count && i < count; ++i) {
      if (!Alive(i) || other.Alive(i)) continue;
      failed[i] = other.failed[i];
      --alive;
    }
  }

  void FailAll(ChainStep step) {
    FailWhere(step, [](std::size_t) { return true; });
  }

  // Fails the points that `step` has left without finite coordinates; `converted` is the number of
  // the others.
  void Check(ChainStep step, std::size_t converted) {
    if (converted == count) return;
    FailWhere(step, [this](std::size_t i) {
      return !(std::isfinite(x[i]) && std::isfinite(y[i]) && std::isfinite(h[i]));
    });
  }

  void CheckLatitudes(ChainStep step) {
    if (AllWithin(x, count, kMaxLatitude)) return;
    FailWhere(step, [this](std::size_t i) { return !(std::abs(x[i]) <= kMaxLatitude); });
  }

  void Shift(const ChainShift& step, bool toLocal, ChainStep place) {
    double before[3][kBatchBlock];
    const bool hears = trace && toLocal;
    if (hears) {
      std::copy_n(x, count, before[0]);
      std::copy_n(y, count, before[1]);
      std::copy_n(h, count, before[2]);
    }
    ShiftStatus status[kBatchBlock];
    const std::size_t converted = RunShift(step, toLocal, dates, x, y, h, count, status);
    if (converted < count) {
      const auto is = [&](ShiftStatus which) {
        return [=, &status](std::size_t i) { return status[i] == which; };
      };
      FailWhere(ChainStep::missingDate, is(ShiftStatus::noDate));
      FailWhere(ChainStep::modelYears, is(ShiftStatus::otherDate));
      Check(place, converted);
    }
    if (hears) trace->Shift(step, place, {before[0], before[1], before[2]}, {x, y, h}, count);
    if (!toLocal) Note({.shift = &step, .place = place});
  }

  void MarkFailed() {
    if (alive == count) return;
    for (std::size_t i = 0; i < count; ++i)
      if (!Alive(i)) x[i] = y[i] = h[i] = kNaN;
  }

  void TurnGeographic(const TGeoProj* projection, unsigned int direction) {
    if (projection) projection->RotateBLBatch(direction, x, y, count);
  }
  void TurnGrid(const TGeoProj* projection, unsigned int direction) {
    if (projection) projection->RotateNEBatch(direction, x, y, count);
  }
};

const char* ChainStepName(ChainStep step) {
  static constexpr const char* names[] = {
      "none",
      "the input",
      "the global ellipsoid",
      "the datum",
      "the local ellipsoid",
      "the projection",
      "the geoid",
      "the site calibration",
      "the ground system",
      "the geographic shift",
      "the geocentric shift",
      "the vertical shift",
      "the plane shift",
      "a missing date",
      "the years of the model",
      "the change of frame",
      "the velocity grid or deformation model",
  };
  static_assert(std::size(names) == static_cast<std::size_t>(ChainStep::pointMotion) + 1);
  const auto index = static_cast<std::size_t>(step);
  return index < std::size(names) ? names[index] : "an unknown step";
}

// Runs `convert`, which returns the number of points converted, and puts back the coordinates of
// the parts that a calibration of that mode leaves out, of points that were converted.
template <class Convert>
std::size_t CoordinateChain::KeepUncalibrated(Block& p, unsigned char mode, Convert convert) {
  if (mode == LocalToGrid::kBoth) return convert();
  double x[kBatchBlock], y[kBatchBlock], h[kBatchBlock];
  std::copy_n(p.x, p.count, x);
  std::copy_n(p.y, p.count, y);
  std::copy_n(p.h, p.count, h);
  const std::size_t converted = convert();
  for (std::size_t i = 0; i < p.count; ++i) {
    if (!std::isfinite(p.x[i])) continue;
    if (mode == LocalToGrid::kHorizontal) p.h[i] = h[i];
    if (mode == LocalToGrid::kVertical) {
      p.x[i] = x[i];
      p.y[i] = y[i];
    }
  }
  return converted;
}

// A block on its way around the datum: the ellipsoid that its coordinates are of, and whether they
// are geocentric.
class CoordinateChain::Frame {
 public:
  Frame(Block& block, const Ellipsoid* ellipsoid, ChainStep step)
      : block_(block), ellipsoid_(ellipsoid), step_(step) {}

  void To(ShiftSpace space) {
    if (space == space_) return;
    space_ = space;
    if (!ellipsoid_) return block_.FailAll(step_);
    const bool up = space == ShiftSpace::geocentric;
    const auto convert = up ? &Ellipsoid::BLH_to_XYZ_Batch : &Ellipsoid::XYZ_to_BLH_Batch;
    if (up) block_.Tell(&ChainTrace::ToGeocentric, *ellipsoid_);
    block_.Check(step_, (ellipsoid_->*convert)(block_.x, block_.y, block_.h, block_.count, 1));
    if (!up) block_.Tell(&ChainTrace::ToGeographic, *ellipsoid_);
    block_.Note(up ? Journal::Step{.toGeocentric = ellipsoid_}
                   : Journal::Step{.toGeographic = ellipsoid_});
  }

  void Shift(const ChainShift& step, bool toLocal) {
    To(step.shift->Space());
    if (block_.alive > 0) block_.Shift(step, toLocal, StepOf(*step.shift));
  }

  void Transform(const Datum& datum, bool toLocal, const Ellipsoid* ellipsoid, ChainStep step) {
    To(ShiftSpace::geocentric);
    const auto convert = toLocal ? &Datum::ToLocalDatumBatch : &Datum::ToWGS84DatumBatch;
    block_.Check(ChainStep::datum, (datum.*convert)(block_.x, block_.y, block_.h, block_.count, 1));
    block_.Tell(&ChainTrace::Transform, datum);
    block_.Note({.datum = &datum});
    ellipsoid_ = ellipsoid;
    step_ = step;
  }

 private:
  Block& block_;
  const Ellipsoid* ellipsoid_;
  ChainStep step_;
  ShiftSpace space_ = ShiftSpace::geographic;
};

void CoordinateChain::DatumToLocal(Block& p) const {
  Frame frame(p, global_, ChainStep::globalEllipsoid);
  for (const ChainShift& step : beforeDatum_) frame.Shift(step, true);
  if (datum_) frame.Transform(*datum_, true, datum_->GetEllipsoid(), ChainStep::localEllipsoid);
  for (const ChainShift& step : afterDatum_) frame.Shift(step, true);
  frame.To(ShiftSpace::geographic);
}

void CoordinateChain::DatumToGlobal(Block& p) const {
  Frame frame = datum_ ? Frame(p, datum_->GetEllipsoid(), ChainStep::localEllipsoid)
                       : Frame(p, global_, ChainStep::globalEllipsoid);
  for (auto step = afterDatum_.rbegin(); step != afterDatum_.rend(); ++step)
    frame.Shift(*step, false);
  if (datum_) frame.Transform(*datum_, false, global_, ChainStep::globalEllipsoid);
  for (auto step = beforeDatum_.rbegin(); step != beforeDatum_.rend(); ++step)
    frame.Shift(*step, false);
  frame.To(ShiftSpace::geographic);
}

// Ellipsoidal heights at the points to those of the local system.
void CoordinateChain::LowerHeights(Block& p, double* heights) const {
  std::copy_n(p.h, p.count, heights);
  if (geoid_) {
    double geoidHeight[kBatchBlock], perLatitude[kBatchBlock], perLongitude[kBatchBlock];
    if (p.trace) {
      geoid_->HeightsAndSlopes(p.x, p.y, geoidHeight, perLatitude, perLongitude, p.count);
      p.trace->LowerByGeoid({p.x, p.y, p.h}, perLatitude, perLongitude, p.count);
    } else {
      geoid_->Heights(p.x, p.y, geoidHeight, p.count);
    }
    for (std::size_t i = 0; i < p.count; ++i) heights[i] = p.h[i] - geoidHeight[i];
    p.FailWhere(ChainStep::geoid, [&](std::size_t i) { return !std::isfinite(heights[i]); });
  }
  for (const ChainShift& step : heights_) {
    double x[kBatchBlock], y[kBatchBlock], before[kBatchBlock];
    std::copy_n(p.x, p.count, x);
    std::copy_n(p.y, p.count, y);
    std::copy_n(heights, p.count, before);
    RunShift(step, true, x, y, heights, p.count);
    if (p.trace) p.trace->LowerByShift(step, {p.x, p.y, before}, {x, y, heights}, p.count);
    p.FailWhere(ChainStep::verticalShift,
                [&](std::size_t i) { return !std::isfinite(heights[i]); });
  }
}

// Heights of the local system to ellipsoidal ones at the points, NaN where there are none.
void CoordinateChain::RaiseHeights(Block& p, double* heights) const {
  for (auto step = heights_.rbegin(); step != heights_.rend(); ++step) {
    double x[kBatchBlock], y[kBatchBlock];
    std::copy_n(p.x, p.count, x);
    std::copy_n(p.y, p.count, y);
    RunShift(*step, false, x, y, heights, p.count);
    p.FailWhere(ChainStep::verticalShift,
                [&](std::size_t i) { return !std::isfinite(heights[i]); });
  }
  if (!geoid_) return;
  double geoidHeight[kBatchBlock];
  geoid_->Heights(p.x, p.y, geoidHeight, p.count);
  for (std::size_t i = 0; i < p.count; ++i) heights[i] += geoidHeight[i];
}

// Shifts of grid coordinates.
void CoordinateChain::ShiftPlane(Block& p, bool toLocal) const {
  const auto run = [&](const ChainShift& step) { p.Shift(step, toLocal, ChainStep::planeShift); };
  if (toLocal)
    std::for_each(afterProjection_.begin(), afterProjection_.end(), run);
  else
    std::for_each(afterProjection_.rbegin(), afterProjection_.rend(), run);
}

bool CoordinateChain::AddShift(ShiftPlace place, const ChainShift& shift) {
  if (!shift.shift) return false;
  const ShiftSpace space = shift.shift->Space();
  const bool timeless = shift.shift->Kind() == ShiftKind::timeless;
  switch (place) {
    case ShiftPlace::beforeDatum:
    case ShiftPlace::afterDatum:
      if (space == ShiftSpace::plane) return false;
      break;
    case ShiftPlace::heights:
      if (space != ShiftSpace::geographic || !timeless) return false;
      break;
    case ShiftPlace::afterProjection:
      if (space != ShiftSpace::plane || !timeless) return false;
      break;
  }
  (this->*ListOf(place)).push_back(shift);
  return true;
}

const std::vector<ChainShift>& CoordinateChain::GetShifts(ShiftPlace place) const {
  return this->*ListOf(place);
}

bool CoordinateChain::NeedsDates() const {
  const auto needsDate = [](const ChainShift& step) {
    return step.shift->Kind() != ShiftKind::timeless && std::isnan(step.date);
  };
  return std::any_of(beforeDatum_.begin(), beforeDatum_.end(), needsDate) ||
         std::any_of(afterDatum_.begin(), afterDatum_.end(), needsDate);
}

std::vector<ChainShift> CoordinateChain::*CoordinateChain::ListOf(ShiftPlace place) {
  switch (place) {
    case ShiftPlace::beforeDatum:
      return &CoordinateChain::beforeDatum_;
    case ShiftPlace::afterDatum:
      return &CoordinateChain::afterDatum_;
    case ShiftPlace::heights:
      return &CoordinateChain::heights_;
    default:
      return &CoordinateChain::afterProjection_;
  }
}

void CoordinateChain::ToLocalBlock(Block& p) const {
  double heights[kBatchBlock];
  if (!p.told) {
    p.TurnGeographic(projection_, kToInternal);
    p.CheckLatitudes(ChainStep::input);
    if (p.trace) p.trace->Start({p.x, p.y, p.h}, p.count);

    const bool atGlobal = HasHeights() && geoidFrame_ == GeoidFrame::global;
    if (atGlobal) LowerHeights(p, heights);
    if (MovesPositions()) DatumToLocal(p);
    if (HasHeights() && !atGlobal) LowerHeights(p, heights);
  }
  if (p.trace) p.trace->Arrive({p.x, p.y, p.h}, p.count);
  if (HasHeights()) std::copy_n(heights, p.count, p.h);

  if (projection_) GlobalToGrid(p);
  if (p.told)
    p.told->TellPlane(*p.trace);
  else
    ShiftPlane(p, true);
  GridToSite(p, !p.trace || p.trace->NeedsGrid());
  p.TurnGrid(projection_, kToUser);
  if (p.trace && !projection_) p.trace->Finish({p.x, p.y, p.h}, p.count);
}

// The batches of a projection speak the caller's axes, all steps here internal ones; turning there
// and back is exact.
void CoordinateChain::GlobalToGrid(Block& p) const {
  if (p.trace) {
    const std::size_t converted =
        p.trace->Project(*projection_, {p.x, p.y, p.h}, p.x, p.y, p.count);
    return p.Check(ChainStep::projection, converted);
  }
  p.TurnGeographic(projection_, kToUser);
  p.Check(ChainStep::projection, projection_->ForwardBatch(p.x, p.y, p.count));
  p.TurnGrid(projection_, kToInternal);
}

void CoordinateChain::GridToGlobal(Block& p) const {
  p.TurnGrid(projection_, kToUser);
  p.Check(ChainStep::projection, projection_->InverseBatch(p.x, p.y, p.count));
  p.TurnGeographic(projection_, kToInternal);
}

void CoordinateChain::GridToSite(Block& p, bool positions) const {
  const bool onGround = ground_ && !ground_->IsDisabled();
  if (localization_) p.Tell(&ChainTrace::ToSite, *localization_);
  if (localization_ && positions) {
    const auto convert = [&] {
      return localization_->ToLocalBatch(p.x, p.y, p.h, p.count, LocalToGrid::kBoth);
    };
    p.Check(ChainStep::localization, KeepUncalibrated(p, localization_->mode, convert));
  }
  if (onGround && p.trace) p.trace->ToGround(*ground_, p.count);
  if (onGround && positions) p.Check(ChainStep::ground, ground_->ToGroundBatch(p.x, p.y, p.count));
}

void CoordinateChain::SiteToGrid(Block& p) const {
  if (ground_ && !ground_->IsDisabled()) {
    p.Check(ChainStep::ground, ground_->ToGridBatch(p.x, p.y, p.count));
  }
  if (localization_) {
    const auto convert = [&] {
      return localization_->ToGridBatch(p.x, p.y, p.h, p.count, LocalToGrid::kBoth);
    };
    p.Check(ChainStep::localization, KeepUncalibrated(p, localization_->mode, convert));
  }
}

// Where the geoid belongs to the global ellipsoid, its height is needed at a global position that
// depends, weakly, on the ellipsoidal height that is sought: a fixed point. Every round carries
// the point to the global ellipsoid with the height so far, compares the height that comes out
// with H + N there, and corrects by the difference. Where nothing moves positions, or with a geoid on
// the local ellipsoid, position and height stand on one ellipsoid and H + N is the answer.
void CoordinateChain::HeightToEllipsoid(Block& p) const {
  const bool samePosition = !MovesPositions() || geoidFrame_ == GeoidFrame::local;
  double b[kBatchBlock], l[kBatchBlock], aboveGeoid[kBatchBlock], ellipsoidal[kBatchBlock];
  double wanted[kBatchBlock];
  std::copy_n(p.x, p.count, b);
  std::copy_n(p.y, p.count, l);
  std::copy_n(p.h, p.count, aboveGeoid);
  std::copy_n(p.h, p.count, ellipsoidal);

  double rest[kBatchBlock];
  for (int round = 0; round < kMaxHeightRounds; ++round) {
    if (!samePosition) {
      std::copy_n(b, p.count, p.x);
      std::copy_n(l, p.count, p.y);
      std::copy_n(ellipsoidal, p.count, p.h);
      DatumToGlobal(p);
    }
    std::copy_n(aboveGeoid, p.count, wanted);
    RaiseHeights(p, wanted);
    double worst = 0;
    for (std::size_t i = 0; i < p.count; ++i) {
      rest[i] = samePosition ? 0 : wanted[i] - p.h[i];
      p.h[i] = wanted[i];
      ellipsoidal[i] += rest[i];
    }
    p.FailWhere(ChainStep::geoid, [&](std::size_t i) { return !std::isfinite(p.h[i]); });
    for (std::size_t i = 0; i < p.count; ++i)
      if (p.Alive(i)) worst = std::max(worst, std::abs(rest[i]));
    if (worst <= kHeightTolerance) break;
  }
  p.FailWhere(ChainStep::geoid,
              [&](std::size_t i) { return !(std::abs(rest[i]) <= kHeightTolerance); });
  if (MovesPositions() && samePosition) DatumToGlobal(p);
}

// A listener hears of the steps to local: where those are known from the way to global, of these, else of
// the points on their way back.
void CoordinateChain::ToGlobalBlock(Block& p) const {
  ChainTrace* const trace = std::exchange(p.trace, nullptr);
  if (trace && HasKnownSteps(*trace)) return ToGlobalInJournal(p, *trace);
  p.TurnGrid(projection_, kToInternal);
  SiteToGrid(p);
  GridToEllipsoid(p);
  LocalToGlobal(p);
  p.TurnGeographic(projection_, kToUser);
  if (trace && p.alive > 0) TellWayBack(p, *trace);
}

// From the plane that the site stands in to positions on the local ellipsoid.
void CoordinateChain::GridToEllipsoid(Block& p) const {
  ShiftPlane(p, false);
  if (projection_) GridToGlobal(p);
  p.CheckLatitudes(projection_ ? ChainStep::projection : ChainStep::input);
}

void CoordinateChain::LocalToGlobal(Block& p) const {
  if (HasHeights())
    HeightToEllipsoid(p);
  else if (MovesPositions())
    DatumToGlobal(p);
}

bool CoordinateChain::HasKnownSteps(const ChainTrace& trace) const {
  const std::size_t steps =
      2 * (beforeDatum_.size() + afterDatum_.size()) + 3 + 1 + afterProjection_.size();
  return !HasHeights() && !trace.NeedsGrid() && steps <= Journal::kRoom;
}

void CoordinateChain::ToGlobalInJournal(Block& p, ChainTrace& trace) const {
  p.TurnGrid(projection_, kToInternal);
  SiteToGrid(p);
  Journal journal({p.x, p.y, p.h}, p.count);
  p.journal = &journal;
  GridToEllipsoid(p);
  journal.NoteProjection({p.x, p.y, p.h});
  LocalToGlobal(p);
  p.journal = nullptr;
  if (p.alive > 0) {
    journal.TellAroundDatum(trace);
    Block local(journal.Local(), p.dates, p.count, &trace);
    local.told = &journal;
    ToLocalBlock(local);
    p.Inherit(local);
  }
  p.TurnGeographic(projection_, kToUser);
}

void CoordinateChain::TellWayBack(Block& p, ChainTrace& trace) const {
  double at[3][kBatchBlock];
  std::copy_n(p.x, p.count, at[0]);
  std::copy_n(p.y, p.count, at[1]);
  std::copy_n(p.h, p.count, at[2]);
  Block back({at[0], at[1], at[2]}, p.dates, p.count, &trace);
  ToLocalBlock(back);
  p.Inherit(back);
}

// The steps of one way for at most kBatchBlock points, to local with a listener if there is one.
void CoordinateChain::RunBlock(BlockStep steps, double* const (&columns)[3], PointDates dates,
                               std::size_t count, ChainStep* failedAt, ChainTrace* trace) const {
  Block block(columns, dates, count, trace);
  block.Check(ChainStep::input, MarkFailures(columns, count));
  if (block.alive > 0) (this->*steps)(block);
  block.MarkFailed();
  if (failedAt) std::copy_n(block.failed, count, failedAt);
}

// Whether there is nothing but a datum and a projection on the axes of the steps.
bool CoordinateChain::IsPlain() const {
  return beforeDatum_.empty() && afterDatum_.empty() && heights_.empty() &&
         afterProjection_.empty() && !geoid_ && !localization_ && !ground_ &&
         !(projection_ && projection_->TurnsAxes());
}

// The steps of a plain chain for a point alone: the bits of a block without its bookkeeping. False
// for other chains, and for a point that a step refuses or takes a way of its own, whose block tells of it;
// the point is then spoilt.
bool CoordinateChain::PlainToLocal(double& b, double& l, double& h) const {
  if (!IsPlain() || !(std::abs(b) <= kMaxLatitude)) return false;
  if (datum_ &&
      !CarryAlone(global_, *datum_, &Datum::ToLocalDatum, datum_->GetEllipsoid(), b, l, h))
    return false;
  if (projection_ && projection_->ForwardBatch(&b, &l, 1) != 1) return false;
  return std::isfinite(b + l + h);
}

bool CoordinateChain::PlainToGlobal(double& n, double& e, double& h) const {
  if (!IsPlain()) return false;
  if (projection_ && projection_->InverseBatch(&n, &e, 1) != 1) return false;
  if (!(std::abs(n) <= kMaxLatitude)) return false;
  if (datum_ &&
      !CarryAlone(datum_->GetEllipsoid(), *datum_, &Datum::ToWGS84Datum, global_, n, e, h))
    return false;
  return std::isfinite(n + e + h);
}

// The steps of one direction, in blocks and for a point alone in a plain chain.
struct CoordinateChain::Way {
  BlockStep block;
  bool (CoordinateChain::*plain)(double& x, double& y, double& h) const;

  static const Way toLocal, toGlobal;
};

constexpr CoordinateChain::Way CoordinateChain::Way::toLocal = {&CoordinateChain::ToLocalBlock,
                                                                &CoordinateChain::PlainToLocal};
constexpr CoordinateChain::Way CoordinateChain::Way::toGlobal = {&CoordinateChain::ToGlobalBlock,
                                                                 &CoordinateChain::PlainToGlobal};

ChainResult CoordinateChain::RunPoint(const Way& way, PointDates dates, double& x, double& y,
                                      double& h) const {
  double px = x, py = y, ph = h;
  ChainResult result;
  if (RunBatch(way, dates, &px, &py, &ph, 1, 1, &result.failedAt) == 1) {
    x = px;
    y = py;
    h = ph;
  }
  return result;
}

std::size_t CoordinateChain::RunBatch(const Way& way, PointDates dates, double* x, double* y,
                                      double* h, std::size_t count, std::ptrdiff_t stride,
                                      ChainStep* failedAt) const {
  if (count == 1) {
    double px = *x, py = *y, ph = *h;
    if ((this->*way.plain)(px, py, ph)) {
      *x = px;
      *y = py;
      *h = ph;
      if (failedAt) *failedAt = ChainStep::none;
      return 1;
    }
  }
  std::size_t first = 0;
  const auto convert = [&](double* const(&columns)[3], std::size_t n) {
    RunBlock(way.block, columns, dates.From(first), n, failedAt ? failedAt + first : nullptr);
    first += n;
  };
  return ConvertBlocks(convert, count, stride, x, y, h);
}

ChainResult CoordinateChain::ToLocal(double& b, double& l, double& h) const {
  return RunPoint(Way::toLocal, PointDates(), b, l, h);
}

ChainResult CoordinateChain::ToLocal(double& b, double& l, double& h, double date) const {
  return RunPoint(Way::toLocal, PointDates(date), b, l, h);
}

ChainResult CoordinateChain::ToGlobal(double& n, double& e, double& h) const {
  return RunPoint(Way::toGlobal, PointDates(), n, e, h);
}

ChainResult CoordinateChain::ToGlobal(double& n, double& e, double& h, double date) const {
  return RunPoint(Way::toGlobal, PointDates(date), n, e, h);
}

std::size_t CoordinateChain::ToLocalBatch(double* b, double* l, double* h, std::size_t count,
                                          std::ptrdiff_t stride, ChainStep* failedAt) const {
  return ToLocalDatedBatch(PointDates(), b, l, h, count, stride, failedAt);
}

std::size_t CoordinateChain::ToLocalDatedBatch(PointDates dates, double* b, double* l, double* h,
                                               std::size_t count, std::ptrdiff_t stride,
                                               ChainStep* failedAt) const {
  return RunBatch(Way::toLocal, dates, b, l, h, count, stride, failedAt);
}

std::size_t CoordinateChain::ToGlobalBatch(double* n, double* e, double* h, std::size_t count,
                                           std::ptrdiff_t stride, ChainStep* failedAt) const {
  return ToGlobalDatedBatch(PointDates(), n, e, h, count, stride, failedAt);
}

std::size_t CoordinateChain::ToGlobalDatedBatch(PointDates dates, double* n, double* e, double* h,
                                                std::size_t count, std::ptrdiff_t stride,
                                                ChainStep* failedAt) const {
  return RunBatch(Way::toGlobal, dates, n, e, h, count, stride, failedAt);
}

}  // namespace zel_cs::geomath
