// What happens when memory runs out: this program's allocator fails on demand.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

#include "geomath/magnetic/magnetic_declination.h"
#include "geomath/magnetic/magnetic_field.h"
#include "geomath/platform/zel_logging.h"
#include "tests/magnetic/coefficient_text.h"

namespace {
thread_local int allocationsLeft = -1;  // negative: no limit
thread_local int allocations = 0;
}  // namespace

void* operator new(std::size_t bytes) {
  ++allocations;
  if (allocationsLeft == 0) throw std::bad_alloc();
  if (allocationsLeft > 0) --allocationsLeft;
  if (void* memory = std::malloc(bytes ? bytes : 1)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

using namespace zel_cs::geomath;

namespace {

int messages;
bool sawAllocationError;
void CountMessages(const char* file, int, const char* text) {
  ++messages;
  sawAllocationError = std::string_view(file) == "MagneticDeclination" &&
                       std::string_view(text) == "\nError allocating in WMM_AllocateModelMemory.\n";
}

// Wherever memory ends: false, one message, results untouched; or the built-in model in place of a
// file that found no room. With memory enough, the file.
TEST(MagneticMemory, RunsOutAnywhere) {
  const TemporaryFile file(CofText());
  SYSTEMTIME date{};
  date.wYear = 2012;
  date.wMonth = date.wDay = 1;
  const auto previous = zel_logging::SetErrorLogSink(&CountMessages);
  float builtIn = 0, fromFile = 0, incl = 0, total = 0;
  EXPECT_TRUE(
      TMagneticDeclination().computeMagneticDeclination(50, 14, 0, date, builtIn, incl, total));
  TMagneticDeclination object(file.Path());
  EXPECT_TRUE(object.computeMagneticDeclination(50, 14, 0, date, fromFile, incl, total));
  ASSERT_NE(builtIn, fromFile);

  bool readFile = false;
  int failures = 0;
  for (int limit = 0; !readFile && limit < 10000; ++limit) {
    float decl = 1;
    incl = 2;
    total = 3;
    messages = 0;
    sawAllocationError = false;
    allocationsLeft = limit;
    const bool done = object.computeMagneticDeclination(50, 14, 0, date, decl, incl, total);
    allocationsLeft = -1;
    readFile = decl == fromFile;
    if (done) {
      EXPECT_TRUE(messages == 0 && (readFile || decl == builtIn)) << limit;
      continue;
    }
    ++failures;
    EXPECT_TRUE(messages == 1 && sawAllocationError) << limit;
    EXPECT_TRUE(decl == 1 && incl == 2 && total == 3) << limit;
  }
  EXPECT_TRUE(readFile);
  EXPECT_GT(failures, 0);
  zel_logging::SetErrorLogSink(previous);
}

TEST(MagneticMemory, EvaluationAllocatesNothing) {
  const auto model = Wmm2010Model();
  const MagneticField field(*model, 2012);
  const double latitudes[9] = {50}, longitudes[9] = {}, heights[9] = {};
  MagneticPoint results[9];
  const int before = allocations;
  field.At(1, 2, 3);
  field.AtBatch(latitudes, longitudes, heights, 9, results);
  field.AtRow(1, 2, longitudes, 9, results);
  field.Uncertainty(1);
  EXPECT_EQ(allocations, before);
}

}  // namespace
