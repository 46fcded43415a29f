// Runs on the device, whichever that is: a GPU or the host stand-in.
#include <gtest/gtest.h>

#include <cmath>

#include "cli/configuration.h"
#include "kernel/kernel.h"
#include "support/process.h"

namespace {

class DeviceRun : public testing::Test {
 protected:
  void SetUp() override {
    void* memory = nullptr;
    if (cudaMalloc(&memory, 16) != cudaSuccess) GTEST_SKIP() << "no device";
    cudaFree(memory);
    directory.write("a.cfg", configuration());
    // A step from 1 to 1.5 in TM, met at an angle: the polarizations differ.
    directory.write("tm.cfg", configuration("polarization = tm\nx = 4\ny = 4",
                                            "z = 0.5\nn=1\n[/layer]\n[layer]\nz=1\nn=1.5",
                                            "shape = plane\ntheta = 48.590378"));
  }

  // The log from the flags on, quiet or not.
  std::string log_of(std::vector<std::string> arguments, int status = 0) {
    arguments.insert(arguments.begin(), {"-i", "a.cfg"});
    const RunResult run = run_zerith(directory, arguments);
    EXPECT_EQ(run.status, status) << run.err;
    errors = run.err;
    const std::size_t begin = run.out.find("option -");
    return without_times(begin == std::string::npos ? run.out : run.out.substr(begin));
  }

  std::vector<double> profile(const std::string& name) {
    return csv_rows(directory.read(name)).at(1);
  }

