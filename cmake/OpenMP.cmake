# OpenMP, as target OpenMP::OpenMP_CXX. A compiler that comes without it (clang, unless its libomp is
# there too) builds the same program for one thread: a small header answers for the runtime.
find_package(OpenMP QUIET COMPONENTS CXX)
if(NOT OpenMP_CXX_FOUND)
  message(STATUS "No OpenMP for this compiler: one thread (Debian, clang: apt-get install libomp-dev)")
  add_library(OpenMP::OpenMP_CXX INTERFACE IMPORTED)
  target_include_directories(OpenMP::OpenMP_CXX INTERFACE ${CMAKE_CURRENT_LIST_DIR}/serial)
  target_compile_options(OpenMP::OpenMP_CXX INTERFACE
                         $<$<COMPILE_LANGUAGE:CXX>:-Wno-unknown-pragmas>)
endif()
