#include <gtest/gtest.h>

#include <cmath>

#include "support/errors.h"
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
    {"the value begins behind the first one", "[global]\nnx==100\n", "0",
     {"value '=100' of 'nx' in [global] is read as 0; write a whole number, digits only, below 2^31"}},
    {"no comment behind a tag", "[global] ; start\nnx = 100\n", "1",
     {"line 1: unknown tag '[global];start' is ignored; did you mean '[global]'?",
      "line 2: key 'nx' stands in no section and is ignored"}},
    {"a key without value", "[global]\nnx =\n", "1", {"line 2: key 'nx' has no value and is ignored"}},
    {"a tab before the key", "[global]\n\tnx = 100\n", "1",
     {"line 2: unknown key '\\tnx' in [global]; did you mean 'nx'?"}},
    {"a carriage return behind a keyword", "[global]\nscale = um\r\n", "1",
     {"convert the file to Unix line ends",
      "line 2: unknown value 'um\\r' of 'scale' in [global]; did you mean 'um'?"}},
    {"Windows line ends, said once", "[global]\nnx = 12\r\nhfield = 1\r\n", "12",
     {"line 2: has Windows line ends; a carriage return becomes part of the tag or word before it; "
      "convert the file to Unix line ends",
      "line 3: value '1\\r' of 'hfield' in [global] is read as 0; write 1 or 0"}},
    {"a zero byte ends the line", std::string("[global]\nnx = 10\0 0\n\0nx = 5\n", 28), "10"},
    {"a key of another section", "[wave]\nnx = 3\n[/wave]\n", "1 w0",
     {"line 2: unknown key 'nx' in [wave]; did you mean 'x'?"}},
    {"slips: two neighbours swapped, two in a long word, a letter too many",
     "[wave]\nlabmda = 1\n[/wave]\n[global]\npolarisatoin = te\nnxx = 3", "1 w0",
     {"did you mean 'lambda'?", "did you mean 'polarization'?", "did you mean 'nx'?"}},
    {"other words than any key", "[wave]\nsigxyz = 1\n[/wave]\n[global]\nnxab = 1\n°\x01 = 1", "1 w0",
     {"'sigxyz' in [wave]", "'nxab' in [global]", "'°\\x01' in [global]"}},
    {"misspelt tags", "[layers]\n[Wave]\n[/quux]\n", "1",
     {"'[layers]' is ignored; did you mean '[layer]'?", "did you mean '[wave]'?", "'[/quux]' is ignored"}},
    {"sections of other methods, without closing tags",
     "[fdtd]\nnx = 7\n[/fdtd]\nny = 7\n[rcwa]\nanything = 1\n[global]\nnx = 3", "3"},
    {"several sections, the last line wins",
     "[wave]\namp=1\n[/wave]\n[global]\nnx=2\n[/global]\n[layer]\nz=4\nz=5\n[/layer]\n"
     "[wave]\n[/wave]\n[global]\nnx=3\n[/global]\n[layer]\nz=6\n[/layer]\n[layer]\n[/layer]\n",
     "3 w1 w0 l5 l6 l0"},
    {"an unclosed global takes effect", "[global]\nnx=2\n[wave]\namp=3\n[/wave]\n", "2 w3"},
    {"a closed global is closed", "[global]\nnx=2\n[/global]\nnx=3\n", "2",
     {"line 4: key 'nx' stands in no section and is ignored"}},
    {"an unclosed wave adds nothing", "[wave]\namp=1\n", "1", {"the last [wave] has no closing tag and is ignored"}},
    {"an unclosed layer adds nothing", "[layer]\nz=1", "1", {"the last [layer] has no closing tag and is ignored"}},
    {"an open layer goes on at the next tag",
     "[layer]\nz=1\n[wave]\namp=2\n[/wave]\n[layer]\nn=3\n[/layer]\n", "1 w2 l1",
     {"line 3: [wave] opens while the [layer] of line 1 is not closed; it goes on at the next [layer]"}},
    {"a wrong closing tag is overwritten", "[layer]\nz=1\n[/wave]\n[/layer]\n", "1 l1",
     {"line 3: [/wave] does not close the section that is open; it is kept, and closes the next one of its kind at once"}},
    {"a wrong closing tag is latched", "[layer]\nz=1\n[/wave]\n[wave]\n", "1 w0",
     {"line 3: [/wave] does not close the section that is open; it is kept, and closes the next one of its kind at once",
      "line 4: [wave] opens while the [layer] of line 1 is not closed; it goes on at the next [layer]"}},
    {"a stray closing tag closes the next layer at once",
     "[/layer]\n[layer]\nz=4\n[/layer]\n[layer]\nz=5\n[/layer]\n", "1 l0 l0",
     {"line 1: [/layer] does not close the section that is open; it is kept, and closes the next one of its kind at once",
      "line 3: key 'z' stands in no section and is ignored",
      "line 4: [/layer] does not close the section that is open; it is kept, and closes the next one of its kind at once",
      "line 6: key 'z' stands in no section and is ignored",
      "line 7: [/layer] does not close the section that is open; it is kept, and closes the next one of its kind at once"}},
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
      EXPECT_TRUE(line.starts_with("zerith: warning: ") && line.ends_with(warning)) << line;
    }
    EXPECT_FALSE(std::getline(lines, line)) << line;
  }
}

