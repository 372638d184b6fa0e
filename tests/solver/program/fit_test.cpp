// Constants fitted to data of tests: those of known materials come back, rubber is met as well as published constants meet it.
#include "solver/model/text.h"
#include "solver/program/fit.h"
#include "tests/solver/files.h"
#include "tests/support/rubber_1944.h"

namespace {

using namespace sharedanalysis::test;
using namespace sharedanalysis::solver;
using Path = sharedanalysis::solver::Mode;
using Rubber = sharedanalysis::test::Mode;

class Fits : public SolverTest {
  WorkingDirectory directory_;
};

std::string array(const std::vector<double>& values) {
  std::string text = "[";
  for (const double value : values) text += exactNumber(value) + ", ";
  return text + "]\n";
}

std::string materialText(const std::string& lines) {
  return "[[material]]\nname = \"a\"\ndensity = 1000.0\n" + lines + "\n";
}

// A path with its data, in any order.
std::string pathText(const std::string& mode, const std::string& turns, const TestData& data) {
  return "[[path]]\nname = \"" + mode + "\"\nmode = \"" + mode + "\"\nsteps = 12\nstep_time = 0.1\nstretch = " + turns +
         "\n[path.data]\nstretch = " + array(data.stretch) + "stress = " + array(data.stress);
}

PathCase caseOf(const std::string& text) {
  writeFile("case.toml", text);
  return readPathCase("case.toml");
}

// What is said about a case.
std::string answer(const std::string& text) {
  const std::string said = thrown<InputError>([&] { fit(caseOf(text)); });
  return said == "nothing" ? "fitted" : said;
}

TEST_F(Fits, ConstantsOfEveryModelComeBack) {
  const struct {
    const char *material, *start, *free; // start: what is replaced in the material, and by what
    bool isUser;
  } rows[] = {
      {"C10 = 0.2e6\nC01 = 5e4\nC20 = 1e3\nC11 = -500.0\nC02 = 200.0\nD1 = 1e-8\nD2 = 1e-9",
       "C10 = 1e6\nC01 = 0.0\nC20 = 0.0\nC11 = 0.0\nC02 = 0.0\nD1 = 1e-7\nD2 = 1e-8", "", false},
      {"model = \"polynomial6\"\nC10 = 0.17e6\nC20 = -2e3\nC30 = 40.0\nD1 = 1e-8",
       "model = \"polynomial6\"\nC10 = 1e5\nC20 = 0.0\nD1 = 3e-8", "\"C10\", \"C20\", \"C30\", \"D1\"", false},
      {"model = \"arruda-boyce\"\nmu = 0.27e6\nlambda_m = 5.1\nD = 1e-8",
       "model = \"arruda-boyce\"\nmu = 1e6\nlambda_m = 3.0\nD = 1e-7", "", false},
      {"model = \"van-der-waals\"\nmu = 0.417e6\nlambda_m = 10.66\na = 0.284\nbeta = 0.07\nD = 1e-8",
       "model = \"van-der-waals\"\nmu = 1e6\nlambda_m = 8.0\na = 0.0\nbeta = 0.5\nD = 1e-9", "", false},
      {"model = \"ogden\"\nmu = [0.4e6, 1e4]\nalpha = [1.3, -2.5]\nD = [1e-8]",
       "model = \"ogden\"\nmu = [1e6, 1e6]\nalpha = [2.0, 4.0]\nD = [1e-9]", "", false},
      {"model = \"hyperfoam\"\nmu = [0.3e6, 0.1e6]\nalpha = [4.0, -2.0]\nbeta = [0.5, 0.2]",
       "model = \"hyperfoam\"\nmu = [1e6, 1e6]\nalpha = [2.0, -1.0]\nbeta = [0.3, 0.3]", "", false},
      {"model = \"marlow\"\nstretch = [2.0, 4.0]\nstress = [0.5e6, 1.5e6]\nD = 1e-8",
       "model = \"marlow\"\nstretch = [2.0, 4.0]\nstress = [0.5e6, 1.5e6]\nD = 1e-9", "", false},
      {"model = \"user\"\nuser = \"TVK_VISCOUS_FOAM\"\nproperties = [20e3, 8.0, 0.1, 0, 0, 0, 1e6, 2e3, 2, 1e5]",
       "model = \"user\"\nuser = \"TVK_VISCOUS_FOAM\"\nproperties = [30e3, 5.0, 0.1, 0, 0, 0, 5e5, 4e3, 2, 1e5]",
       "\"properties[1]\", \"properties[2]\", \"properties[7]\", \"properties[8]\"", true},
      {"model = \"user\"\nuser = \"TVK_FU_CHANG_ISO_FOAM\"\nproperties = [4e5, 5e4, 0.2, 3, 0]\n[[material.curve]]\n"
       "strain = [0, 0.1, 0.9]\nstress = [0, 2e4, 1e5]",
       "model = \"user\"\nuser = \"TVK_FU_CHANG_ISO_FOAM\"\nproperties = [4e5, 5e4, 0.6, 2, 0]\n[[material.curve]]\n"
       "strain = [0, 0.1, 0.9]\nstress = [0, 2e4, 1e5]",
       "\"properties[3]\", \"properties[4]\"", true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.material);
    std::string paths;
    const std::vector<std::pair<std::string, std::string>> modes =
        row.isUser ? std::vector<std::pair<std::string, std::string>>{{"uniaxial", "[0.4, 0.9]"}}
                   : std::vector<std::pair<std::string, std::string>>{{"uniaxial", "[3.0]"},
                                                                      {"equibiaxial", "[1.9]"},
                                                                      {"planar", "[0.6]"},
                                                                      {"shear", "[1.5]"},
                                                                      {"confined", "[1.1]"}};
    const PathCase plain = caseOf(materialText(row.material) + [&] {
      std::string text;
      for (const auto& [mode, turns] : modes) text += pathText(mode, turns, {{1}, {0}});
      return text;
    }());
    for (std::size_t k = 0; k < modes.size(); ++k) {
      TestData data;
      for (const PathPoint& p : follow(plain.paths[k], plain.materials[0])) {
        data.stretch.push_back(p.stretch);
        data.stress.push_back(p.nominal);
      }
      if (!row.isUser) std::reverse(data.stretch.begin(), data.stretch.end());
      if (!row.isUser) std::reverse(data.stress.begin(), data.stress.end());
      paths += pathText(modes[k].first, modes[k].second, data);
    }
    const std::string settings = row.free[0] ? "[fit]\nfree = [" + std::string(row.free) + "]\n" : "";
    const PathCase definition = caseOf(settings + materialText(row.start) + paths);
    const FitResult result = fit(definition);
    const std::vector<double>&wanted = plain.materials[0].constants, &found = result.material.constants;
    ASSERT_EQ(found.size(), wanted.size());
    for (std::size_t k = 0; k < found.size(); ++k)
      EXPECT_NEAR(found[k], wanted[k], 1e-6 * std::abs(wanted[k])) << "constant " << k;
    EXPECT_LT(result.misfits.back().relative, 1e-8);
    // what is written reads back to the same bits
    EXPECT_EQ(caseOf(fittedCase(definition, result) + "\n" + paths).materials[0].constants, found);
  }
}

const char* modeName(Rubber mode) {
  return mode == Rubber::Bar ? "uniaxial" : mode == Rubber::Sheet ? "equibiaxial" : "planar";
}
std::string treloarPath(Rubber mode) {
  TestData data;
  for (const auto& [stretch, stress] : treloar(mode)) {
    data.stretch.push_back(stretch);
    data.stress.push_back(stress * inMegapascal(mode) * 1e6);
  }
  return pathText(modeName(mode), "[4]", data);
}

TEST_F(Fits, RubberIsMetAsWellAsByPublishedConstants) {
  const std::vector<Rubber> all{Rubber::Bar, Rubber::Sheet, Rubber::Strip};
  const char* oneConstant = "C10 = %\nD1 = 1e-10";
  const char* twoConstants = "C10 = %\nC01 = %\nD1 = 1e-10";
  const char* threeTerms = "model = \"ogden\"\nmu = [%, %, %]\nalpha = [%, %, %]\nD = [1e-10]";
  const struct {
    const char* model;
    std::vector<double> published; // in the order of the model's lines, in SI units
    std::vector<Rubber> modes;
    double tolerance; // of the constants, in parts of the largest; 0: others fit better
    const char* weights;
  } rows[] = {
      // from one test each: linear least squares
      {oneConstant, {0.28365e6}, {Rubber::Bar}, 0.03, "absolute"},
      {oneConstant, {0.16800e6}, {Rubber::Strip}, 0.03, "absolute"},
      {oneConstant, {0.20520e6}, {Rubber::Sheet}, 0, "absolute"},
      {twoConstants, {0.2588e6, -0.0449e6}, {Rubber::Bar}, 0, "absolute"},
      {twoConstants, {0.1713e6, 0.0047e6}, {Rubber::Sheet}, 0.03, "absolute"},
      // R. W. Ogden, Proc. R. Soc. A 326 (1972) 565, in the form 2 mu/alpha^2
      {threeTerms, {0.4095e6, 0.003e6, 0.01e6, 1.3, 5.0, -2.0}, all, 0, "relative"},
      {threeTerms, {0.4095e6, 0.003e6, 0.01e6, 1.3, 5.0, -2.0}, all, 0, "absolute"},
      // E. M. Arruda, M. C. Boyce, J. Mech. Phys. Solids 41 (1993) 389
      {"model = \"arruda-boyce\"\nmu = %\nlambda_m = %\nD = 1e-10", {0.27e6, std::sqrt(26.5)}, all, 0, "absolute"},
      {"model = \"van-der-waals\"\nmu = %\nlambda_m = %\na = %\nbeta = %\nD = 1e-10",
       {0.417e6, 10.66, 0.284, 0.007},
       all,
       0,
       "absolute"},
  };
  for (const auto& row : rows) {
    std::string lines = row.model, started = row.model, paths;
    const std::string settings = "[fit]\nstarts = 4\nweights = \"" + std::string(row.weights) + "\"\n";
    for (const double value : row.published) {
      lines.replace(lines.find('%'), 1, exactNumber(value));
      started.replace(started.find('%'), 1, exactNumber(1.5 * std::abs(value)));
    }
    SCOPED_TRACE(lines);
    for (const Rubber mode : row.modes) paths += treloarPath(mode);
    const FitResult result = fit(caseOf(settings + materialText(started) + paths));
    ASSERT_EQ(result.constants.size(), row.published.size());
    // misfit of the published constants
    const PathCase published = caseOf(materialText(lines) + paths);
    double sum = 0, count = 0, most = 0;
    for (const MaterialPath& path : published.paths) {
      std::vector<double> free;
      const std::vector<double> stress = nominalStresses(published.materials[0], path.mode, path.data.stretch, free);
      double largest = 0;
      for (const double measured : path.data.stress) largest = std::max(largest, measured);
      for (std::size_t k = 0; k < stress.size(); ++k, ++count) {
        const double error = stress[k] - path.data.stress[k];
        const bool isAbsolute = row.weights == std::string("absolute");
        sum += std::pow(isAbsolute ? error : error / std::max(path.data.stress[k], 0.01 * largest), 2);
      }
    }
    const FitResult::Misfit& misfit = result.misfits.back();
    EXPECT_EQ(misfit.points, static_cast<std::size_t>(count));
    EXPECT_LE(row.weights == std::string("absolute") ? misfit.rms : misfit.relative,
              std::sqrt(sum / count) * (1 + 1e-9));
    for (const double value : row.published) most = std::max(most, std::abs(value));
    for (std::size_t k = 0; k < row.published.size() && row.tolerance > 0; ++k)
      EXPECT_NEAR(result.constants[k].value, row.published[k], row.tolerance * most) << result.constants[k].name;
  }
}

// Models whose stress is linear in their constants: the normal equations of an incompressible rubber, solved here.
// A bulk modulus of 200 GPa leaves 2e-4.
TEST_F(Fits, LinearModelsEndAtTheirNormalEquations) {
  using Terms = std::vector<long double>;
  const struct {
    const char *material, *free;
    Terms (*slopes)(long double x, long double other); // by each constant of dW/dI1 + other dW/dI2, x = I1 - 3
  } rows[] = {
      {"C10 = 1e6\nC01 = 1e6\nD1 = 1e-11", "\"C10\", \"C01\"",
       [](long double, long double other) {
         return Terms{1, other};
       }},
      {"model = \"polynomial6\"\nC10 = 1e5\nD1 = 1e-11", "\"C10\", \"C20\", \"C30\"", // O. H. Yeoh 1990
       [](long double x, long double) {
         return Terms{1, 2 * x, 3 * x * x};
       }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.material);
    const std::size_t n = row.slopes(0, 0).size();
    LongMatrix A{}; // J'J and J'r; two constants leave the last row as it is
    Terms right(3), solved(3);
    if (n == 2) A[2][2] = 1;
    long double squares = 0;
    std::string paths;
    std::size_t points = 0;
    for (const Rubber mode : {Rubber::Bar, Rubber::Sheet, Rubber::Strip}) {
      paths += treloarPath(mode);
      double largest = 0;
      for (const auto& [stretch, reading] : treloar(mode)) largest = std::max(largest, reading);
      for (const auto& [stretch, reading] : treloar(mode)) {
        const Stretches l = stretchesOf(mode, stretch);
        const double scale = inMegapascal(mode) * 1e6, weight = 1 / (scale * std::max(reading, 0.01 * largest));
        Terms c = row.slopes(l[0] * l[0] + l[1] * l[1] + l[2] * l[2] - 3, l[1] * l[1]);
        for (long double& x : c) x *= 2 * (stretch - l[2] * l[2] / stretch) * weight;
        for (std::size_t i = 0; i < n; ++i) {
          for (std::size_t j = 0; j < n; ++j) A[i][j] += c[i] * c[j];
          right[i] += c[i] * reading * scale * weight;
        }
        squares += std::pow(reading * scale * weight, 2);
        ++points;
      }
    }
    const LongMatrix inverse = 1 / determinant(A) * transposed(cofactors(A));
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < n; ++j) solved[i] += inverse[i][j] * right[j];
      squares -= solved[i] * right[i];
    }
    const FitResult result =
        fit(caseOf("[fit]\nfree = [" + std::string(row.free) + "]\n" + materialText(row.material) + paths));
    for (std::size_t k = 0; k < n; ++k) {
      const auto wanted = static_cast<double>(solved[k]);
      const auto error = static_cast<double>(std::sqrt(squares / (points - n) * inverse[k][k]));
      EXPECT_NEAR(result.constants[k].value, wanted, 3e-4 * std::abs(wanted));
      EXPECT_NEAR(*result.constants[k].error, error, 3e-4 * error);
    }
    EXPECT_NEAR(result.misfits.back().relative, static_cast<double>(std::sqrt(squares / points)), 1e-5);
  }
}

