// Runs a fuzzer's function once for every file of a directory.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    std::printf("%s\n", entry.path().c_str());
    std::fflush(stdout);  // before a crash
    std::ifstream file(entry.path(), std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ++files;
  }
  return files > 0 ? 0 : 1;
}