// Four tabs before a tag, five before a key; blank lines leave no trace.
TEST(Parser, EchoesEachLine) {
  const char* text =
      "[ global ]\n  \n\nnx = 1 00 ; grid\nmethod=dance\nsome text\nny =\n=5\n[/global]";
  EXPECT_EQ(Parsed(text).log,
            "\t\t\t\t[global]\n\t\t\t\t\tnx =\t100\n\t\t\t\t\tmethod =\tdance\n\t\t\t\tsometext\n"
            "\t\t\t\tny\n\t\t\t\t5\n\t\t\t\t[/global]\n");
}

TEST(Parser, DerivesSpacingsAndTheUnit) {
  const struct_sysOptions empty = Parsed("").so;  // 0 / 1, and none where the count is 0
  EXPECT_EQ(std::tuple(empty.dx, empty.dy, empty.dz, empty.f), std::tuple(0.0, 0.0, 1.0, 1.0));
  const struct_sysOptions so = Parsed("[global]\nx=10\ny=9\nz=1\nnx=4\nny=-3\nnz=8").so;
  EXPECT_EQ(std::tuple(so.dx, so.dy, so.dz), std::tuple(2.5, -3.0, 0.125));
  const std::pair<const char*, double> kUnits[] = {{"m", 1.0},    {"dm", 0.1},   {"cm", 0.01},
                                                   {"mm", 0.001}, {"um", 1e-06}, {"nm", 1e-09}};
  for (const auto& [unit, metres] : kUnits) EXPECT_EQ(Parsed(global("scale=") + unit).so.f, metres);
}

TEST(Parser, TakesTheNumbersOfTheCLibrary) {
  // Counts and extents are whole; 2^32 + 1 loses its upper half.
  const std::pair<const char*, int> kWhole[] = {
      {"12abc", 12}, {"-3", -3}, {"0x10", 0}, {"2.9", 2}, {"4294967297", 1}};
  for (const auto& [text, value] : kWhole) {
    const struct_sysOptions so = Parsed(global("nx = ") + text + "\nx = " + text).so;
    EXPECT_EQ(std::tuple(so.nx, so.x), std::tuple(value, value)) << text;
  }
  for (const std::string text : {"1", "0", "true", "01", "1x"})
    EXPECT_EQ(Parsed(global("hfield = " + text)).so.hfield, text == "1");
  const std::pair<const char*, double> kDoubles[] = {
      {"0x1p4", 16}, {"-.5x", -0.5}, {"-Infinity", -HUGE_VAL}, {"1,5", 1}};
  for (const auto& [text, value] : kDoubles)
    EXPECT_EQ(Parsed(std::string("[layer]\nz = ") + text + "\n[/layer]").layers.at(0).z, value)
        << text;
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

// The first 79 characters count and are echoed before the run ends.
TEST(Parser, LineHolds79Characters) {
  const std::string line = "nx = 6" + std::string(72, ' ') + "4";
  const TempDir directory;
  struct_sysOptions so;
  const auto parse_quietly = [&] {
    parse(directory.path("a.cfg").string(), &so, nullptr, nullptr, true);
  };
  for (const std::string end : {"", "\n", "\nny = 3\n"}) {
    const Parsed parsed(global(line + end));
    EXPECT_EQ(std::tuple(parsed.so.nx, parsed.so.ny), std::tuple(64, end.size() > 1 ? 3 : 1));
    directory.write("a.cfg", global(' ' + line + end));
    EXPECT_ERROR(parse_quietly(),
                 "a.cfg: line 2: the line has 80 characters or more, .* the limit is 79;");
  }
  EXPECT_ERROR(parse("/", &so, nullptr, nullptr, true), "/: cannot be read");
}

// Values as the C library reads them, and what is lost is said: 2e1 is 2 slices.
TEST(Parser, SaysWhichNumbersAreNotReadInFull) {
  const std::tuple<const char*, const char*, const char*> kTexts[] = {
      // key, value, what it is read as: nothing if in full
      {"nz", "2e1", "2"},
      {"x", "4e3", "4"},
      {"x", "20.5", "20"},
      {"nx", "4294967300", "4"},
      {"nx", "99999999999999999999", "-1"},
      {"ny", "0x10", "0"},
      {"z", "wide", "0"},
      {"hfield", "yes", "0"},
      {"evanescent", "2", "0"},
      {"nx", "-3", nullptr},
      {"nx", "\t12\t", nullptr},
      {"threads", "+4", nullptr},
      {"smooth", "0", nullptr}};
  for (const auto& [key, value, read] : kTexts) {
    const std::string warning = Parsed(global(key) + " = " + value).warnings;
    const std::string start = "a.cfg: line 2: value '" + std::string(value) + "' of '" + key +
                              "' in [global] is read as ";
    EXPECT_EQ(warning.empty(), read == nullptr) << warning;
    if (read != nullptr) {
      EXPECT_NE(warning.find(start + read + "; write "), std::string::npos) << warning;
    }
  }
  const std::pair<const char*, const char*> kReals[] = {
      {"1,5", "1"},    {"1um", "1"},   {"inf", "inf"},   {"-nan", "-nan"},   {"1e999", "inf"},
      {"1e-999", "0"}, {"glass", "0"}, {"1.5.2", "1.5"}, {"1.5e3", nullptr}, {"-.5\t", nullptr}};
  for (const auto& [value, read] : kReals) {
    const std::string warning =
        Parsed(std::string("[layer]\nn = ") + value + "\n[/layer]\n").warnings;
    EXPECT_EQ(warning.empty(), read == nullptr) << value << warning;
    if (read != nullptr) {
      EXPECT_NE(
          warning.find(std::string("of 'n' in [layer] is read as ") + read + "; write a number"),
          std::string::npos)
          << warning;
    }
  }
}

}  // namespace