TEST_F(Fits, NotesTellWhatTheDataLeaveOpen) {
  const std::string two = materialText("C10 = 0.2e6\nC01 = 0.1e6\nD1 = 1e-9");
  const TestData shear{{0.2, 0.5, 1.0, 1.5}, {0.2e5, 0.5e5, 1e5, 1.5e5}};
  const TestData falling{{1.5, 2, 3, 4, 5}, {3e5, 3.8e5, 3.5e5, 3e5, 2e5}};
  const auto notes = [](const std::string& text) {
    std::string all;
    for (const std::string& note : fit(caseOf(text)).notes) all += note + "\n";
    return all;
  };
  // simple shear reads the sum of both
  EXPECT_TRUE(contains(notes(two + pathText("shear", "[1.5]", shear)), " is not determined by the data"));
  EXPECT_TRUE(contains(notes("[fit]\nfree = [\"C10\", \"D1\"]\n" + two + pathText("shear", "[1.5]", shear)),
                       "D1 is not determined by the data"));
  EXPECT_TRUE(contains(notes("[fit]\nfree = [\"C10\", \"C20\"]\n" + two + pathText("uniaxial", "[3]", falling)),
                       "not stable: on path \"uniaxial\" its nominal stress falls with the stretch at "));
  EXPECT_TRUE(
      contains(notes("[fit.bounds]\nC01 = [0, 0.2e6]\n" + two + treloarPath(Rubber::Bar)), "C01 is at its bound, 0"));
}

