// Plans of one kind on all ranks.
#pragma once

#include "ranks/ranks.h"
#include "wisdom_state.h"

namespace wpm {

// Makes what plans: on the first rank, which alone reads and writes the wisdom file, and then on
// the others with what it has found out, so that all have the same plans and nobody measures beside
// anybody else. For all ranks to call. From then on wisdom is closed: exchanges between ranks,
// which are planned by all together and calculate nothing, leave no trace in it.
template <typename Make>
auto plan_alike(Make make) {
  if (ranks::count() == 1) return make();
  if (!ranks::is_first()) {
    const std::string wisdom = ranks::from_first(std::string());
    const std::string single = ranks::from_first(std::string());
    fftwpp::restore_wisdom(wisdom, single);
    fftwpp::close_wisdom();
    return make();
  }
  auto made = make();
  ranks::from_first(fftwpp::wisdom_text());
  ranks::from_first(fftwpp::single_wisdom_text());
  fftwpp::close_wisdom();
  return made;
}

}  // namespace wpm
