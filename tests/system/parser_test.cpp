#include <gtest/gtest.h>

#include <cmath>

#include "system/parsing.h"

namespace {

struct Reading {
  const char* what;
  std::string text;
  std::string digest;
  std::vector<std::string> warnings = {};  // how each ends, in order
};

// clang-format off
const std::vector<Reading> kReadings = {
    {"blanks mean nothing", "[ glo bal ]\n n x = 1 0 0\n", "100"},
    {"a comment ends the value", "[global]\nnx = 100 ; grid = 3\n", "100"},
    {"semicolons before the value", "[global]\nnx = ;;100;\n", "100"},
    {"equals signs before the key", "[global]\n==nx=100\n", "100"},
    {"the value begins behind the first one", "[global]\nnx==100\n", "0"},
    {"no comment behind a tag", "[global] ; start\nnx = 100\n", "1",
     {"line 1: unknown tag '[global];start' is ignored; did you mean '[global]'?",
      "line 2: key 'nx' stands in no section and is ignored"}},
    {"a key without value", "[global]\nnx =\n", "1", {"line 2: key 'nx' has no value and is ignored"}},
    {"a value without key", "[global]\n=5\n", "1"},
    {"two equals signs", "[global]\na=b=c\n", "1", {"line 2: unknown key 'a' in [global]"}},
    {"a tab before the key", "[global]\n\tnx = 100\n", "1",
     {"line 2: unknown key '\\tnx' in [global]; did you mean 'nx'?"}},
    {"a tab before the number", "[global]\nnx = \t100\n", "100"},
    {"a carriage return behind a tag", "[global]\r\nnx = 100\r\n", "1",
     {"line 1: unknown tag '[global]\\r' is ignored; did you mean '[global]'?",
      "line 2: key 'nx' stands in no section and is ignored"}},
    {"a carriage return behind a number", "[global]\nnx = 100\r\n", "100"},
    {"a carriage return behind a keyword", "[global]\nscale = um\r\n", "1",
     {"line 2: unknown value 'um\\r' of 'scale' in [global]; did you mean 'um'?"}},
    {"a zero byte ends the line", std::string("[global]\nnx = 10\0 0\n\0nx = 5\n", 28), "10"},
    {"no newline at the end", "[global]\nnx = 100", "100"},
    {"upper case", "[global]\nNX = 100\n", "1",
     {"line 2: unknown key 'NX' in [global]; did you mean 'nx'?"}},
    {"free text", "a comment\n[global]\nanother\nnx = 3", "3"},
    {"free text with an equals sign", "a = b\n", "1", {"line 1: key 'a' stands in no section and is ignored"}},
    {"a key of another section", "[wave]\nnx = 3\n[/wave]\n", "1 w0",
     {"line 2: unknown key 'nx' in [wave]; did you mean 'x'?"}},
    {"a misspelt key behind a blank line", "[wave]\n\nlamda = 3\n[/wave]\n", "1 w0",
     {"line 3: unknown key 'lamda' in [wave]; did you mean 'lambda'?"}},
    {"slips: two neighbours swapped, two in a long word, a letter too many",
     "[wave]\nlabmda = 1\n[global]\npolarisatoin = te\nnxx = 3", "1",
     {"did you mean 'lambda'?", "did you mean 'polarization'?", "did you mean 'nx'?"}},
    {"other words than any key", "[wave]\nwavelength = 1\n[global]\nw = 1\n°\x01 = 1", "1",
     {"'wavelength' in [wave]", "'w' in [global]", "'°\\x01' in [global]"}},
    {"misspelt tags", "[layers]\n[Wave]\n[/quux]\n", "1",
     {"'[layers]' is ignored; did you mean '[layer]'?", "did you mean '[wave]'?", "'[/quux]' is ignored"}},
    {"sections of other methods, without closing tags",
     "[fdtd]\nnx = 7\n[/fdtd]\nny = 7\n[rcwa]\nanything = 1\n[global]\nnx = 3", "3"},
    {"several sections, the last line wins",
     "[wave]\namp=1\n[/wave]\n[global]\nnx=2\n[/global]\n[layer]\nz=4\nz=5\n[/layer]\n"
     "[wave]\namp=2\n[/wave]\n[global]\nnx=3\n[/global]\n[layer]\nz=6\n[/layer]\n",
     "3 w1 w2 l5 l6"},
    {"an unclosed global takes effect", "[global]\nnx=2\n[wave]\namp=3\n[/wave]\n", "2 w3"},
    {"an unclosed wave adds nothing", "[wave]\namp=1\n", "1", {"the last [wave] has no closing tag and is ignored"}},
    {"an unclosed layer adds nothing", "[layer]\nz=1", "1", {"the last [layer] has no closing tag and is ignored"}},
    {"an open layer goes on at the next tag",
     "[layer]\nz=1\n[wave]\namp=2\n[/wave]\n[layer]\nn=3\n[/layer]\n", "1 w2 l1"},
    {"a second opening tag clears nothing", "[layer]\nz=1\n[layer]\nn=3\n[/layer]\n", "1 l1"},
    {"a wrong closing tag is overwritten", "[layer]\nz=1\n[/wave]\n[/layer]\n", "1 l1"},
    {"a wrong closing tag is latched", "[layer]\nz=1\n[/wave]\n[wave]\n", "1 w0"},
    {"a stray closing tag closes the next layer at once",
     "[/layer]\n[layer]\nz=4\n[/layer]\n[layer]\nz=5\n[/layer]\n", "1 l0 l0",
     {"line 3: key 'z' stands in no section and is ignored", "line 6: key 'z' stands in no section and is ignored"}},
    {"a stray closing tag closes the next global at once", "[/global]\n[global]\nnx=3\n", "1",
     {"line 3: key 'nx' stands in no section and is ignored"}},
    {"a stray closing tag overwritten", "[/wave]\n[/layer]\n[wave]\namp=1\n[/wave]\n", "1 w1"},
    {"an equals sign behind a tag", "[global]=\nnx=3", "3"},
};
// clang-format on

TEST(Parser, IsLoose) {
  for (const Reading& reading : kReadings) {
    SCOPED_TRACE(reading.what);
    const Parsed parsed(reading.text);
    EXPECT_EQ(parsed.digest(), reading.digest);
    std::istringstream lines(parsed.warnings);
    std::string line;
    for (const std::string& warning : reading.warnings) {
      std::getline(lines, line);
      EXPECT_TRUE(line.starts_with("zerith: warning: ")) << line;
      EXPECT_TRUE(line.ends_with(warning)) << line;
    }
    EXPECT_FALSE(std::getline(lines, line)) << line;
  }
}

// Four tabs before a tag, five before a key; blank lines leave no trace.
TEST(Parser, EchoesEachLineUnlessQuiet) {
  const char* text =
      "[ global ]\n  \n\nnx = 1 00 ; grid\nmethod=dance\nsome text\nny =\n=5\n[/global]";
  EXPECT_EQ(Parsed(text).log,
            "\t\t\t\t[global]\n\t\t\t\t\tnx =\t100\n\t\t\t\t\tmethod =\tdance\n\t\t\t\tsometext\n"
            "\t\t\t\tny\n\t\t\t\t5\n\t\t\t\t[/global]\n");
  EXPECT_EQ(Parsed(text, true).log, "");
}

TEST(Parser, DerivesSpacingsAndTheUnit) {
  const struct_sysOptions empty = Parsed("").so;  // 0 / 1, and none where the count is 0
  EXPECT_EQ(std::tuple(empty.dx, empty.dy, empty.dz, empty.f), std::tuple(0.0, 0.0, 1.0, 1.0));
  const struct_sysOptions so = Parsed("[global]\nx=10\ny=9\nz=1\nnx=4\nny=-3\nnz=8").so;
  EXPECT_EQ(std::tuple(so.dx, so.dy, so.dz), std::tuple(2.5, -3.0, 0.125));
  for (const auto& [unit, metres] : {std::pair("m", 1.0),
                                     {"dm", 0.1},
                                     {"cm", 0.01},
                                     {"mm", 0.001},
                                     {"um", 1e-06},
                                     {"nm", 1e-09}})
    EXPECT_EQ(Parsed(std::string("[global]\nscale=") + unit).so.f, metres);
}

TEST(Parser, TakesTheNumbersOfTheCLibrary) {
  for (const auto& [text, value] : {std::pair("12abc", 12),
                                    {"1e3", 1},
                                    {"-3", -3},
                                    {"+7", 7},
                                    {"0x10", 0},
                                    {"abc", 0},
                                    {"4294967297", 1}})  // 2^32 + 1 loses its upper half
    EXPECT_EQ(Parsed(std::string("[global]\nnx = ") + text).so.nx, value) << text;
  constexpr double kInf = std::numeric_limits<double>::infinity();
  for (const auto& [text, value] : {std::pair("0x1p4", 16.0),
                                    {"-.5x", -0.5},
                                    {"1e-3", 1e-3},
                                    {"inf", kInf},
                                    {"-Infinity", -kInf},
                                    {"abc", 0.0},
                                    {"1,5", 1.0}})
    EXPECT_EQ(Parsed(std::string("[layer]\nz = ") + text + "\n[/layer]").layers.at(0).z, value)
        << text;
  EXPECT_TRUE(std::isnan(Parsed("[wave]\namp=nan\n[/wave]").waves.at(0).amp));
}

// The flag counts as it stands at the closing tag.
TEST(Parser, MaterialPairsAgreeInTheDirectionOfThePermittivityFlag) {
  const Parsed parsed(
      "[layer]\nn=1.5\nk=0.1\nne=2\neps_r=99\nepse_i=99\n[/layer]\n"
      "[layer]\neps_r=2.25\nepse_r=-3\nepse_i=-4\nn=99\nke=99\n"
      "[global]\npermittivity = 1\n[/global]\n[layer]\n[/layer]\n");
  const std::vector<cpx> expected[] = {{{1.5, 0.1}, {2.24, 0.3}, 2.0, 4.0},
                                       {1.5, 2.25, {1, 2}, {-3, -4}}};
  for (std::size_t i = 0; i < 2; ++i) {
    const struct_layer& l = parsed.layers.at(i);
    const cpx actual[] = {{l.n, l.k}, {l.eps_r, l.eps_i}, {l.ne, l.ke}, {l.epse_r, l.epse_i}};
    for (std::size_t j = 0; j < 4; ++j) EXPECT_LE(std::abs(actual[j] - expected[i][j]), 1e-15);
  }
}

void expect_stop(const std::string& text, const char* message) {
  const TempDir directory;
  directory.write("a.cfg", text);
  struct_sysOptions so;
  EXPECT_EXIT(parse(directory.path("a.cfg").string(), &so, nullptr, nullptr, true),
              testing::ExitedWithCode(255), message);
}

TEST(Parser, LineHolds79Characters) {
  for (const std::string end : {"", "\n", "\nny = 3\n"}) {
    const std::string line = "nx = 6" + std::string(72, ' ') + "4";
    const Parsed parsed("[global]\n" + line + end);
    EXPECT_EQ(std::tuple(parsed.so.nx, parsed.so.ny), std::tuple(64, end.size() > 1 ? 3 : 1));
    expect_stop("[global]\n " + line + end,
                "a.cfg: line 2: the line has 80 characters, .* the limit is 79;");
  }
}

TEST(Parser, StopsAtWhatItCannotRead) {
  expect_stop("[global]\n = = \n", "a.cfg: line 2: the line has nothing but equals signs");
  struct_sysOptions so;
  EXPECT_EXIT(parse("/", &so, nullptr, nullptr, true), testing::ExitedWithCode(255),
              "zerith: error: /: cannot be read");
}

}  // namespace