TEST_F(Fits, Mistakes) {
  const std::string material = materialText("C10 = 0.2e6\nC01 = 0.1e6\nD1 = 1e-9"),
                    data = pathText("uniaxial", "[3]", {{2, 1.5, 3}, {3e5, 2e5, 5e5}}),
                    foam = materialText("model = \"user\"\nuser = \"TVK_VISCOUS_FOAM\"\n"
                                        "properties = [2e4, 8, 0, 0, 0, 0, 0, 0, 0, 0]");
  const struct {
    std::string text, said;
  } rows[] = {
      {material + data, "fitted"},
      {material + "[[path]]\nname = \"p\"\nmode = \"uniaxial\"\nstretch = [2.0]\n",
       "case.toml: no data of material \"a\""},
      {material + pathText("uniaxial", "[3]", {{2}, {3e5}}), "case.toml: 1 point of tests and 2 free constants"},
      {material + pathText("uniaxial", "[3]", {{2, -1}, {3e5, 1}}),
       "case.toml:14:15: stretch is -1, expected a positive"},
      {material + pathText("uniaxial", "[3]", {{2, 3}, {0, 0}}), "case.toml: all stresses of the data are 0"},
      {"[fit]\nfree = [\"C40\"]\n" + material + data, "case.toml:2:8: no constant \"C40\" of material \"a\", "},
      {"[fit]\nweights = \"log\"\n" + material + data, "case.toml:2:11: weights is \"log\", expected \"relative\""},
      {"[fit]\nmaterial = \"b\"\n" + material + data, "case.toml:2:12: no material \"b\""},
      {"[fit]\nstart = 3\n" + material + data, "case.toml:2:1: unknown key \"start\" in fit, did you mean \"starts\"?"},
      {"[fit.bounds]\nC10 = [0, 1]\n" + material + data, "case.toml:2:7: C10 of the material is 2e+05 and its bounds"},
      {"[fit.bounds]\nC10 = [1, 0]\n" + material + data, "case.toml:2:7: bounds of C10 are no two increasing numbers"},
      {foam + data, "case.toml: free is missing in fit, expected properties of user material \"a\" by number"},
      {"[fit]\nfree = [\"properties[1]\"]\n" + foam + pathText("uniaxial", "[0.5, 0.8]", {{0.6, 0.4}, {1, 1}}),
       "path \"uniaxial\" does not pass stretch 0.4 of its data, expected data in the order of the path"},
      {"[fit]\nfree = [\"mu[3]\"]\n" + materialText("model = \"ogden\"\nmu = [1e5]\nalpha = [2]\nD = [1e-9]") + data,
       "case.toml:2:8: no constant \"mu[3]\" of material \"a\", did you mean \"mu[1]\"?"},
  };
  for (const auto& row : rows) EXPECT_EQ(answer(row.text).substr(0, row.said.size()), row.said) << row.text;
}

} // namespace
