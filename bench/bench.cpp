// zerith-bench [SECTION...]: measures all sections, or those named. Works in the current folder and
// leaves a wisdom file there.
#include <omp.h>

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <vector>

#include "measure.h"

int main(int argc, char* argv[]) {
  struct Section {
    std::string_view name;
    void (*measure)();
  };
  constexpr Section kSections[] = {
      {"reference", bench::reference},
      {"fast", bench::fast},
      {"pairs", bench::pairs},
      {"memory", bench::memory},
      {"device", bench::device},
      {"planning", bench::planning},
      {"csv", bench::csv},
      {"edges", bench::edges},
      {"lens", bench::lens},
      {"levels", bench::levels},
  };
  const std::vector<std::string_view> wanted(argv + 1, argv + argc);
  for (const std::string_view name : wanted)
    if (std::none_of(std::begin(kSections), std::end(kSections),
                     [&](const Section& section) { return section.name == name; })) {
      std::printf(
          "usage: zerith-bench "
          "[reference|fast|pairs|memory|device|planning|csv|edges|lens|levels]...\n");
      return 1;
    }
  omp_set_num_threads(1);  // of the stand-in
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  for (const Section& section : kSections)
    if (wanted.empty() || std::find(wanted.begin(), wanted.end(), section.name) != wanted.end()) {
      section.measure();
      std::printf("\n");
    }
  return 0;
}
