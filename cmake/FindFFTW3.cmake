# FFTW 3 in double and single precision with its OpenMP threads layer: targets FFTW3::double and
# FFTW3::single.
find_path(FFTW3_INCLUDE_DIR fftw3.h)
find_library(FFTW3_LIBRARY fftw3)
find_library(FFTW3_OMP_LIBRARY fftw3_omp)
find_library(FFTW3F_LIBRARY fftw3f)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(FFTW3
  REQUIRED_VARS FFTW3_LIBRARY FFTW3_OMP_LIBRARY FFTW3F_LIBRARY FFTW3_INCLUDE_DIR
  REASON_FAILURE_MESSAGE "Debian: apt-get install libfftw3-dev")
mark_as_advanced(FFTW3_INCLUDE_DIR FFTW3_LIBRARY FFTW3_OMP_LIBRARY FFTW3F_LIBRARY)

if(FFTW3_FOUND AND NOT TARGET FFTW3::double)
  add_library(FFTW3::double INTERFACE IMPORTED)
  target_include_directories(FFTW3::double INTERFACE ${FFTW3_INCLUDE_DIR})
  target_link_libraries(FFTW3::double INTERFACE ${FFTW3_OMP_LIBRARY} ${FFTW3_LIBRARY}
                        OpenMP::OpenMP_CXX)
  add_library(FFTW3::single INTERFACE IMPORTED)
  target_include_directories(FFTW3::single INTERFACE ${FFTW3_INCLUDE_DIR})
  target_link_libraries(FFTW3::single INTERFACE ${FFTW3F_LIBRARY})
endif()
