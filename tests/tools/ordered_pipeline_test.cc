#include "tools/ordered_pipeline.h"

#include <gtest/gtest.h>

#include <atomic>
#include <numeric>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace geomath_files::program;

namespace {

constexpr int kBlocks = 500;

// Blocks are numbers, which the work doubles.
struct Doubling {
  std::vector<int> Doubled(std::size_t jobs) {
    std::vector<std::atomic<int>> places(PipelinePlaces(jobs));
    std::vector<int> written;
    int next = 0;
    RunPipeline(jobs, {[&](std::size_t place) {
                         if (next == readFails) throw std::runtime_error("read");
                         places[place] = next;
                         return next++ < kBlocks;
                       },
                       [&](std::size_t place) {
                         if (places[place] == workFails) throw std::runtime_error("work");
                         if (places[place] % 7 == 0) std::this_thread::yield();
                         places[place] = 2 * places[place];
                       },
                       [&](std::size_t place) {
                         if (places[place] == 2 * writeFails) throw std::runtime_error("write");
                         written.push_back(places[place]);
                         ++count;
                       }});
    return written;
  }

  int readFails = -1, workFails = -1, writeFails = -1;
  int count = 0;
};

}  // namespace

TEST(OrderedPipeline, WritesInTheOrderOfReading) {
  std::vector<int> expected(kBlocks);
  std::iota(expected.begin(), expected.end(), 0);
  for (int& each : expected) each *= 2;
  for (const std::size_t jobs : {1, 2, 7}) EXPECT_EQ(Doubling().Doubled(jobs), expected) << jobs;
}

TEST(OrderedPipeline, EndsWithTheExceptionOfAStage) {
  for (const std::size_t jobs : {1, 2, 7}) {
    Doubling read{.readFails = 400}, work{.workFails = 400}, write{.writeFails = 400};
    EXPECT_THROW(read.Doubled(jobs), std::runtime_error);
    EXPECT_EQ(read.count, 400) << jobs;  // those before are written
    EXPECT_THROW(work.Doubled(jobs), std::runtime_error);
    EXPECT_LE(work.count, 400) << jobs;
    EXPECT_THROW(write.Doubled(jobs), std::runtime_error);
    EXPECT_EQ(write.count, 400) << jobs;
  }
}
