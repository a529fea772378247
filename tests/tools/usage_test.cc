// What the program says of itself, and to arguments that it does not know.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

namespace {

ProgramRun Geomath(const std::string& arguments) {
  return RunProgram(std::filesystem::temp_directory_path(), arguments);
}

}  // namespace

TEST(Usage, HelpIsThatOfTheCommand) {
  for (const char* command : {"convert", "geoid", "help"}) {
    const ProgramRun run = Geomath(std::string("help ") + command);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, Geomath(std::string(command) + " --help").out);
  }
  EXPECT_EQ(Geomath("help").out, Geomath("--help").out);
  EXPECT_EQ(Geomath("--version").out, "geomath " GEOMATH_VERSION "\n");
}

TEST(Usage, UnknownNamesAreReportedWithTheNearest) {
  struct Case {
    const char* arguments;
    const char* part;
  };
  constexpr Case cases[] = {
      {"convrt a b", "no command \"convrt\"; did you mean \"convert\"?"},
      {"help declinaton", "no command \"declinaton\"; did you mean \"declination\"?"},
      {"--verson", "no option \"--verson\"; did you mean \"--version\"?"},
      // Before what is missing: the slip is the reason.
      {"convert --sytem=s.json in.csv -o out.csv", "\"--sytem\"; did you mean \"--system\"?"},
      {"system --xyzzy", "there is no option \"--xyzzy\"\nRun geomath help system"},
      {"system --epsg 27700 -o a b", "\"b\" is one argument too many"},
      {"system --epsg", "--epsg"},
      {"completion tcsh", "tcsh"},
  };
  for (const Case& c : cases) {
    const ProgramRun run = Geomath(c.arguments);
    EXPECT_EQ(run.status, 2) << c.arguments;
    EXPECT_TRUE(Contains(run.err, c.part)) << c.arguments << ": " << run.err;
    EXPECT_EQ(run.out, "") << c.arguments;
  }
}

TEST(Usage, BashCompletesCommandsAndOptions) {
  const ScratchFolder scratch;
  const std::filesystem::path& directory = scratch.Path();
  WriteText(directory / "geomath.bash", Geomath("completion bash").out);
  WriteText(
      directory / "ask.bash",
      "source ./geomath.bash\n"
      "ask() { COMP_WORDS=(geomath \"$@\"); COMP_CWORD=$#; _geomath; echo ${COMPREPLY[@]}; }\n"
      "ask proj; ask help sys; ask convert --inv; ask convert -o poi\n");
  const std::string command = "cd '" + directory.string() + "' && bash ask.bash > answers.txt 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(ReadText(directory / "answers.txt"), "projections\nsystem\n--inverse\n\n");
  EXPECT_TRUE(Contains(Geomath("completion zsh").out, "bashcompinit"));
  EXPECT_TRUE(
      Contains(Geomath("completion fish").out, "__fish_seen_subcommand_from convert' -l system"));
}
