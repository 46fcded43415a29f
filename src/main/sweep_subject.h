// What is swept: the description that the points share.
#pragma once

#include <string>
#include <vector>

#include "main/sweep_plan.h"
#include "system/description.h"

namespace sweep {

class Subject {
 public:
  // Reads the configuration; what is wrong with it, or a swept key that it has no place for, ends
  // the process with status 255.
  explicit Subject(const Plan& plan);

  // Files of the tables that a point with these values writes into its folder.
  [[nodiscard]] std::vector<std::string> tables(const std::vector<std::string>& values) const;

 private:
  const std::vector<Axis>& axes_;
  Description description_;
  std::vector<std::size_t> sections_;  // of each axis, from 0 among those of its kind
};

}  // namespace sweep
