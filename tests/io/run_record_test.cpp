#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <sstream>

#include "file_size_limit.h"
#include "io/io.h"
#include "support/errors.h"
#include "support/process.h"

namespace {

const std::string kHeader =
    "cfile;kernel_id;block_size;nz;ny;nx;kernel_time;cpu_time;err-max;speed-up\n";

TEST(RunRecord, HasOneHeaderAndTenColumns) {
  const TempDir directory;
  const std::string name = directory.path("r.csv").string();
  store_results(name, "a;b.cfg", 0, 16, 3, 4, 5, 2.0, -1.0, -1.0);
  store_results(name, "", 1, 32, 6, 7, 8, 0.0, 1e7, NAN);
  EXPECT_EQ(directory.read("r.csv"), kHeader +
                                         "a;b.cfg;0;16;3;4;5;2;-1;-1;-0.5\n"
                                         ";1;32;6;7;8;0;1e+07;nan;inf\n");
}

TEST(RunRecord, OfAnotherHandIsAppendedTo) {
  const TempDir directory;
  for (const char* before : {"", "my own notes\n"}) {
    directory.write("r.csv", before);
    store_results(directory.path("r.csv").string(), "a", 0, 16, 1, 1, 1, 1.0, -1.0, -1.0);
    EXPECT_EQ(directory.read("r.csv"), before + std::string("a;0;16;1;1;1;1;-1;-1;-1\n"));
  }
}

// An empty record that exists gets no header, and a new one gets its header. Neither needs to list
// the folder.
TEST(RunRecord, NeedsNoListOfItsFolder) {
  const TempDir directory;
  directory.write("r.csv", "");
  std::filesystem::permissions(directory.path("r.csv"), std::filesystem::perms(0666));
  std::filesystem::permissions(directory.path(), std::filesystem::perms(0333));
  const auto write_rows = [&] {
    if (geteuid() == 0 && setuid(65534) != 0) _exit(1);
    for (const char* name : {"r.csv", "new.csv"})
      store_results(directory.path(name).string(), "a", 0, 16, 1, 1, 1, 1.0, -1.0, -1.0);
    _exit(0);
  };
  EXPECT_EXIT(write_rows(), testing::ExitedWithCode(0), "^$");
  std::filesystem::permissions(directory.path(), std::filesystem::perms(0700));
  EXPECT_EQ(directory.read("r.csv"), "a;0;16;1;1;1;1;-1;-1;-1\n");
  EXPECT_EQ(directory.read("new.csv"), kHeader + "a;0;16;1;1;1;1;-1;-1;-1\n");
}

// Processes that begin one record together, by its name and by a dangling link.
TEST(RunRecord, TakesTheRowsOfManyProcessesWhole) {
  constexpr int kProcesses = 16, kRows = 20;
  const TempDir directory;
  std::filesystem::create_symlink("r.csv", directory.path("link"));
  int gate[2];
  ASSERT_EQ(pipe(gate), 0);  // all wait until it closes
  for (int child = 0; child < kProcesses; ++child)
    if (fork() == 0) {
      close(gate[1]);
      char nothing = 0;
      if (read(gate[0], &nothing, 1) != 0) _exit(1);
      const std::string name = directory.path(child % 2 == 0 ? "r.csv" : "link").string();
      for (int row = 0; row < kRows; ++row)
        store_results(name, std::string(1000, 'x'), child, row, 3, 4, 5, 2.0, -1.0, -1.0);
      _exit(0);
    }
  close(gate[1]);
  for (int child = 0; child < kProcesses; ++child) EXPECT_GT(wait(nullptr), 0);
  std::istringstream record(directory.read("r.csv"));
  std::string line;
  std::getline(record, line);
  EXPECT_EQ(line + "\n", kHeader);
  std::vector<std::string> rows, expected;
  while (std::getline(record, line)) rows.push_back(line);
  for (int child = 0; child < kProcesses; ++child)
    for (int row = 0; row < kRows; ++row)
      expected.push_back(std::string(1000, 'x') + ";" + std::to_string(child) + ";" +
                         std::to_string(row) + ";3;4;5;2;-1;-1;-0.5");
  std::sort(rows.begin(), rows.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(rows, expected);
}

// A disk fills up within a row: the error shows the row, and the record stays whole.
TEST(RunRecord, LosesNoRowInSilence) {
  const TempDir directory;
  const std::string name = directory.path("r.csv").string();
  store_results(name, std::string(4000, 'x'), 0, 16, 3, 4, 5, 2.0, -1.0, -1.0);
  const std::string before = directory.read("r.csv");
  const Messages messages;
  {
    const FileSizeLimit limit(before.size() + 10);
    store_results(name, "second", 0, 16, 3, 4, 5, 2.0, -1.0, -1.0);
  }
  EXPECT_TRUE(messages.text().starts_with("zerith: error: " + name + ": a row is lost, "));
  EXPECT_TRUE(messages.text().ends_with("; the row is second;0;16;3;4;5;2;-1;-1;-0.5\n"));
  EXPECT_EQ(directory.read("r.csv"), before);
}

}  // namespace
