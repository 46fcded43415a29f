// Plans of one kind on all ranks.
#pragma once

#include "ranks/ranks.h"
#include "wisdom_state.h"

namespace wpm {

// Plans on the first rank, which alone reads and writes the wisdom file, and then on the others
// with what it has found out: all have the same plans, and nobody measures while another does. For
// all ranks to call.
template <typename Plan>
void plan_alike(Plan plan) {
  if (ranks::is_first()) plan();
  if (ranks::count() == 1) return;
  const std::string wisdom =
      ranks::from_first(ranks::is_first() ? fftwpp::wisdom_text() : std::string());
  const std::string single =
      ranks::from_first(ranks::is_first() ? fftwpp::single_wisdom_text() : std::string());
  if (ranks::is_first()) return;
  fftwpp::restore_wisdom(wisdom, single);
  fftwpp::close_wisdom();
  plan();
}

}  // namespace wpm
