#!/bin/sh
# Fails on an include that runs against the layers: inc and fftw++ below all, then system, wpm and
# kernel (which sees CUDA and inc), io above wpm, main on top and included by nobody; and on one that
# reaches into another unit past the headers that it shows.
set -eu
cd "${1:-.}"
status=0

# forbid FOLDER PATTERN: no file of the folder includes what matches.
forbid() {
  if grep -rnE "#include [\"<]($2)" "$1"; then
    echo "$1 must not include these" >&2
    status=1
  fi
}

forbid inc 'system/|wpm/|kernel/|io/|main/|fftw\+\+'
forbid fftw++ 'system/|wpm/|kernel/|io/|main/'
forbid src/system 'wpm/|kernel/|io/|main/|fftw\+\+|fftw3|cuda|cufft'
forbid src/wpm 'kernel/|io/|main/|cuda|cufft'
forbid src/kernel 'system/|wpm/|io/|main/|fftw|ch[A-Z]|log\.h'
forbid src/io 'kernel/|main/|fftw'
forbid standin 'system/|wpm/|kernel/|io/|main/|fftw\+\+'

# One place knows which compiler reads the device code.
if grep -rln 'standin\.h' src | grep -v '^src/kernel/launch\.h$'; then
  echo "only src/kernel/launch.h may know the stand-in" >&2
  status=1
fi
# Input data sets: at the bottom, beside the messages.
forbid src/data 'system/|wpm/|kernel/|io/|main/|fftw'

# shows UNIT HEADER...: its other headers are its own.
shows() {
  unit=$1
  shift
  shown=$(printf '%s|' "$@")
  if grep -rnE "#include \"$unit/" src inc fftw++ standin | grep -v "^src/$unit/" |
    grep -vE "\"$unit/(${shown%|})\.h\""; then
    echo "these headers of src/$unit are its own" >&2
    status=1
  fi
}

shows data dataset
shows system system grid slab mix numbers overrides index_stack description monitor advice stack_plan keys suggest
shows wpm wpm slice byte_stream sink march stepper edge screens rolling_pair whole_volume survey axes transfer health progress \
  threads sampled_field lp01 axis modes pair_runs wisdom_of_ranks batches
shows kernel kernel device_array
shows io io
shows ranks ranks
shows main
# Ranks: what processes do together, whatever a run is.
forbid src/ranks 'system/|wpm/|kernel/|io/|main/|data/'
# And nobody else speaks to them.
if grep -rnE '#include <mpi\.h>' inc fftw++ src standin | grep -v '^src/ranks/mpi\.cpp:'; then
  echo "only src/ranks/mpi.cpp may know MPI" >&2
  status=1
fi
exit $status
