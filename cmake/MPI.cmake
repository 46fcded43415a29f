# One run over many machines: resolves ZERITH_MPI (auto, on or off) and gives target zerith_mpi, which
# carries MPI if it is wanted and found, and nothing otherwise.
# ZERITH_MPI_RESOLVED says which: on or off. Off by default: a program with MPI in it takes a moment
# longer to begin.
set(ZERITH_MPI off CACHE STRING "One field over many machines: auto, on or off")
set_property(CACHE ZERITH_MPI PROPERTY STRINGS auto on off)
string(TOLOWER "${ZERITH_MPI}" zerith_mpi_wish)
if(NOT zerith_mpi_wish MATCHES "^(auto|on|off)$")
  message(FATAL_ERROR "ZERITH_MPI is \"${ZERITH_MPI}\": use auto, on or off")
endif()

add_library(zerith_mpi INTERFACE)
set(ZERITH_MPI_RESOLVED off)
if(NOT zerith_mpi_wish STREQUAL "off")
  find_package(MPI COMPONENTS CXX)
  if(MPI_CXX_FOUND)
    set(ZERITH_MPI_RESOLVED on)
    target_link_libraries(zerith_mpi INTERFACE MPI::MPI_CXX)
    # The C interface alone is used; the old C++ one is not standard any more.
    target_compile_definitions(zerith_mpi INTERFACE OMPI_SKIP_MPICXX=1 MPICH_SKIP_MPICXX=1)
  elseif(zerith_mpi_wish STREQUAL "on")
    message(FATAL_ERROR "ZERITH_MPI is on, but MPI was not found; "
                        "Debian: apt-get install libopenmpi-dev")
  endif()
endif()
message(STATUS "Runs over many machines, by MPI: ${ZERITH_MPI_RESOLVED}")
