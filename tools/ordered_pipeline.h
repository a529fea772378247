#pragma once

#include <cstddef>
#include <functional>

namespace geomath_files::program {

/// What happens to each block of a long piece of work. Blocks are known by the number of the place that
/// they stand in, from 0 on; a place is used again when its block is written.
struct PipelineStages {
  /// Reads the next block, one after the other on the calling thread; false where none is left.
  std::function<bool(std::size_t place)> read;
  /// Works on a block, side by side with others.
  std::function<void(std::size_t place)> work;
  /// Writes a block, one after the other in the order of reading.
  std::function<void(std::size_t place)> write;
};

/// How many places so many jobs need, so that none waits for another.
std::size_t PipelinePlaces(std::size_t jobs);

/// Runs all blocks through the stages, with `jobs` threads that work and write; by one job on the calling
/// thread alone, without any other. Signals come to the calling thread. The first exception of a stage ends
/// the work and is thrown again; one of `read` when the blocks before are written.
void RunPipeline(std::size_t jobs, const PipelineStages& stages);

}  // namespace geomath_files::program