  TempDir directory;
  std::string errors;
};

constexpr const char* kFlag = "option -g : --run-gpu\n";
constexpr const char* kBeforeKernel =
    "Applying simulation on GPU ...\n\tMemory allocation ...\tdone. Tms\n"
    "\tConvert format ... \tdone. Tms\n\tCopy data (H2D) ...\tdone. Tms\n\tKernel call ...\t\t";
constexpr const char* kBehindKernel =
    "done. Tms\n\tCopy data D2H ...\tdone. Tms\n\n\t[GPU] flux0: ... \t 4.02124e+08\n\n";
constexpr const char* kRefusal =
    "\033[31mError\033[0m - Shared memory kernel not supported by this version!\n";
constexpr const char* kTooLarge = "\033[31mError\033[0m - Block size is too large\n";
constexpr const char* kBadLaunch =
    "\033[31m***ERROR*** 9 - invalid configuration argument***\033[0m\n";

// 1024 threads fit a block: edges of 1 to 32 run, others fail at the launch, and more than 1024 are
// refused before it. Kernel 1 is refused in words and runs as 0; others run nothing.
TEST_F(DeviceRun, LogFollowsKernelAndBlockSize) {
  struct Case {
    std::vector<std::string> options;
    std::string said;  // behind the label of the kernel call
    bool goes_on;
  };
  for (const Case& c :
       {Case{{}, "", true}, Case{{"-b", "-1"}, "", true}, Case{{"-b", "1"}, "", true},
        Case{{"-b", "16", "--block-size", "32"}, "", true}, Case{{"-k", "-1"}, "", true},
        Case{{"--kernel", "1"}, kRefusal, true}, Case{{"-k", "2", "-b", "1024"}, "", true},
        Case{{"-b", "0"}, kBadLaunch, false}, Case{{"-b", "-3"}, kBadLaunch, false},
        Case{{"-b", "33"}, kBadLaunch, false}, Case{{"-b", "1024"}, kBadLaunch, false},
        Case{{"-b", "1025"}, kTooLarge, false},
        Case{{"-k", "2", "-b", "1025"}, kTooLarge, false}}) {
    std::vector<std::string> options = c.options;
    options.emplace_back("-g");
    const int status = c.goes_on ? 0 : 255;
    EXPECT_EQ(log_of(options, status),
              kFlag + (kBeforeKernel + c.said) + (c.goes_on ? kBehindKernel : ""))
        << testing::PrintToString(c.options);
    EXPECT_EQ(errors.find("zerith: error: ") != std::string::npos, !c.goes_on) << errors;
    options.emplace_back("-q");
    EXPECT_EQ(log_of(options, status), c.said) << "quiet";
  }
}

// The refused runs have another amplitude: what they wrote would show.
TEST_F(DeviceRun, ARefusedRunKeepsTheResultsOfTheRunBefore) {
  log_of({"-g", "-p"});
  const auto results = [&] {
    std::string all;
    for (const char* name : {"E_cpu.csv", "EFlux_cpu.csv", "EFlux_cpu_Z.csv", "E_gpu.csv",
                             "EFlux_gpu.csv", "EFlux_gpu_Z.csv"})
      all += name + directory.read(name);
    return all;
  };
  const std::string before = results();
  for (const std::string options :
       {"-g -p -b 1025", "-g -p -b 33", "-g -p -b 33 --fast", "-g -p -b 0", "-g -p -k 2 -b 1025",
        "-g -p -x", "-p -l", "-g -p -k", "-g -b", "-g -p --set global.nx=0", "-p --set global.nx=0",
        "-p --set global.ny=0", "-p --fast --set global.nx=0", "-g -p -c --checkpoint state",
        "-g -p --strict --nonsense", "-p --threads"}) {
    const RunResult run = run_shell(directory, "$ZERITH -i a.cfg --set wave1.amp=3 " + options);
    EXPECT_NE(run.status, 0) << options;
    EXPECT_NE(run.err, "") << options;
    EXPECT_EQ(results(), before) << options;
  }
}

// A run that cannot go on writing its first file has emptied the others. The pipe takes 64 KB.
TEST_F(DeviceRun, ABranchThatBeganLeavesNothingOfTheRunBefore) {
  for (const auto& [branch, other] : {std::pair("gpu", "cpu"), {"cpu", "gpu"}}) {
    log_of({"-g", "-p"});
    const std::string kept = directory.read(std::string("E_") + other + ".csv");
    ASSERT_NE(kept, "");
    const std::string b = branch;
    const RunResult run = run_shell(
        directory, "rm E_" + b + ".csv; mkfifo E_" + b + ".csv; $ZERITH -q -i a.cfg -" +
                       (b == "gpu" ? "g" : "p") + " -l -1 --set global.nz=900 & exec 3<E_" + b +
                       ".csv; wc -c <EFlux_" + b + ".csv; wc -c <EFlux_" + b +
                       "_Z.csv; kill $!; wait; rm E_" + b + ".csv");
    EXPECT_EQ(run.out, "0\n0\n") << branch;
    EXPECT_EQ(directory.read(std::string("E_") + other + ".csv"), kept) << branch;
  }
}

TEST_F(DeviceRun, SingleSliceLaunchesNothing) {
  directory.write("a.cfg", configuration("nz = 1"));
  EXPECT_EQ(log_of({"-g", "-b", "1024"}), std::string(kFlag) + kBeforeKernel + kBehindKernel);
}

// In vacuum a unit wave straight on meets no coefficient: the files of the two branches differ in
// nothing that six digits show. The first slice of F is the one that came back from the device.
TEST_F(DeviceRun, BothBranchesLeaveTheSameFilesAndThreeRows) {
  const std::string log = log_of({"-g", "-p", "-c", "-r", "run.csv", "-l", "-1"});
  EXPECT_NE(log.find("\n\nApplying simulation on CPU ... done. Tms\n\n\t[CPU] flux0: ... \t "
                     "4.02124e+08\n\nMax Error E [ max( (gpu(x,y,z)-cpu(x,y,z))/cpu(x,y,z) ) ]: "),
            std::string::npos)
      << log;
  EXPECT_EQ(directory.read("EFlux_gpu.csv"), directory.read("EFlux_cpu.csv"));
  EXPECT_EQ(directory.read("EFlux_gpu_Z.csv"), "\n1,1,1,1,1,1\n");
  const auto gpu = csv_rows(directory.read("E_gpu.csv"));
  const auto cpu = csv_rows(directory.read("E_cpu.csv"));
  ASSERT_EQ(gpu.size(), cpu.size());
  for (std::size_t row = 0; row < gpu.size(); ++row)
    for (std::size_t i = 0; i < gpu[row].size(); ++i) EXPECT_NEAR(gpu[row][i], cpu[row][i], 1e-6);

  const RunResult rows = run_shell(directory, "tr ';' ' ' <run.csv");
  std::istringstream record(rows.out);
  std::string line;
  std::getline(record, line);
  double kernel_time[3];
  double cpu_time[3];
  double error[3];
  double speed_up[3];
  for (int row = 0; row < 3; ++row) {
    std::string file;
    int numbers[5];
    record >> file;
    for (int& number : numbers) record >> number;
    record >> kernel_time[row] >> cpu_time[row] >> error[row] >> speed_up[row];
    EXPECT_EQ(file, "a.cfg");
    EXPECT_EQ(numbers[0], 0);
    EXPECT_EQ(numbers[1], 16);
    EXPECT_EQ(numbers[2], 6);
    EXPECT_NEAR(speed_up[row] * kernel_time[row] / cpu_time[row], 1.0, 2e-5);
  }
  EXPECT_EQ(cpu_time[0], -1);
  EXPECT_EQ(cpu_time[1], -1);
  EXPECT_EQ(kernel_time[2], kernel_time[0]) << "the third row compares the first two";
  EXPECT_EQ(cpu_time[2], kernel_time[1]) << "a CPU row has its time under kernel_time";
  EXPECT_EQ(error[0], -1);
  EXPECT_GE(error[2], 0.0);
  EXPECT_LT(error[2], 1e-12);
}

// Without -p the field on the host is still the incident one: 0 behind slice 0, so the error of a
// propagated field is infinite.
TEST_F(DeviceRun, ComparisonWithoutCpuMeetsTheIncidentField) {
  EXPECT_NE(log_of({"-g", "-c"}).find("cpu(x,y,z) ) ]: inf\n"), std::string::npos);
  EXPECT_NE(log_of({"-g", "-c", "-k", "2"}).find("cpu(x,y,z) ) ]: 0\n"), std::string::npos);
}

TEST_F(DeviceRun, OtherKernelsPropagateNothing) {
  log_of({"-g", "-k", "2", "-l", "-1"});
  EXPECT_EQ(directory.read("E_gpu.csv"), directory.read("E_inp.csv"));
  log_of({"-g", "-k", "1", "-l", "-1"});
  const std::string refused = directory.read("E_gpu.csv");
  log_of({"-g", "-l", "-1"});
  EXPECT_EQ(directory.read("E_gpu.csv"), refused);
}

// The polarization is read into the device's flag by the report that a quiet run leaves out. At
// asin(0.75), from 1 to 1.5, TE passes 0.8952 and TM 0.9963 of the power (Born & Wolf 1.5.3).
TEST_F(DeviceRun, QuietRunsTreatTMAsTE) {
  const auto flux_behind = [&](bool is_quiet) {
    std::vector<std::string> options = {"-i", "tm.cfg", "-g", "-p"};
    if (is_quiet) options.emplace_back("-q");
    EXPECT_EQ(run_zerith(directory, options).status, 0);
    return std::pair(profile("EFlux_gpu_Z.csv").at(5), profile("EFlux_cpu_Z.csv").at(5));
  };
  const auto [loud_gpu, loud_cpu] = flux_behind(false);
  const auto [quiet_gpu, quiet_cpu] = flux_behind(true);
  EXPECT_NEAR(loud_gpu, loud_cpu, 1e-3);
  EXPECT_EQ(quiet_cpu, loud_cpu);
  EXPECT_NEAR(loud_gpu - quiet_gpu, 0.9963 - 0.8952, 2e-3);
}

// A period of the domain, 4 um along x, asin(1/4) off the axis, or 3 um along y, asin(1/3). In
// vacuum it keeps its shape and turns by kz = sqrt(1 - 1/period^2) of a slice's 60 degrees.
TEST_F(DeviceRun, TiltedWaveTurnsAsItsDirectionSaysOnEveryRoad) {
  for (const bool in_y : {false, true}) {
    directory.write("a.cfg",
                    configuration("", "n = 1",
                                  std::string("shape = plane\ntheta = ") +
                                      (in_y ? "19.4712206\nphi = 90" : "14.4775122\nphi = 0")));
    const double period = in_y ? 3 : 4;
    for (const char* sum : {"-p", "--fast"}) {
      EXPECT_EQ(run_zerith(directory, {"-q", "-i", "a.cfg", "-g", "-p", sum, "-l", "-1"}).status,
                0);
      for (const char* name : {"E_cpu.csv", "E_gpu.csv"}) {
        const auto rows = csv_rows(directory.read(name));
        for (std::size_t row = 0; row < 54; ++row)
          for (std::size_t i = 0; row % 9 < 8 && i < 8; ++i) {
            const double place = in_y ? 0.375 * static_cast<double>(row % 9) - 1.5
                                      : 0.5 * static_cast<double>(i) - 2;
            const double turns = place / period + std::sqrt(1 - 1 / (period * period)) *
                                                      static_cast<double>(row / 9) / 6;
            EXPECT_NEAR(rows.at(row).at(i), std::cos(2 * M_PI * turns), 2e-6) << name << sum << row;
          }
      }
    }
  }
}

// The record's times are those of the log.
TEST_F(DeviceRun, RecordHoldsTheTimesOfTheLog) {
  const RunResult run = run_zerith(directory, {"-i", "a.cfg", "-g", "-p", "-r", "run.csv"});
  const std::string record = directory.read("run.csv");
  for (const std::string label : {"Kernel call ...\t\tdone. ", "simulation on CPU ... done. "}) {
    const std::size_t begin = run.out.find(label) + label.size();
    const std::string time = run.out.substr(begin, run.out.find("ms", begin) - begin);
    EXPECT_NE(record.find(";6;8;8;" + time + ";-1;"), std::string::npos) << record << time;
  }
}

#ifdef ZERITH_LIMITED
// 384 voxels: 6144 bytes for E, 3072 for F, 64 for X and Y. N no longer fits into 10000; into
// 15800, all arrays do, and the spectrum does not.
TEST_F(DeviceRun, FullDeviceIsReported) {
  const auto on_device_of = [&](const std::string& bytes) {
    return run_shell(directory,
                     "LIMITED_DEVICE_BYTES=" + bytes + " exec " ZERITH_LIMITED " -q -i a.cfg -g");
  };
  const RunResult arrays = on_device_of("10000");
  EXPECT_EQ(arrays.status, 255);
  EXPECT_EQ(arrays.out,
            "\033[31mError\033[0m - CPU memory alloc\n\t\tError 2 on N alloc : out of memory\n");
  EXPECT_EQ(arrays.err.rfind("zerith: error: ", 0), 0U);

  const RunResult spectrum = on_device_of("15800");
  EXPECT_EQ(spectrum.status, 255);
  EXPECT_EQ(spectrum.out, "\033[31m***ERROR*** 2 - out of memory***\033[0m\n");
  EXPECT_EQ(spectrum.err.rfind("zerith: error: the device could not make room for the spectrum", 0),
            0U)
      << spectrum.err;

  // What holds for no user: a run of the program itself is not told by its environment.
  EXPECT_EQ(run_zerith(directory, {"-q", "-i", "a.cfg", "-g"},
                       {{"LIMITED_DEVICE_BYTES", "1"}, {"STANDIN_DEVICE_MEMORY", "1"}})
                .status,
            0);
}
#endif

// A field that is lost is lost on a slice of which one line is brought.
TEST_F(DeviceRun, SaysWhatBecameOfTheField) {
  for (const auto& [k, said] : {std::pair{"-1e300", "is not finite from slice "},
                                std::pair{"30", "is zero from slice "}, std::pair{"0", ""}}) {
    directory.write("a.cfg", configuration("", std::string("n = 1\nk = ") + k));
    log_of({"-g", "--fast", "-x", "1", "-l", "3"});
    const std::string on_device = errors;
    log_of({"-p", "--fast", "-x", "1", "-l", "3"});
    EXPECT_EQ(on_device, errors);
    EXPECT_NE(errors.find(said), std::string::npos) << errors;
  }
}

}  // namespace
