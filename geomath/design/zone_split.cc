#include "geomath/design/zone_split.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>

#include "geomath/base/angle.h"
#include "geomath/design/axis_search.h"
#include "geomath/design/design_points.h"
#include "geomath/design/zone_rounding.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr std::size_t kCells = 16;  // a side, of the sample that strips are sought on

using Indices = std::vector<std::size_t>;

// The azimuth of the longer axis of the points: that of their largest variance.
double LongAxis(const GroundPoints& points, const GroundFrame& frame) {
  double n = 0, e = 0, nn = 0, ne = 0, ee = 0;
  const double count = static_cast<double>(points.Size());
  for (std::size_t i = 0; i < points.Size(); ++i) {
    const double north = frame.North(points.b[i]), east = frame.East(points.l[i]);
    n += north;
    e += east;
    nn += north * north;
    ne += north * east;
    ee += east * east;
  }
  nn -= n * n / count;
  ne -= n * e / count;
  ee -= e * e / count;
  return 0.5 * Atan2(2 * ne, nn - ee);
}

// Strips of one direction.
class StripSearch {
 public:
  StripSearch(const GroundPoints& points, const GroundFrame& frame, double azimuth,
              const DesignOptions& options, const std::vector<ZoneFamily>& families,
              DesignWatch& watch)
      : points_(points),
        frame_(frame),
        azimuth_(azimuth),
        options_(options),
        families_(families),
        watch_(watch),
        order_(points.Size()) {
    std::iota(order_.begin(), order_.end(), std::size_t{0});
    std::stable_sort(order_.begin(), order_.end(), [this](std::size_t i, std::size_t j) {
      return Along(points_, i) < Along(points_, j);
    });
  }

  // The coordinate in which strips follow each other.
  double Along(const GroundPoints& points, std::size_t i) const {
    return frame_.North(points.b[i]) * Cos(azimuth_) + frame_.East(points.l[i]) * Sin(azimuth_);
  }

  // Where the strips after the first begin, each as long as the limit lets it be; nothing where more
  // than `most` are needed, or the watch has stopped.
  std::optional<std::vector<double>> Cut(double limit, std::size_t most) {
    std::vector<double> starts;
    for (std::size_t first = 0; first < order_.size();) {
      if (starts.size() == most || watch_.Stopped()) return std::nullopt;
      std::size_t fits = first, fails = order_.size() + 1;
      // Doubling from one point on, then halves.
      for (std::size_t size = 2; fits < order_.size() && fails > order_.size(); size *= 2) {
        const std::size_t end = std::min(first + size, order_.size());
        (Fits(first, end, limit) ? fits : fails) = end;
      }
      while (fails - fits > 1 && fails <= order_.size()) {
        const std::size_t end = fits + (fails - fits) / 2;
        (Fits(first, end, limit) ? fits : fails) = end;
      }
      if (fits <= first + 1 && fails <= order_.size()) return std::nullopt;  // not even two points
      starts.push_back(
          first == 0 ? -kInfinite
                     : (Along(points_, order_[first - 1]) + Along(points_, order_[first])) / 2);
      first = fits;
    }
    return starts;
  }

  // The rounded zone of some points: of the first family that is good enough, else the best.
  ZoneFit Design(const GroundPoints& points, double enough) {
    ZoneFit best{{}, kInfinite};
    for (const ZoneFamily family : families_) {
      if (best.value <= enough || watch_.Stopped()) break;
      AxisSearch search(points, family, options_.criterion, watch_);
      const ZoneFit exact = search.Find();
      if (!std::isfinite(exact.value)) continue;
      const ZoneFit rounded = RoundZone(points, exact.zone, options_, watch_);
      if (rounded.value < best.value) best = rounded;
    }
    return best;
  }

 private:
  bool Fits(std::size_t first, std::size_t end, double limit) {
    const Indices indices(order_.begin() + static_cast<std::ptrdiff_t>(first),
                          order_.begin() + static_cast<std::ptrdiff_t>(end));
    const GroundPoints strip = points_.Subset(indices);
    // What a few of its points exceed already, all do.
    constexpr std::size_t kFew = 3;
    return Design(strip.Extremes(kFew), limit).value <= limit &&
           Design(strip, limit).value <= limit;
  }

  const GroundPoints& points_;
  const GroundFrame& frame_;
  const double azimuth_;
  const DesignOptions& options_;
  const std::vector<ZoneFamily>& families_;
  DesignWatch& watch_;
  Indices order_;
};

// The strips of all points that begin at `starts`.
std::vector<Indices> Strips(const GroundPoints& points, const StripSearch& search,
                            const std::vector<double>& starts) {
  std::vector<Indices> strips(starts.size());
  for (std::size_t i = 0; i < points.Size(); ++i) {
    const auto after = std::upper_bound(starts.begin(), starts.end(), search.Along(points, i));
    strips[static_cast<std::size_t>(after - starts.begin()) - 1].push_back(i);
  }
  return strips;
}

