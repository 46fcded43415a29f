// The whole log of small runs, byte for byte; the times alone are replaced.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <map>
#include <regex>
#include <set>

#include "cli/configuration.h"
#include "support/process.h"

namespace {

// 1/(4 um) = 0.25e6/m, 1/(0.5 um) = 2e6/m, 4/3 of that in y; asin(1/8) = 7.18076 degrees; 64
// samples of a flux of k0 = 6.2831853e6.
constexpr const char* kPlaneWaveLog =
    "\nInitialization ...\n\tConfiguration file ...\t\ta.cfg\n\tParsing ... \t\ta.cfg\n"
    "\t\t\t\t[global]\n\t\t\t\t\tscale =\tum\n\t\t\t\t\tpolarization =\tte\n\t\t\t\t\tx =\t4\n"
    "\t\t\t\t\ty =\t3\n\t\t\t\t\tz =\t1\n\t\t\t\t\tnx =\t8\n\t\t\t\t\tny =\t8\n\t\t\t\t\tnz =\t6\n"
    "\t\t\t\t[/global]\n"
    "\t\t\t\t[wave]\n\t\t\t\t\tlambda =\t1\n\t\t\t\t\tamp =\t1\n\t\t\t\t\tshape =\tplane\n"
    "\t\t\t\t[/wave]\n"
    "\t\t\t\t[layer]\n\t\t\t\t\tz =\t1\n\t\t\t\t\tn =\t1\n\t\t\t\t[/layer]\n"
    "\tParsing ... \t\tdone.\n\n"
    "\tEvanescent modes ...\t1\n\tMethod ...\t\tWPM\n\tPolarization ...\tTE\n\tSampling ...\n"
    "\t\tSpace X ...\tdone.\tnx=8, dx=5e-07m, ax=4e-06m\n"
    "\t\tSpace Y ...\tdone.\tny=8, dy=3.75e-07m, ay=3e-06m\n"
    "\t\tSpace Z ...\tdone.\tnz=6, dz=1.66667e-07m, az=1e-06m\n"
    "\t\tFreq X ...\tdone.\tdfx=0.25MHz, fmax_x=2MHz, flim_x=1MHz, dtheta_x=7.18076°\n"
    "\t\tFreq Y ...\tdone.\tdfy=0.333333MHz, fmax_y=2.66667MHz, flim_y=1.33333MHz, "
    "dtheta_y=7.18076°\n"
    "\tSampling ... \t\tdone.\n\n"
    "\tSystem ...\n\t\t\t\tcreate HOMOG ... \n\tSystem ... \t\tdone.\n\n"
    "\tEnergy flux ... \tmemory initialized zero\n\tEnergy flux ... \tmemory allocated.\n"
    "\tWave ...\n\t\t\t\tcreate PLANE ...\n\n\x1b[31m\t\t\t\tscale = 1e-06\n"
    "\t\t\t\tamplitude = 1\n\t\t\t\tlambda = 1\n\t\t\t\ttheta = 0\n\t\t\t\tphi = 0\n\t\t\t\tx = 0\n"
    "\t\t\t\ty = 0\n\t\t\t\tsx = 0\n\t\t\t\tsy = 0\n\t\t\t\tsz = 1\n\x1b[0m\n"
    "\tWave ... \t\tdone.\n\n\t         \t\tlambda = 1e-06\n\nInitialization ... \t\tdone. Tms\n\n"
    "option -r : store results\noption -p : --run-cpu\noption -c : --compare\n\n"
    "Applying simulation on CPU ... done. Tms\n\n\t[CPU] flux0: ... \t 4.02124e+08\n";

// What the log of another run has in place of the plane wave's.
// clang-format off
const std::vector<std::pair<std::string, std::string>> kChanges = {
    {"nz =\t6\n", "nz =\t6\n\t\t\t\t\thfield =\t1\n\t\t\t\t\tevanescent =\t0\n\t\t\t\t\tpolarization =\tna\n"},
    {"shape =\tplane\n", "shape =\tgaussian\n\t\t\t\t\ttheta =\t30\n\t\t\t\t\tphi =\t90\n"
       "\t\t\t\t\tbeta =\t0.5\n\t\t\t\t\tsigmax =\t2\n\t\t\t\t\tsigmay =\t2\n"},
    {"n =\t1\n\t\t\t\t[/layer]", "type =\tasphere\n\t\t\t\t[/layer]"},
    {"\tEvanescent modes ...\t1", "\tMagnetic field ...\t1\n\tEvanescent modes ...\t0"},
    {"\tTE\n", "\t\x1b[31mError, missing polarization for scalar method a.cfg. Please specify the "
                 "polarization, i.e. TE or TM.\x1b[0m\n"},
    {"create HOMOG ... ", "create ASPHERE (not supported yet)"},
    {"PLANE", "GAUSSIAN"},
      // cos of half the nine-digit pi is 1.8e-9, halved by sin 30 degrees
    {"theta = 0\n\t\t\t\tphi = 0\n\t\t\t\tx = 0\n\t\t\t\ty = 0\n\t\t\t\tsx = 0\n\t\t\t\tsy = 0\n\t\t\t\tsz = 1",
       "theta = 30\n\t\t\t\tphi = 90\n\t\t\t\tbeta = 0.5\n\t\t\t\tsx = 8.97448e-10\n\t\t\t\tsy = 0.5\n"
       "\t\t\t\tsz = 0.866025"},
};
// clang-format on

TEST(Log, IsDefinedToTheByteAndSilencedByQuiet) {
  for (const bool is_other : {false, true}) {
    const TempDir directory;
    directory.write("a.cfg", configuration());
    std::string log = kPlaneWaveLog, arguments = " -i a.cfg -p -r r.csv -c";
    if (is_other) {
      directory.write(
          "a.cfg",
          configuration("hfield = 1\nevanescent = 0\npolarization = na", "type = asphere",
                        "shape = gaussian\ntheta = 30\nphi = 90\nbeta = 0.5\nsigmax=2\nsigmay=2"));
      arguments = " -i b.cfg --config-file a.cfg -r";
      log.erase(log.find("option -p"));  // prepared, not propagated
      for (const auto& [old_text, new_text] : kChanges)
        log.replace(log.find(old_text), old_text.size(), new_text);
    }
    const RunResult result = run_shell(directory, "$ZERITH" + arguments);
    EXPECT_EQ(std::tuple(result.status, without_times(result.out)), std::tuple(0, log));
    for (const std::string quiet : {" -q", " --quiet"}) {
      const RunResult silent = run_shell(directory, "$ZERITH" + quiet + arguments);
      EXPECT_EQ(std::tuple(silent.status, silent.out + silent.err), std::tuple(0, ""));
    }
  }
}

// Each run is long in one of its phases: what the log says of them is a good part of what a clock
// outside shows, and no more.
TEST(Log, TimesAreMilliseconds) {
  struct Case {
    const char *grid, *arguments;
    std::size_t from;  // the first of the times that count
  };
  const Case cases[] = {
      {"nx = 128\nny = 128\nnz = 150", "", 0},
      {"nx = 32\nny = 32", "-p", 1},
      {"nx = 32\nny = 32", "-p --stream", 1},
#ifdef ZERITH_LIMITED  // the stand-in: the start of a GPU would be most of a run
      {"nx = 24\nny = 24", "-g", 1},
      {"nx = 24\nny = 24", "-g --stream", 1},
      {"nx = 128\nny = 128\nnz = 150", "-g -k 9", 1},
#endif
  };
  for (const Case& c : cases) {
    const TempDir directory;
    directory.write("a.cfg", configuration(c.grid, "n = 1", "shape = random"));
    const auto begin = std::chrono::steady_clock::now();
    const RunResult run = run_shell(directory, std::string("$ZERITH -i a.cfg ") + c.arguments);
    const std::chrono::duration<double, std::milli> outside =
        std::chrono::steady_clock::now() - begin;
    ASSERT_EQ(run.status, 0) << run.err;
    const std::regex time("done\\. ([-+.e0-9]+)ms");
    double inside = 0;
    std::size_t place = 0;
    for (auto match = std::sregex_iterator(run.out.begin(), run.out.end(), time);
         match != std::sregex_iterator(); ++match)
      if (place++ >= c.from) inside += std::stod((*match)[1]);
    EXPECT_GT(place, c.from) << run.out;
    EXPECT_LE(inside, outside.count()) << c.arguments;
    EXPECT_GE(inside, outside.count() / 50) << c.arguments;
  }
}

// Direct sums at a terminal, every plane wave kept, on machines of any speed: a run of less than
// the half second after which something is shown is followed by a longer one.
TEST(Log, TerminalSeesHowFarARunIs) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "takes too long";
#endif
  for (const std::string sum : {"", "--stream"}) {
    const TempDir directory;
    std::string shown;
    int steps = 11;
    for (; steps < 5000 && shown.find("slice ") == std::string::npos; steps *= 4) {
      directory.write("a.cfg", configuration("nx = 48\nny = 48\nnz = " + std::to_string(steps + 1),
                                             "n = 1", "shape = random"));
      shown = run_shell(directory, "script -qec \"$ZERITH -i a.cfg -p " + sum +
                                       " >log\" /dev/null | tr '\\r' '\\n'")
                  .out;
    }
    const std::regex expected("[^]*slice [0-9]+ of " + std::to_string(steps / 4) +
                              ", [0-9]+ %[^\n]*[^-0-9.][0-9.]+ (s|min|h) left[^]*");
    EXPECT_TRUE(std::regex_match(shown, expected)) << shown;
  }
}

