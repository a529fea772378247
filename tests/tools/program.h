#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// What a run of the program left behind.
struct ProgramRun {
  int status;
  std::string out, err;
  long peakKilobytes;  // of resident memory
};

/// Runs `geomath` with arguments, as a shell reads them, in `directory`. No file grows beyond
/// `largestFile` bytes, as on a disk that is full; 0 for no limit.
ProgramRun RunProgram(const std::filesystem::path& directory, const std::string& arguments,
                      unsigned long largestFile = 0);

std::string ReadText(const std::filesystem::path& path);
void WriteText(const std::filesystem::path& path, const std::string& text);
std::vector<std::string> Lines(const std::string& text);
inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// The part of a published system that the tests use: the national grid of Great Britain.
std::string BritainSystem();
