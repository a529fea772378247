// What convert, geoid and declination have in common: rows in, rows and three results out.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

namespace {

namespace fs = std::filesystem;

struct Subject {
  const char* name;
  const char* command;  // the input follows
  const char* results;
  const char* renamed;
};

constexpr Subject kSubjects[] = {
    {"convert", "convert --system system.json", "n,e,h_local", "n_2,e_2,h_local_2"},
    {"geoid", "geoid --model pot.txt", "geoid,h_ellipsoid,h_geoid",
     "geoid_2,h_ellipsoid_2,h_geoid_2"},
    {"declination", "declination --date 2012-01-01 --points", "declination,inclination,total_nt",
     "declination_2,inclination_2,total_nt_2"},
};

constexpr const char* kRow = "50.43885825610,-4.10864563561,215.251";

class RowLoop : public ::testing::TestWithParam<Subject> {
 protected:
  void SetUp() override {
    Write("system.json", BritainSystem());
    Write("pot.txt", "2 0 1e-9 0\n2 1 0 0\n2 2 2e-6 -1e-6\n");
    Write("in.csv", std::string("lat,lon,h\n") + kRow + "\n");
  }

  void Write(const char* name, const std::string& text) { WriteText(directory_ / name, text); }
  std::string Read(const char* name) { return ReadText(directory_ / name); }
  ProgramRun Run(const std::string& arguments) {
    return RunProgram(directory_, GetParam().command + (" " + arguments));
  }

  const ScratchFolder scratch_;
  const fs::path directory_ = scratch_.Path();
};

TEST_P(RowLoop, RenamesItsResultsTogetherAndSaysSo) {
  const std::string results = GetParam().results, renamed = GetParam().renamed;
  const std::string second = results.substr(results.find(',') + 1);
  const std::string taken = second.substr(0, second.find(','));
  Write("in.csv", "lat,lon,h," + taken + "\n" + kRow + ",own\n");
  const ProgramRun run = Run("in.csv -o out.csv");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(Lines(Read("out.csv")).at(0), "lat,lon,h," + taken + "," + renamed);
  EXPECT_TRUE(Contains(run.err, "the results are \"" + renamed.substr(0, renamed.find(','))))
      << run.err;
  const ProgramRun named = Run("in.csv -o - --results a,b,c");
  EXPECT_EQ(Lines(named.out).at(0), "lat,lon,h," + taken + ",a,b,c");
  EXPECT_EQ(named.err, "");
  for (const char* wrong : {"a,b,LAT", "a,b,A", "a,b"}) {
    const ProgramRun refused = Run(std::string("in.csv -o none.csv --results ") + wrong);
    EXPECT_EQ(refused.status, 2) << wrong;
    EXPECT_TRUE(Contains(refused.err, "--results")) << refused.err;
    EXPECT_FALSE(fs::exists(directory_ / "none.csv"));
  }
}

TEST_P(RowLoop, TakesAHeightFromOnePlaceOnly) {
  Write("in.csv", "lat,lon\n50.43885825610,-4.10864563561\n");
  const ProgramRun fixed = Run("in.csv -o - --fixed-height 215.251");
  EXPECT_EQ(fixed.status, 0) << fixed.err;
  Write("three.csv", std::string("lat,lon,h\n") + kRow + "\n");
  const std::string columns = Run("three.csv -o -").out;
  const std::string from = Lines(columns).at(1);
  EXPECT_EQ(Lines(fixed.out).at(1), "50.43885825610,-4.10864563561" +
                                        from.substr(from.find(kRow) + std::string(kRow).size()));
  const ProgramRun both = Run("three.csv -o none.csv --columns lat,lon,h --fixed-height 1");
  EXPECT_EQ(both.status, 2);
  EXPECT_TRUE(Contains(both.err, "--fixed-height: --columns names a height column too"))
      << both.err;
  EXPECT_FALSE(fs::exists(directory_ / "none.csv"));
}

TEST_P(RowLoop, CountsTheRowsWithoutResult) {
  Write("in.csv", std::string("lat,lon,h\n") + kRow + "\nx,1,2\n\n1,2\n");
  const ProgramRun run = Run("in.csv -o out.csv");
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Contains(run.err, "geomath: 2 of 3 rows ")) << run.err;
  const auto lines = Lines(Read("out.csv"));
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[2], "x,1,2,,,");
  EXPECT_EQ(lines[3], "");
  EXPECT_EQ(lines[4], "1,2,,,,");
}

// Rows enough for some blocks, good and bad; the decimal comma shows late, so that blocks have begun
// without knowing of it.
TEST_P(RowLoop, GivesTheSameWhateverTheNumberOfJobs) {
  std::string rows = "name;lat;lon;h\r\n";
  for (int i = 0; i < 40000; ++i) {
    const std::string name = i % 997 == 0 ? "\"two\nlines; " + std::to_string(i) + "\"" : "P";
    const std::string height = i % 501 == 7 ? "high" : i < 20000 ? "10" : "10,5";
    rows += name + ";50;" + std::to_string(i % 200 == 3 ? 777 : -4) + ";" + height + "\r\n";
    if (i % 1009 == 0) rows += "# remark\r\n\r\n1;2\r\n";
  }
  Write("in.csv", rows);
  const ProgramRun one = Run("in.csv -o - --jobs 1");
  EXPECT_EQ(one.status, 1);
  EXPECT_EQ(Lines(one.out).size(), Lines(rows).size());
  EXPECT_TRUE(Contains(one.err, "in.csv, line 6: ")) << one.err.substr(0, 1000);
  EXPECT_TRUE(Contains(one.err, "numbers are read with a decimal comma"));
  for (const char* jobs : {"2", "7"}) {
    const ProgramRun more = Run(std::string("in.csv -o - --jobs ") + jobs);
    EXPECT_EQ(more.status, 1);
    EXPECT_TRUE(more.out == one.out) << jobs;
    EXPECT_TRUE(more.err == one.err) << jobs;
  }
}

// The program waits for more rows when it is told to stop: those that came are written.
TEST_P(RowLoop, AnInterruptLeavesAWholeFile) {
  std::string rows = "lat,lon,h\n";
  for (int i = 0; i < 100; ++i) rows += std::string(kRow) + "\n";
  Write("in.csv", rows);
  Write("run.sh",
        "mkfifo pipe; exec 3<>pipe; cat in.csv >&3\n"
        "\"$@\" <pipe 2>err.txt & pid=$!\n"
        "for try in 1 2 3 4 5 6 7 8 9 10; do sleep 0.5; kill -INT $pid 2>/dev/null || break; done\n"
        "wait $pid; echo $? >status.txt\n");
  const std::string command = std::string(GetParam().command) + " - -o out.csv";
  ASSERT_EQ(
      std::system(("cd '" + directory_.string() + "' && sh run.sh '" GEOMATH_PROGRAM "' " + command)
                      .c_str()),
      0);
  EXPECT_EQ(Read("status.txt"), "2\n");
  EXPECT_TRUE(Contains(Read("err.txt"), "interrupted after 100 rows")) << Read("err.txt");
  const auto lines = Lines(Read("out.csv"));
  ASSERT_EQ(lines.size(), 101u);
  EXPECT_EQ(lines.back(), lines[1]);
}

INSTANTIATE_TEST_SUITE_P(Program, RowLoop, ::testing::ValuesIn(kSubjects),
                         [](const auto& subject) { return std::string(subject.param.name); });

}  // namespace
