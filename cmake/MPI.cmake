# One run over many machines: resolves ZERITH_MPI (auto, on or off) and gives target zerith_mpi, which
# carries MPI and FFTW's layer over it where they are wanted and found, and nothing otherwise.
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
  find_path(FFTW3_MPI_INCLUDE_DIR fftw3-mpi.h)
  find_library(FFTW3_MPI_LIBRARY fftw3_mpi)
  mark_as_advanced(FFTW3_MPI_INCLUDE_DIR FFTW3_MPI_LIBRARY)
  if(MPI_CXX_FOUND AND FFTW3_MPI_INCLUDE_DIR AND FFTW3_MPI_LIBRARY)
    set(ZERITH_MPI_RESOLVED on)
    target_include_directories(zerith_mpi SYSTEM INTERFACE ${FFTW3_MPI_INCLUDE_DIR})
    target_link_libraries(zerith_mpi INTERFACE ${FFTW3_MPI_LIBRARY} FFTW3::double MPI::MPI_CXX)
    # The C interface alone is used; the old C++ one is not standard any more.
    target_compile_definitions(zerith_mpi INTERFACE OMPI_SKIP_MPICXX=1 MPICH_SKIP_MPICXX=1)
  elseif(zerith_mpi_wish STREQUAL "on")
    message(FATAL_ERROR "ZERITH_MPI is on, but MPI or FFTW's layer over it was not found; "
                        "Debian: apt-get install libopenmpi-dev libfftw3-mpi-dev")
  endif()
endif()
message(STATUS "Runs over many machines, by MPI: ${ZERITH_MPI_RESOLVED}")
