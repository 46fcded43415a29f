// Memory of a run.
#pragma once

#include <iostream>
#include <string>

// Reports an allocation that failed on standard output, quiet or not.
template <typename T>
void check(const T* array, const std::string& s) {
  if (array == nullptr) std::cout << "Error - Memory allocation " << s << std::endl;
}
