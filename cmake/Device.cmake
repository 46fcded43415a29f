# Where device code runs: resolves ZERITH_DEVICE (auto, cuda or host) into ZERITH_DEVICE_RESOLVED
# (cuda or host) and gives target zerith_device, which carries the include path and the libraries
# that answer <cuda_runtime.h> and <cufft.h>.
#
#   zerith_device_sources(FILES...)   compiles .cu files with whichever compiler the device takes
if(NOT ZERITH_DEVICE MATCHES "^(auto|cuda|host)$")
  message(FATAL_ERROR "ZERITH_DEVICE is \"${ZERITH_DEVICE}\": use auto, cuda or host")
endif()

# Toolkits often stand beside the PATH. Architectures must be set before the language is enabled:
# CMake's own default is one that toolkit 13 no longer compiles for.
if(NOT ZERITH_DEVICE STREQUAL "host")
  if(NOT CMAKE_CUDA_COMPILER AND NOT DEFINED ENV{CUDACXX})
    find_program(ZERITH_NVCC nvcc HINTS ENV CUDA_PATH ENV CUDA_HOME /usr/local/cuda
                 PATH_SUFFIXES bin)
    mark_as_advanced(ZERITH_NVCC)
    if(ZERITH_NVCC)
      set(CMAKE_CUDA_COMPILER ${ZERITH_NVCC})
    endif()
  endif()
  if(NOT CMAKE_CUDA_ARCHITECTURES AND NOT DEFINED ENV{CUDAARCHS})
    set(CMAKE_CUDA_ARCHITECTURES all-major)
  endif()
endif()

# A device that answers now; a toolkit alone compiles but cannot run.
function(zerith_find_usable_device result)
  set(${result} FALSE PARENT_SCOPE)
  find_program(ZERITH_NVIDIA_SMI nvidia-smi)
  mark_as_advanced(ZERITH_NVIDIA_SMI)
  if(ZERITH_NVIDIA_SMI)
    execute_process(COMMAND ${ZERITH_NVIDIA_SMI} -L OUTPUT_VARIABLE devices ERROR_QUIET)
    if(devices MATCHES "GPU 0:")
      set(${result} TRUE PARENT_SCOPE)
    endif()
  endif()
endfunction()

set(ZERITH_DEVICE_RESOLVED ${ZERITH_DEVICE})
if(ZERITH_DEVICE STREQUAL "auto")
  set(ZERITH_DEVICE_RESOLVED host)
  zerith_find_usable_device(has_device)
  if(has_device)
    include(CheckLanguage)
    check_language(CUDA)
    if(CMAKE_CUDA_COMPILER)
      set(ZERITH_DEVICE_RESOLVED cuda)
    endif()
  endif()
endif()
message(STATUS "Device code runs on: ${ZERITH_DEVICE_RESOLVED}")

add_library(zerith_device INTERFACE)
if(ZERITH_DEVICE_RESOLVED STREQUAL "cuda")
  enable_language(CUDA)
  find_package(CUDAToolkit REQUIRED)
  target_link_libraries(zerith_device INTERFACE CUDA::cudart CUDA::cufft)
  # The standard is a plain option: CMake before 3.26 knows of none after 17 for nvcc. As on the host, a*b+c stays two roundings. The host pass of nvcc does without -Wpedantic: the
  # line markers in what nvcc hands to it are not standard C++.
  target_compile_options(zerith_device INTERFACE
    $<$<COMPILE_LANGUAGE:CUDA>:-std=c++20 --fmad=false
    -Xcompiler=-ffp-contract=off,-Wall,-Wextra,-Wshadow,-Wconversion>)
  if(ZERITH_WERROR)
    target_compile_options(zerith_device INTERFACE
      $<$<COMPILE_LANGUAGE:CUDA>:--Werror=all-warnings -Xcompiler=-Werror>)
  endif()
else()
  add_subdirectory(${CMAKE_CURRENT_LIST_DIR}/../standin ${CMAKE_BINARY_DIR}/standin)
  target_link_libraries(zerith_device INTERFACE zerith_standin)
endif()

function(zerith_device_sources)
  if(ZERITH_DEVICE_RESOLVED STREQUAL "host")
    set_source_files_properties(${ARGN} PROPERTIES LANGUAGE CXX)
  endif()
endfunction()
