#pragma once

#include <memory>
#include <string>

#include "bench/measure.h"
#include "geomath/chain/chain_uncertainty.h"

/// Registers what covariances cost a chain: the rows "NAME, sigma forward" and "… inverse", whose
/// contenders are the batch with covariances and, in a peer's place, the batch without. Covariances
/// are those that the run before has left. The steps of the chain outlive the program's main.
inline void RegisterCovariances(const std::string& name,
                                std::shared_ptr<const zel_cs::geomath::CoordinateChain> chain,
                                const Columns& global, double date = zel_cs::geomath::kNoDate) {
  using zel_cs::geomath::ChainUncertainty;
  using zel_cs::geomath::CoordinateChain;
  using enum zel_cs::geomath::CovarianceFrame;
  const zel_cs::geomath::PointDates dates(date);
  const auto uncertainty = std::make_shared<ChainUncertainty>(*chain);
  Columns local = global;
  chain->ToLocalDatedBatch(dates, local.first.data(), local.second.data(), local.third.data(),
                           kBenchPoints);
  for (const bool forward : {true, false}) {
    const std::string row = name + (forward ? ", sigma forward" : ", sigma inverse");
    const Columns points = forward ? global : local;
    benchmark::RegisterBenchmark((row + "/batch").c_str(), [=](benchmark::State& state) {
      const auto convert =
          forward ? &ChainUncertainty::ToLocalBatch : &ChainUncertainty::ToGlobalBatch;
      std::vector<double> covariances;
      for (std::size_t i = 0; i < kBenchPoints; ++i)
        covariances.insert(covariances.end(), {4e-4, 0, 0, 0, 4e-4, 0, 0, 0, 16e-4});
      MeasureInPlace(state, points, [&](Columns& c) {
        ((*uncertainty).*convert)(c.first.data(), c.second.data(), c.third.data(),
                                  covariances.data(), kBenchPoints, 1, nullptr, northEastUp,
                                  northEastUp, dates);
      });
    });
    benchmark::RegisterBenchmark((row + "/without").c_str(), [=](benchmark::State& state) {
      const auto convert =
          forward ? &CoordinateChain::ToLocalDatedBatch : &CoordinateChain::ToGlobalDatedBatch;
      MeasureInPlace(state, points, [&](Columns& c) {
        ((*chain).*convert)(dates, c.first.data(), c.second.data(), c.third.data(), kBenchPoints, 1,
                            nullptr);
      });
    });
  }
}
