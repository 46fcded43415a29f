// Memory of a run.
#pragma once

#include <iostream>
#include <string>

struct Run;
struct IndexSurvey;

// The most bytes that this process will have at a time, within a factor of 1.5. Of several ranks
// the first has more than the others: whole slices for its files.
double peak_bytes(const Run& run, const IndexSurvey& found);

// Reports an allocation that failed on standard output, quiet or not.
template <typename T>
void check(const T* array, const std::string& s) {
  if (array == nullptr) std::cout << "Error - Memory allocation " << s << std::endl;
}
