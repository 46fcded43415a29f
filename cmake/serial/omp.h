// What we call of the OpenMP runtime, for compilers without it: a team of one.
#pragma once

inline void omp_set_num_threads(int /*count*/) {}
inline int omp_get_max_threads() {
  return 1;
}
inline int omp_get_num_procs() {
  return 1;
}
inline int omp_get_thread_num() {
  return 0;
}
