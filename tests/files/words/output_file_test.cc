#include "files/words/output_file.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "files/words/user_error.h"
#include "tests/support/scratch_folder.h"

namespace fs = std::filesystem;
using namespace geomath_files;

namespace {

void Write(const fs::path& path, const std::string& text) { std::ofstream(path) << text; }

std::string Read(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

class OutputFiles : public ::testing::Test {
 protected:
  const ScratchFolder scratch_;
  const fs::path folder_ = scratch_.Path();
};

}  // namespace

// The third cannot be placed: a folder has come there. The first two are as they were.
TEST_F(OutputFiles, OfSeveralNoneIsPlacedWhereOneCannotBe) {
  Write(folder_ / "a.shp", "old");
  Write(folder_ / "a.qix", "old");
  {
    OutputFile a((folder_ / "a.shp").string()), b((folder_ / "b.txt").string()),
        c((folder_ / "c.txt").string());
    Write(a.Path(), "new");
    Write(fs::path(a.Path()).replace_extension(".dbf"), "new");
    Write(b.Path(), "new");
    Write(c.Path(), "new");
    fs::create_directories(folder_ / "c.txt/in the way");
    EXPECT_THROW(OutputFile::Place({&a, &b, &c}), UserError);
  }
  EXPECT_EQ(Read(folder_ / "a.shp"), "old");
  EXPECT_EQ(Read(folder_ / "a.qix"), "old");
  EXPECT_FALSE(fs::exists(folder_ / "a.dbf"));
  EXPECT_FALSE(fs::exists(folder_ / "b.txt"));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 3);  // and the folder c.txt
}

TEST_F(OutputFiles, AnUnfinishedFileIsTakenAway) {
  Write(folder_ / "a.txt", "old");
  { Write(OutputFile((folder_ / "a.txt").string()).Path(), "new"); }
  EXPECT_EQ(Read(folder_ / "a.txt"), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 1);
}
