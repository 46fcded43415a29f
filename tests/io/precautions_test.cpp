#include <gtest/gtest.h>
#include <sys/stat.h>

#include "io/io.h"
#include "support/errors.h"
#include "support/process.h"

namespace {

namespace fs = std::filesystem;

// Every name below a folder with its contents. Links are not followed.
std::vector<std::string> everything(const TempDir& directory) {
  std::vector<std::string> all;
  for (const auto& entry : fs::recursive_directory_iterator(directory.path())) {
    std::string line = entry.path().string();
    if (entry.is_symlink())
      line += " -> " + fs::read_symlink(entry.path()).string();
    else if (entry.is_regular_file())
      line += ": " + directory.read(fs::relative(entry.path(), directory.path()).string());
    all.push_back(line);
  }
  return all;
}

// Each name has the reason in its warning.
TEST(Precautions, AProbeSaysWhatWillFailAndTouchesNothing) {
  const std::pair<const char*, const char*> kNames[] = {
      {"new", ""},
      {"old", ""},
      {"pipe", ""},      // opening it would block
      {"dangling", ""},  // its target does not exist yet
      {"far", ""},       // the same, by two links
      {"nowhere", "No such file or directory"},
      {"round", "Too many levels of symbolic links"},
      {"folder", "Is a directory"},
      {"folder/new/", "Is a directory"},
      {"none/such", "No such file or directory"},
      {"old/new", "Not a directory"},
  };
  const TempDir directory;
  directory.write("old", "contents");
  ASSERT_EQ(mkfifo(directory.path("pipe").c_str(), 0600), 0);
  fs::create_directory(directory.path("folder"));
  fs::create_symlink("target", directory.path("dangling"));
  fs::create_symlink("folder/near", directory.path("far"));
  fs::create_symlink("../target", directory.path("folder/near"));
  fs::create_symlink("none/such", directory.path("nowhere"));
  fs::create_symlink("round", directory.path("round"));
  const auto before = everything(directory);
  const fs::file_time_type time = fs::last_write_time(directory.path("old"));
  for (const auto& [name, reason] : kNames) {
    const std::string path = directory.path(name).string();
    const Messages messages;
    warn_if_unwritable(path);
    EXPECT_EQ(
        messages.text(),
        *reason == 0 ? "" : "zerith: warning: " + path + ": will not be written: " + reason + "\n");
  }
  EXPECT_EQ(everything(directory), before);
  EXPECT_EQ(fs::last_write_time(directory.path("old")), time);
}

// The input is found by its name, by both kinds of link, and by any path.
TEST(Precautions, ARunDoesNotWriteOverWhatItReads) {
  const TempDir directory;
  const std::string input = directory.path("a.cfg").string();
  directory.write("a.cfg", "nx = 1");
  directory.write("b.csv", "nx = 1");
  fs::create_symlink("a.cfg", directory.path("E_cpu.csv"));
  fs::create_hard_link(input, directory.path("r.csv"));
  fs::create_directory(directory.path("f"));
  for (const char* name : {"a.cfg", "E_cpu.csv", "r.csv", "f/../a.cfg"}) {
    const std::vector<std::string> outputs = {"none", directory.path("b.csv").string(),
                                              directory.path(name).string()};
    EXPECT_ERROR(refuse_own_input(input, outputs),
                 "a.cfg: the run reads this file and would write .*" + std::string(name));
  }
  refuse_own_input(input, {directory.path("b.csv").string(), "none"});
  refuse_own_input("/dev/null", {"/dev/null"});  // nothing is lost
}

TEST(Precautions, OldResultsAreEmptiedAndNothingElse) {
  const TempDir directory;
  directory.write("E_cpu.csv", "old");
  directory.write("target", "old");
  directory.write("a.cfg", "kept");
  fs::create_symlink("target", directory.path("EFlux_cpu.csv"));
  ASSERT_EQ(mkfifo(directory.path("pipe").c_str(), 0600), 0);
  std::vector<std::string> names;
  for (const char* name : {"E_cpu.csv", "EFlux_cpu.csv", "pipe", "new"})
    names.push_back(directory.path(name).string());
  empty_results(names);
  for (const char* name : {"E_cpu.csv", "target"}) {
    EXPECT_TRUE(directory.has(name));
    EXPECT_EQ(directory.read(name), "");
  }
  EXPECT_EQ(directory.read("a.cfg"), "kept");
  EXPECT_FALSE(directory.has("new"));
  EXPECT_TRUE(fs::is_fifo(directory.path("pipe")) &&
              fs::is_symlink(directory.path("EFlux_cpu.csv")));
}

}  // namespace
