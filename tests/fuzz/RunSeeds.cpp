// RunSeeds.cpp - runs a fuzz target on its seeds and on some changes of them, where there is no fuzzer.
//
// NAME CORPUS_FOLDER [CHANGES_OF_EACH_SEED]
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>

#include "tests/fuzz/Fuzz.h"

namespace {

void Run(const std::string& input) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

// A few bytes of `input` are exchanged, taken out, doubled, or taken from `other`.
std::string Changed(std::string input, const std::string& other, std::mt19937& draw) {
  for (auto count = draw() % 4 + 1; count > 0 && !input.empty(); --count) {
    const std::size_t at = draw() % input.size();
    const std::size_t length = draw() % 8 + 1;
    switch (draw() % 4) {
      case 0:
        input[at] = static_cast<char>(draw());
        break;
      case 1:
        input.erase(at, length);
        break;
      case 2:
        input.insert(at, input.substr(at, length));
        break;
      default:
        input.replace(at, length, other.substr(draw() % (other.size() + 1), length));
    }
  }
  return input;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  std::vector<std::string> seeds = {""};
  for (const auto& file : std::filesystem::directory_iterator(std::filesystem::u8path(argv[1]))) {
    std::ifstream stream(file.path(), std::ios::binary);
    seeds.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
  }
  std::sort(seeds.begin(), seeds.end());  // the changes are the same wherever they are made
  std::mt19937 draw(1);
  const int changes = argc > 2 ? std::atoi(argv[2]) : 0;
  for (const std::string& seed : seeds) {
    Run(seed);
    for (int i = 0; i < changes; ++i) Run(Changed(seed, seeds[draw() % seeds.size()], draw));
  }
  std::cout << seeds.size() * (static_cast<std::size_t>(changes) + 1) << " inputs" << std::endl;
  return seeds.size() > 1 ? EXIT_SUCCESS : EXIT_FAILURE;  // a corpus that is not there proves nothing
}
