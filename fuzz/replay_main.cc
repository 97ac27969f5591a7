// Runs a fuzz target once over every file of the corpus folders given, without libFuzzer:
// the committed corpora replayed as a regression test by every build.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

int main(int argc, char **argv) {
  int inputs = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto &file : std::filesystem::recursive_directory_iterator(argv[i])) {
      if (!file.is_regular_file()) continue;
      std::ifstream in(file.path(), std::ios::binary);
      const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
      LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
      ++inputs;
    }
  }
  std::printf("%d inputs replayed\n", inputs);
  return inputs > 0 ? 0 : 1;
}
