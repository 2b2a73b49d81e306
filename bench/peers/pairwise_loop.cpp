// The C-statistic by its definition: every pair of one record with response 1 and one with 0, in
// two nested loops. Prints a line of JSON like the other peers.
//
//     pairwise_loop SCORES
//
// SCORES holds n doubles (predictions), then n doubles (responses, 0 or 1).

#include <cstdio>
#include <ctime>
#include <fstream>
#include <vector>

namespace {

std::vector<double> ReadDoubles(const char* path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const std::streamoff bytes = file ? static_cast<std::streamoff>(file.tellg()) : 0;
  std::vector<double> values(static_cast<std::size_t>(bytes) / sizeof(double));
  file.seekg(0);
  file.read(reinterpret_cast<char*>(values.data()), bytes);
  return values;
}

double ShareOfOrderedPairs(const std::vector<double>& events, const std::vector<double>& others) {
  double favourable = 0;
  for (const double event : events) {
    for (const double other : others) {
      if (event > other) {
        favourable += 1;
      } else if (event == other) {
        favourable += 0.5;
      }
    }
  }
  return favourable / (static_cast<double>(events.size()) * static_cast<double>(others.size()));
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const std::vector<double> scores =
      argumentCount == 2 ? ReadDoubles(arguments[1]) : std::vector<double>();
  if (scores.empty()) {
    static_cast<void>(std::fprintf(stderr, "usage: pairwise_loop SCORES\n"));
    return 2;
  }
  const std::size_t records = scores.size() / 2;
  std::vector<double> events;
  std::vector<double> others;
  for (std::size_t i = 0; i < records; ++i) {
    (scores[records + i] != 0 ? events : others).push_back(scores[i]);
  }
  const std::clock_t start = std::clock();
  const double value = ShareOfOrderedPairs(events, others);
  const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  std::printf(
      "{\"task\": \"cstat\", \"peer\": \"pairwise loop\", \"version\": \"\", \"n\": %zu, "
      "\"compute_s\": %.6g, \"value\": \"%.12f\"}\n",
      records, seconds, value);
  return 0;
}