// Adds the points with the extreme distortions in a zone to a sample.
void AddExtremes(const GroundPoints& points, ZoneDefinition zone, GroundPoints& sample) {
  std::vector<double> m;
  if (!points.Factors(*zone.Projection(points.ellipsoid), m)) return;
  const auto [low, high] = std::minmax_element(m.begin(), m.end());
  for (const auto at : {low, high}) {
    const auto i = static_cast<std::size_t>(at - m.begin());
    sample.Add(points.b[i], points.l[i], points.h[i], points.weight[i]);
  }
}

struct Cuts {
  std::vector<double> starts;
  double azimuth = 0;
  bool across = false;
};

// The fewest strips of the sample in either direction, made equally good.
Cuts FindCuts(const GroundPoints& sample, const GroundFrame& frame, const DesignOptions& options,
              const std::vector<ZoneFamily>& families, double limit, std::size_t most,
              DesignWatch& watch) {
  constexpr int kHalvings = 4;
  Cuts best;
  const double along = LongAxis(sample, frame);
  for (const bool across : {false, true}) {
    const double azimuth = across ? along + kHalfPi : along;
    StripSearch search(sample, frame, azimuth, options, families, watch);
    const std::size_t bound = best.starts.empty() ? most : best.starts.size() - 1;
    if (auto starts = search.Cut(limit, bound)) best = {std::move(*starts), azimuth, across};
  }
  if (best.starts.size() < 2) return best;
  StripSearch search(sample, frame, best.azimuth, options, families, watch);
  double low = limit / 2, high = limit;
  for (int i = 0; i < kHalvings && !watch.Stopped(); ++i) {
    const double middle = (low + high) / 2;
    if (auto starts = search.Cut(middle, best.starts.size())) {
      best.starts = std::move(*starts);
      high = middle;
    } else {
      low = middle;
    }
  }
  return best;
}

}  // namespace

ZoneSplit SplitZones(const HeightPoints& points, const DesignOptions& asked, double limit,
                     int most) {
  constexpr int kTries = 12, kSteps = 20000;
  constexpr double kTighter = 0.995;  // of the limit, when points that the sample lacks exceed it
  ZoneSplit split;
  DesignOptions options = asked;
  if (options.criterion.measure != DesignMeasure::percentile)
    options.criterion.measure = DesignMeasure::largest;
  DesignPoints examined = ExaminePoints(points, options);
  std::vector<ZoneFamily> families = FamiliesFor(examined, options);
  split.status = examined.status;
  if (split.status == DesignStatus::done && !(limit > 0 && most > 0))
    split.status = DesignStatus::badValue;
  if (split.status != DesignStatus::done) return split;

  // Those of one unknown are the simplest, and sought a hundred times as fast.
  const auto rest = std::stable_partition(families.begin(), families.end(), [](ZoneFamily family) {
    return family == ZoneFamily::transverseMercator || family == ZoneFamily::lambert;
  });
  const std::vector<ZoneFamily> quick(families.begin(),
                                      rest == families.begin() ? families.end() : rest);

  const GroundPoints& ground = examined.ground;
  const GroundFrame frame(ground);
  GroundPoints sample = ground.Extremes(kCells);
  DesignWatch watch(asked.progress);
  watch.Stage(0, 1, kSteps);
  double tight = limit;
  for (int i = 0; i < kTries; ++i, tight *= kTighter) {
    const Cuts cuts =
        FindCuts(sample, frame, options, quick, tight, static_cast<std::size_t>(most), watch);
    StripSearch search(sample, frame, cuts.azimuth, options, families, watch);
    split.across = cuts.across;
    split.azimuth = cuts.azimuth;
    split.zones.clear();
    double worst = 0;
    if (!cuts.starts.empty())
      for (const Indices& strip : Strips(ground, search, cuts.starts)) {
        const GroundPoints own = ground.Subset(strip);
        ZoneFit fit = search.Design(own, limit);
        SetFalseOrigin(own, options, fit.zone);
        fit.zone.lon0 = std::remainder(fit.zone.lon0, kTwoPi);
        worst = std::max(worst, fit.value);
        if (fit.value > limit) AddExtremes(own, fit.zone, sample);
        SplitZone zone{fit.zone, fit.value, {}};
        for (const std::size_t at : strip) zone.points.push_back(examined.source[at]);
        split.zones.push_back(std::move(zone));
      }
    if (watch.Stopped()) {
      split.status = DesignStatus::stopped;
      split.zones.clear();
    }
    if (watch.Stopped() || worst <= limit) return split;
  }
  split.zones.clear();
  return split;
}

}  // namespace zel_cs::geomath
