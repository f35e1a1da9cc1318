// Runs a fuzz target on files: each argument is a file, or a folder of files.
//
// Stands in for libFuzzer where the compiler has none.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz_target.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesOf(const fs::path& path) {
  if (!fs::is_directory(path)) return {path};
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  return files;
}

// Gives false when the file cannot be read. The target ends the program when the input fails.
bool replay(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const std::string input(std::istreambuf_iterator<char>(stream), {});
  if (!stream) {
    std::cerr << "cannot read " << file << std::endl;
    return false;
  }
  // A failing target prints no name, so the name goes first.
  std::cout << file.string() << std::endl;
  qel::testing::fuzz(input);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  int replayed = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path& file : filesOf(argv[i])) {
      if (!replay(file)) return EXIT_FAILURE;
      ++replayed;
    }
  }
  std::cout << replayed << " inputs replayed" << std::endl;
  return replayed > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