TEST(Log, EndsWhereTheRunIsRefused) {
  const TempDir directory;
  directory.write("a.cfg", configuration("method = bpm"));
  const RunResult method = run_zerith(directory, {"-i", "a.cfg", "-p"});
  EXPECT_TRUE(
      method.out.ends_with("\tEvanescent modes ...\t1\n\tMethod ...\t\t\x1b[31mError, unsupported "
                           "method specified in a.cfg. Please use WPM with this tool.\x1b[0m\n"));
  EXPECT_FALSE(directory.has("N_sys.csv"));

  const RunResult missing = run_zerith(directory, {"a.cfg"});  // no option names it
  EXPECT_EQ(std::tuple(method.status, missing.status), std::tuple(255, 255));
  EXPECT_EQ(missing.out,
            "\nInitialization ...\n\tConfiguration file ...\t\t<none>\n\tParsing ... \t\t<none>\n"
            "\x1b[31m[E] Error! Configuration file could not be opened.\x1b[0m\n");
}

// What an option does to a run: its status, its messages and its files.
std::string outcome(const std::string& options) {
  const TempDir directory;
  directory.write("a.cfg", configuration());
  directory.write("b.cfg", configuration("nz = 2"));
  const RunResult run = run_shell(directory, "$ZERITH -i a.cfg " + options);
  std::string text = std::to_string(run.status) + without_times(run.out) + run.err;
  for (const char* name : {"N_sys.csv", "E_inp.csv"}) text += directory.read(name) + "-";
  return text;
}

