# Files of fields and indices: resolves ZERITH_HDF5 (auto, on or off) and gives target zerith_hdf5,
# which carries the library and the definition ZERITH_HAS_HDF5=1 where HDF5 is wanted and found,
# and nothing otherwise. ZERITH_HDF5_RESOLVED says which: on or off.
set(ZERITH_HDF5 auto CACHE STRING "Read and write HDF5 files: auto, on or off")
set_property(CACHE ZERITH_HDF5 PROPERTY STRINGS auto on off)
string(TOLOWER "${ZERITH_HDF5}" zerith_hdf5_wish)
if(NOT zerith_hdf5_wish MATCHES "^(auto|on|off)$")
  message(FATAL_ERROR "ZERITH_HDF5 is \"${ZERITH_HDF5}\": use auto, on or off")
endif()

add_library(zerith_hdf5 INTERFACE)
set(ZERITH_HDF5_RESOLVED off)
if(NOT zerith_hdf5_wish STREQUAL "off")
  # CMake looks for the library by its C compiler wrapper.
  include(CheckLanguage)
  check_language(C)
  if(CMAKE_C_COMPILER)
    enable_language(C)
    find_package(HDF5 COMPONENTS C)
  endif()
  if(HDF5_FOUND)
    # A parallel HDF5 needs the headers of its MPI: found is not yet usable.
    include(CheckCXXSourceCompiles)
    set(CMAKE_REQUIRED_INCLUDES ${HDF5_C_INCLUDE_DIRS})
    set(CMAKE_REQUIRED_LIBRARIES ${HDF5_C_LIBRARIES})
    check_cxx_source_compiles("#include <hdf5.h>\nint main() { return H5open() < 0; }"
                              ZERITH_HDF5_COMPILES)
    unset(CMAKE_REQUIRED_INCLUDES)
    unset(CMAKE_REQUIRED_LIBRARIES)
  endif()
  if(HDF5_FOUND AND ZERITH_HDF5_COMPILES)
    set(ZERITH_HDF5_RESOLVED on)
    target_include_directories(zerith_hdf5 SYSTEM INTERFACE ${HDF5_C_INCLUDE_DIRS})
    target_link_libraries(zerith_hdf5 INTERFACE ${HDF5_C_LIBRARIES})
    target_compile_definitions(zerith_hdf5 INTERFACE ZERITH_HAS_HDF5=1)
  elseif(zerith_hdf5_wish STREQUAL "on")
    message(FATAL_ERROR "ZERITH_HDF5 is on, but no usable HDF5 was found; "
                        "Debian: apt-get install libhdf5-dev")
  endif()
endif()
message(STATUS "HDF5 files: ${ZERITH_HDF5_RESOLVED}")
