#include "tests/tools/program.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <sstream>
#include <string>

ProgramRun RunProgram(const std::filesystem::path& directory, const std::string& arguments,
                      unsigned long largestFile) {
  // Tests run side by side, each in a process of its own, and may share a directory.
  const std::string own = std::to_string(getpid()) + ".txt";
  const auto out = directory / ("stdout_" + own), err = directory / ("stderr_" + own);
  const std::string command = "cd '" + directory.string() + "' && exec '" GEOMATH_PROGRAM "' " +
                              arguments + " >'" + out.string() + "' 2>'" + err.string() + "'";
  const pid_t child = fork();
  if (child == 0) {
    if (largestFile > 0) {
      const rlimit limit{largestFile, largestFile};
      setrlimit(RLIMIT_FSIZE, &limit);
      std::signal(SIGXFSZ, SIG_IGN);
    }
    execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  ProgramRun run{WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadText(out), ReadText(err),
                 usage.ru_maxrss};
  std::filesystem::remove(out);
  std::filesystem::remove(err);
  return run;
}

std::string ReadText(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

void WriteText(const std::filesystem::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string BritainSystem() {
  return ReadText(std::filesystem::path(GEOMATH_SOURCE_DIR) / "examples/great_britain/system.json");
}