// Each option of the help has an effect, the same for either form and for one dash or two.
TEST(Log, HelpNamesOptionsThatWorkInEitherForm) {
  const std::map<std::string, std::string> values = {
      {"k", " 1"}, {"b", " 1025"}, {"i", " b.cfg"}, {"r", " r.csv"}, {"x", " 1"}, {"l", " 3"}};
  const std::string help = run_zerith(TempDir(), {"-h"}).out;
  EXPECT_EQ(std::ranges::count(help, '\n'), 38);
  const std::regex pair("\n  -([a-z])\\|--([a-z-]+)");
  int count = 0;
  for (std::sregex_iterator found(help.begin(), help.end(), pair), end; found != end; ++found) {
    const std::string letter = (*found)[1], word = (*found)[2];
    const std::string value = values.contains(letter) ? values.at(letter) : "";
    const std::string rest = letter == "g" ? "" : "-g ";
    const std::string by_letter = outcome(rest + "-" + letter + value);
    EXPECT_NE(by_letter, outcome(rest)) << letter;
    EXPECT_EQ(by_letter, outcome(rest + "--" + letter + value)) << letter;
    EXPECT_EQ(by_letter, outcome(rest + "-" + word + value)) << word;
    EXPECT_EQ(by_letter, outcome(rest + "--" + word + value)) << word;
    ++count;
  }
  EXPECT_EQ(count, 11);
}

// Every option of the man page, and no other, after the text of --help. The hint to it is for a
// terminal.
TEST(Log, HelpAllPrintsEveryOptionOfTheManPage) {
  const TempDir directory;
  const RunResult help = run_zerith(directory, {"--help"});
  const RunResult all = run_zerith(directory, {"--help-all"});
  EXPECT_EQ(std::tuple(all.status, all.err, help.err), std::tuple(0, "", ""));
  EXPECT_TRUE(all.out.starts_with(help.out)) << all.out;
  const auto options = [](const std::string& text) {
    std::set<std::string> names;
    const std::regex name("--[a-z][a-z-]*");
    for (std::sregex_iterator word(text.begin(), text.end(), name), end; word != end; ++word)
      names.insert(word->str());
    return names;
  };
  std::ifstream file(std::string(ZERITH_SOURCE_DIR) + "/docs/zerith.1");
  std::string page(std::istreambuf_iterator<char>(file), {});
  page = page.substr(page.find(".SH OPTIONS"), page.find(".SH FILES") - page.find(".SH OPTIONS"));
  page.erase(std::remove(page.begin(), page.end(), '\\'), page.end());
  EXPECT_EQ(options(all.out), options(page));
  const std::string terminal = " 2>&1 >/dev/null' /dev/null";
  EXPECT_EQ(run_shell(directory, "script -qec '$ZERITH --help" + terminal).out,
            "zerith: --help-all prints every option\r\n");
  EXPECT_EQ(run_shell(directory, "script -qec '$ZERITH -q --help" + terminal).out, "");
}

TEST(Log, HelpBeatsVersionAndVersionAllTheRest) {
  const TempDir directory;
  const std::string program = "ln -sf $ZERITH as-typed && ./as-typed ";
  for (const std::string line : {"-h", "-v -q --help -i", "-p --v", "-q -version -i"}) {
    const RunResult result = run_shell(directory, program + line);
    const std::string text = result.out + result.err;
    EXPECT_EQ(result.status, 0) << line;
    if (line.find("-h") < line.size())
      EXPECT_TRUE(std::regex_match(text, std::regex("Help:\n[^]*\n  ./as-typed \\[options\\][^]*")))
          << text;
    else
      EXPECT_EQ(text, "Version 0.10\n") << line;
  }
}

}  // namespace
