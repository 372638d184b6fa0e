// Built-in user materials: which name reaches which implementation, and what each refuses in which words.
#include "spx.h"
#include "tests/support/recording_diagnostics.h"
#include "tests/support/recording_host.h"

namespace {

using namespace sharedanalysis::test;

// A call with one point.
struct Call {
  std::string name;
  int ndir = 3, nshr = 3, states = 100;
  std::vector<double> props;
  int n = 1;
  double time = 1;
  int info = 0;          // about the call
  bool untouched = true; // afterwards

  std::string run(decltype(&SPX_USR_BUILTINVUMAT) routine = SPX_USR_BUILTINVUMAT) {
    resetRecordingHost();
    const double ones[9] = {1, 1, 1, 0, 0, 0, 0, 0, 0};
    const std::vector<double> zeros(200, 0.0);
    std::vector<double> stress(6, -7), state(200, -7), energy(2, -7);
    const int zero = 0, nprops = static_cast<int>(props.size());
    std::string padded = name;
    padded.resize(80, ' ');
    routine(&info, &n, &ndir, &nshr, &states, &zero, &nprops, &zero, &time, &time, ones, padded.data(), nullptr, ones,
            props.data(), ones, zeros.data(), nullptr, zeros.data(), ones, nullptr, nullptr, zeros.data(), zeros.data(),
            zeros.data(), zeros.data(), zeros.data(), ones, ones, nullptr, stress.data(), state.data(), energy.data(),
            energy.data() + 1, 80);
    untouched = true;
    for (const auto* values : {&stress, &state, &energy})
      untouched = untouched && std::all_of(values->begin(), values->end(), [](double x) { return x == -7; });
    std::string all;
    for (const RecordedStatus& s : recordingHost().statuses)
      if (s.type == "Error" || s.type == "Warning")
        all += s.type + ": " + s.firstString.substr(0, s.firstString.find_last_not_of(' ') + 1) + "|";
    return all;
  }
  // A template with this call's name and a number put in.
  std::string filled(std::string text, const std::string& number = "") const {
    for (std::size_t at; (at = text.find("%I")) != std::string::npos;) text.replace(at, 2, number);
    for (std::size_t at; (at = text.find("%S")) != std::string::npos;)
      text.replace(at, 2,
                   name.find_first_not_of(' ') == std::string::npos ? "        "
                                                                    : name.substr(name.find_first_not_of(' ')));
    return text;
  }
  static bool ended() {
    const auto& calls = recordingHost().calls;
    return std::find(calls.begin(), calls.end(), "DMPC_TERMINATECOMM 1") != calls.end();
  }
};

constexpr const char* kDepvar = "Check the definition of *DEPVAR in the input file.";

const std::vector<double> kAlloy = {60e9, .3, 60e9, .3, .075, 520e6, 600e6, 300e6, 200e6, 0, 300, 0, 0, -1};
const std::vector<double> kGlass = {30e9, .93, .088, .003, .35,  .77,    1,     .15e9, .5,
                                    6e9,  3e9, .053, .85,  45e9, -138e9, 290e9, 1,     0};
const std::vector<double> kBeissel = {193e9, 1.5e9, 5e9, 12e9,  .5e9,  .2e9, .2e9, .009, 1, .75e9,
                                      .16,   1,     0,   220e9, 361e9, 0,    1,    0,    0, 0};
const std::vector<double> kConcrete = {15e9, .79, 1.6, .007, .61, 48e6, 4e6,    1,     .01, 7, 16e6,
                                       .001, 8e8, .10, .04,  1,   85e9, -171e9, 208e9, 0,   0};
const std::vector<double> kViscous = {2e4, 8, 0, 0, 0, 0, 1e6, 2e3, 2, 0},
                          kCells = {7e10, .3, 2e8, .2, 1e9, 1e8, 1e8, 3e8, 5e7, 2e8, 0, 2,
                                    0,    0,  0,   0,  0,   1,   1e6, 0,   2e8, .8,  1, 1};
// One curve each: pressed only, with tension, and with tension for the axes and none for shear.
const std::vector<double> kSensitive = {4e5, 5e4, 0, .2, 3, 0, 1, 1, 2, 0, 0, 1e5, 1},
                          kFuChang = {4e5, 5e4, .2, 3, 0, 1, 1, 2, -1e5, -1, 1e5, 1},
                          kBlock = {4e5, 5e4, .2, 3, 0, 1, 0, 0, 1, 0, 0, 1, 2, -1e5, -1, 1e5, 1, 1, 2, 0, 0, 1e5, 1};
const std::vector<double> kPly = {55e9, 53e9, .05, 4e9, 6e8,  6e8, 6e8, 6e8, 1e5, 1e5, 1e5,
                                  0,    35e6, .2,  .9,  30e6, 9e8, .5,  0,   2,   0};
// Yield ratios of one, a tension curve of two rows, two rows of each failure.
std::vector<double> plastic() {
  std::vector<double> p = {2e9, .35, 1, 1, 1, 1, 1, 1, 0, 0, 2, 0, 2, 2, 0, 0, 0, 0, 0, 0, 0};
  for (double x : {1e7, 0., 2e7, .1, .5, .6, 1., .4, .5, 10., .5, .6, 1., .4, .5, 10.}) p.push_back(x);
  return p;
}
// Loading curves of two rows.
std::vector<double> woven(std::initializer_list<double> curves = {0, 0, 1e7, .1, 0, 0, 1e7, .1}) {
  std::vector<double> p = {2, 2, 0, 0, 0, 90, 1e6, 0, 0, 0, 0, 0, 0, 0};
  p.insert(p.end(), curves);
  return p;
}
std::vector<double> phases(double P1, double mu2) {
  std::vector<double> p(kBeissel.begin(), kBeissel.begin() + 18);
  p.insert(p.end(), {P1, mu2, 300e9, 200e9, 0, .2});
  return p;
}
std::vector<double> with(std::vector<double> p, std::initializer_list<std::pair<int, double>> changes) {
  for (const auto& [number, value] : changes) p[static_cast<std::size_t>(number - 1)] = value;
  return p;
}
TEST(UserMaterialDispatch, EachKeyAndAnySuffixReachesItsImplementation) {
  const struct {
    const char* key;
    int nshr;
    std::vector<double> props;
    const char* unread = ""; // the rate of a curve that has no other beside it; what only the other plastic has
  } cases[] = {{"TVK_VISCOUS_FOAM", 3, kViscous},
               {"TVK_RATE_SENSITIVE_FOAM", 3, kSensitive, " 8 "},
               {"TVK_FU_CHANG_ISO_FOAM", 1, kFuChang, " 7 "},
               {"TVK_FU_CHANG_ANISO_FOAM", 3, kBlock, " 12 18 "},
               {"TVK_HONEYCOMB", 3, kCells},
               {"TVK_SUPER_ELASTIC_N3D", 3, kAlloy},
               {"TVK_SUPER_ELASTIC_N2D", 1, kAlloy},
               {"TVK_SUPER_ELASTIC_N2D_EXPORT", 1, kAlloy},
               {"TVK_THERMOPLASTIC", 3, plastic()},
               {"TVK_MOLDED_PLASTIC", 1, plastic(), " 15 16 "},
               {"TVK_FABRIC", 1, woven()},
               {"TVK_PLY_FABRIC", 1, kPly},
               {"TVK_JH2", 3, kGlass},
               {"TVK_JHB", 3, kBeissel, " 20 "}, // without a change of phase
               {"TVK_HJC_CONCRETE", 3, kConcrete}};
  for (const auto& c : cases)
    for (const char* suffix : {"", "_1", "X Y"}) {
      Call call{std::string(c.key) + suffix, 3, c.nshr, 100, c.props};
      EXPECT_EQ(call.run(), "") << call.name;
      EXPECT_FALSE(call.untouched || Call::ended()) << call.name;
      call.n = 0;
      call.run();
      EXPECT_TRUE(call.untouched);
    }
  // nothing that is read may be infinite or no number
  for (const auto& c : cases)
    for (std::size_t k = 0; k < c.props.size(); ++k)
      for (const double bad : {kNaN, kInf, -kInf}) {
        Call call{c.key, 3, c.nshr, 100, c.props};
        call.props[k] = bad;
        const std::string_view unread = c.unread; // by number, between blanks
        const bool isUnread = unread.find(" " + std::to_string(k + 1) + " ") != unread.npos;
        EXPECT_NE(call.run() == "", !isUnread) << call.name << k + 1 << " is " << bad;
      }
}

TEST(UserMaterialDispatch, UnknownNamesEndTheAnalysis) {
  for (const char* name : {"STEEL", "TVK_JH", "TVK_FOAM", "tvk_jh2", " TVK_JH2", "TVK_XPL_FABRIC_INITENER", ""}) {
    Call call{name, 3, 3, 100, kGlass};
    EXPECT_EQ(call.run(), call.filled("Error: Material %S is not supported as a built-in user material|"));
    EXPECT_TRUE(call.untouched);
    EXPECT_TRUE(Call::ended());
  }
}

TEST(UserMaterialChecks, MessagesToTheLetterAndInOrder) {
  const std::string jh2 = "Subroutine VUMAT for Johnson-Holmquist ceramic materials ",
                    jhb = "Subroutine VUMAT for the Johnson-Holmquist-Beissel ceramic material ",
                    hjc = "the Holmquist-Johnson-Cook (HJC) concrete material ",
                    fabric = "Subroutine VUMAT for fabric material requires the specification of %I state variables",
                    molded = "Subroutine VUMAT for molded plastic materials ",
                    thermo = "Subroutine VUMAT for thermoplastic materials ",
                    shown = "specification of %I state variables. Check the definition of *DEPVAR in the input file.",
                    curve = " of material %S must be specified using increasing strain values",
                    foam = "The stress-strain curves of material %S must be ",
                    threeD = " user material only supports 3D, plane strain and axisymmetric elements.",
                    needs = " user material requires the specification of %I material properties in the *USER "
                            "MATERIAL option for material %S.",
                    notLess = "Property %I of material %S must be finite and not less than 0.00000E+00: it is ",
                    rated = "Rate-dependent ", inTerms = " failure properties must be specified in terms of ";
  // clang-format off
  const struct {
    const char* name;
    int ndir, nshr, states;
    std::vector<double> props;
    std::string text;
    const char* number = "";
  } cases[] = {
      // several faults at once: the first in order is told
      {"TVK_JH2", 1, 0, 0, {}, jh2 + "only supports 3D and plane strain elements."},
      {"TVK_JH2", 3, 1, 3, {}, jh2 + "requires the " + shown, "4"},
      {"TVK_JH2", 3, 1, 4, {},
       jh2 + "requires the specification of %I material properties. Check the *USER MATERIAL option for material %S.",
       "18"},
      {"TVK_JH2", 3, 3, 4, with(kGlass, {{7, 0}, {8, -1}}), "Property %I of material %S must be greater than zero.",
       "7"},
      {"TVK_JH2", 3, 3, 4, with(kGlass, {{11, 7e9}}),
       "HEL of material %S, property 10, must be greater than its PHEL, property 11."},
      {"TVK_HJC_CONCRETE", 3, 3, 5, with(kConcrete, {{11, 8e8}}),
       "Pl of material %S, property 13, must be greater than its Pc, property 11."},
      {"TVK_HJC_CONCRETE", 3, 3, 5, with(kConcrete, {{18, -5e12}, {19, 0}}),
       "K1 m + K2 m^2 + K3 m^3 of material %S, properties 17 to 19, never reaches its Pl, property 13."},
      {"TVK_HJC_CONCRETE", 3, 3, 5, with(kConcrete, {{12, .2}}),
       "The compression at which material %S reaches its Pl, property 13, must be greater than its muc, property 12."},
      {"TVK_JHB",
       3,
       3,
       4,
       {1, -1, 1, 2, 1, 0, 0, 0, 1, 1, 1, 1, 0, 1, 0, 0, 0, 0},
       "Pi of material %S, property 2, must be greater than -T, T its property 10."},
      {"TVK_SUPER_ELASTIC_N3D", 3, 3, 8, with(kAlloy, {{4, .5}}),
       "Poisson's ratios of material %S, properties 2 and 4, must lie between -1 and 0.5."},
      {"TVK_SUPER_ELASTIC_N3D", 3, 3, 8, with(kAlloy, {{7, 500e6}}), "The start of the transformation to martensite of "
       "material %S, property 6, must not be greater than its finish, property 7: they are 5.20000E+08 and "
       "5.00000E+08."},
      {"TVK_SUPER_ELASTIC_N2D", 3, 1, 8, with(kAlloy, {{9, 310e6}}), "The finish of the transformation to austenite of "
       "material %S, property 9, must not be greater than its start, property 8: they are 3.10000E+08 and "
       "3.00000E+08."},
      {"TVK_SUPER_ELASTIC_N1D", 1, 0, 8, with(kAlloy, {{8, 550e6}, {9, 530e6}}), "The finish of the transformation to "
       "austenite of material %S, property 9, must not be greater than the start of that to martensite, property 6: "
       "they are 5.30000E+08 and 5.20000E+08."},
      {"TVK_SUPER_ELASTIC_N3D", 3, 3, 8, with(kAlloy, {{8, 650e6}}), "The start of the transformation to austenite of "
       "material %S, property 8, must not be greater than the finish of that to martensite, property 7: they are "
       "6.50000E+08 and 6.00000E+08."},
      {"TVK_SUPER_ELASTIC_N3D", 3, 3, 8, with(kAlloy, {{14, .2}}), "The volume change of material %S, property 14, "
       "must be less than 1.5 times its transformation strain, property 5: they are 2.00000E-01 and 7.50000E-02."},
      {"TVK_SUPER_ELASTIC_N3D_EXP", 3, 3, 8, kAlloy, "Property %I of material %S must be greater than zero.", "13"},
      {"TVK_SUPER_ELASTIC_N1D_A_EXP 2", 1, 0, 8, with(kAlloy, {{7, 520e6}, {13, 1}, {14, 1}}), "The exponential law of "
       "material %S needs a start of the transformation to martensite, property 6, below its finish, property 7: they are "
       "5.20000E+08 and 5.20000E+08."},
      {"TVK_JHB", 1, 1, 0, {}, jhb + "only supports 3D and plane strain elements."},
      {"TVK_JHB", 3, 3, 3, {}, jhb + "requires the " + shown, "4"},
      {"TVK_JHB", 3, 3, 4, phases(16e9, .36), jhb + "requires the " + shown, "5"},
      {"TVK_JHB", 3, 3, 5, with(kBeissel, {{19, 16e9}}), jhb + "requires the specification of %I material properties. "
       "Check the *USER MATERIAL option for material %S.", "24"},
      {"TVK_JHB", 3, 3, 5, phases(-1, .36), "Property %I of material %S must be greater than zero.", "19"},
      {"TVK_JHB", 3, 3, 5, with(phases(16e9, .36), {{15, -1e12}}), "K1 mu + K2 mu^2 + K3 mu^3 of material %S, properties "
       "14 to 16, never reaches its P1, property 19."},
      {"TVK_JHB", 3, 3, 5, phases(16e9, .05), "mu2 of material %S, property 20, must be greater than the compression at "
       "which it reaches its P1, property 19."},
      {"TVK_JHB", 3, 3, 5, phases(16e9, .22), "The pressure of the dense phase of material %S at mu2, property 20, must be "
       "greater than its P1, property 19."},
      {"TVK_HJC_CONCRETE", 2, 1, 0, {}, "Subroutine VUMAT for  " + hjc + "only supports 3D and plane strain elements."},
      {"TVK_HJC_CONCRETE", 3, 3, 4, {},
       "Subroutine VUMAT for " + hjc + "requires the specification of %I state variables. " + kDepvar, "5"},
      {"TVK_HJC_CONCRETE", 3, 3, 5, with(kConcrete, {{14, std::nan("")}}),
       "Property %I of material %S must be greater than zero.", "14"},
      {"TVK_SUPER_ELASTIC", 3, 3, 0, {}, "The material name used with the VUMAT for superelastic materials must start "
       "with one of the strings TVK_SUPER_ELASTIC_N1D, TVK_SUPER_ELASTIC_N2D, or TVK_SUPER_ELASTIC_N3D"},
      {"TVK_SUPER_ELASTIC_N2D", 3, 3, 0, {}, "The elements of material %S do not have the stress components that its "
       "name asks for: TVK_SUPER_ELASTIC_N1D needs one direct component, TVK_SUPER_ELASTIC_N2D needs plane stress "
       "elements, and TVK_SUPER_ELASTIC_N3D needs solid or plane strain elements."},
      {"TVK_SUPER_ELASTIC_N1D", 1, 0, 0, std::vector<double>(15, 1.0),
       "Subroutine VUMAT for superelastic materials should be used with 14 material  properties."},
      {"TVK_SUPER_ELASTIC_N3D", 3, 1, 7, kAlloy, "Subroutine VUMAT for superelastic materials requires the " + shown,
       "8"},
      {"TVK_PLY_FABRIC", 3, 3, 0, {},
       "Subroutine VUMAT for fabric reinforced composite materials only supports plane stress elements."},
      {"TVK_PLY_FABRIC", 3, 1, 15, {},
       "Subroutine VUMAT for fabric reinforced composite materials requires the " + shown, "16"},
      {"TVK_PLY_FABRIC", 3, 1, 16, std::vector<double>(20), "Subroutine VUMAT for fabric reinforced composite materials "
       "requires the specification of %I material properties. Check the *USER MATERIAL option for material %S.", "21"},
      {"TVK_PLY_FABRIC", 3, 1, 16, with(kPly, {{8, 0}, {9, -1}}), "Property %I of material %S must be greater than zero.",
       "8"},
      {"TVK_PLY_FABRIC", 3, 1, 16, with(kPly, {{3, -1.1}}),
       "nu12 nu21 of material %S must be less than 1: nu12 is property 3, nu21 = nu12 E2/E1."},
      {"TVK_PLY_FABRIC", 3, 1, 16, with(kPly, {{19, 1}}),
       "The largest damages of material %S, properties 15 and 19, must be less than 1."},
      {"TVK_PLY_FABRIC", 3, 1, 16, with(kPly, {{18, 1.5}}),
       "The hardening exponent of material %S, property 18, must not be greater than 1."},
      {"TVK_PLY_FABRIC", 3, 1, 16, with(kPly, {{20, 3}}),
       "The deletion of material %S, property 20, must be 0, 1 or 2."},
      {"TVK_FABRIC", 3, 3, 0, {},
       "Subroutine VUMAT for fabric material is implemented only for plane stress elements (ndir=3 and nshr=1)"},
      {"TVK_FABRIC", 3, 1, 7, {}, fabric + ". " + kDepvar, "8"},
      {"TVK_FABRIC_INITENER", 3, 1, 8, {},
       fabric + " when used in combination with option to ramp initial stresses. " + kDepvar, "12"},
      {"TVK_FABRIC", 3, 1, 8, std::vector<double>(13), "Subroutine VUMAT for fabric material requires the "
       "specification of %I material properties. Check the *USER MATERIAL option for material %S.", "14"},
      {"TVK_FABRIC", 3, 1, 8, woven({0, .1, 1, .1}), "The loading stress-strain curve for fiber 1" + curve},
      {"TVK_FABRIC", 3, 1, 8, with(woven({0, .1, 0, .1, 1, 0}), {{1, 1}}),
       "The loading stress-strain curve for fiber 2" + curve},
      {"TVK_FABRIC", 3, 1, 8, with(woven({0, .1, 0, .1, 0, .3, 1, 0}), {{1, 1}, {2, 1}, {3, 2}}),
       "The unloading stress-strain curve for fiber 1" + curve},
      {"TVK_FABRIC", 3, 1, 8, with(woven({0, .1, 0, .1, 0, std::nan("")}), {{1, 1}, {2, 0}, {4, 2}}),
       "The unloading stress-strain curve for fiber 2" + curve},
      {"TVK_FABRIC", 3, 1, 8, with(woven({0, .1}), {{1, 1e9}, {4, 2}}),
       "The properties of material %S end before its tables do."},
      {"TVK_FABRIC", 3, 1, 8, with(woven({}), {{1, -1}}), "The properties of material %S end before its tables do."},
      {"TVK_FABRIC", 3, 1, 8, woven({0, 0, 1, .1, 1, 0, 2, .1}), "The loading stress-strain curve for fiber 2 of "
       "material %S must start at zero stress and strain, with a second row or more behind"},
      {"TVK_FABRIC", 3, 1, 8, with(woven({0, 0, 1, .1, 0, 0, 1, .1, 0, 0}), {{3, 1}}), "The unloading stress-strain "
       "curve for fiber 1 of material %S must start at zero stress and strain, with a second row or more behind"},
      {"TVK_FABRIC", 3, 1, 8, with(woven({0, 0, 1, .1, 0, 0, 1, .1, 0, 0, 0, 1}), {{4, 2}}), "The unloading "
       "stress-strain curve for fiber 2 of material %S must be specified using increasing stress values"},
      {"TVK_FABRIC", 3, 1, 8, with(woven(), {{9, -1}}), notLess + "-1.00000E+00.", "9"},
      {"TVK_FABRIC", 3, 1, 8, with(woven(), {{12, 2}}),
       "The stiffness in compression of material %S, property 12, must not be greater than 1."},
      {"TVK_FABRIC", 3, 1, 8, with(woven(), {{5, -90}}),
       "The fibers of material %S must cross: their angles, properties 5 and 6, are the same."},
      {"TVK_MOLDED_PLASTIC", 1, 0, 0, {},
       molded + "only supports solid, plane stress, and generalized plane strain elements."},
      {"TVK_MOLDED_PLASTIC", 3, 1, 13, {}, molded + "requires the " + shown, "14"},
      {"TVK_MOLDED_PLASTIC", 3, 1, 14, {},
       molded + "requires the specification of uniaxial tension or compression data."},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{4, 0}, {26, 0}}),
       "The yield ratios must be greater than zero."},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{27, 0}, {28, -1}}),
       "The values of the ductile failure strains, eps_T+ and eps_T-, must be greater than zero"},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{28, 20}}),
       rated + "ductile" + inTerms + "increasing strain rates"},
      // neither increasing nor positive
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{28, -1}, {31, -2}}),
       rated + "ductile" + inTerms + "increasing strain rates"},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{28, -1}}),
       rated + "ductile" + inTerms + "possitive strain rates"},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{33, 0}}),
       "The values of the shear failure strains, eps_S+ and eps_S-, must be greater than zero"},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{37, 1}}),
       rated + "shear" + inTerms + "increasing strain rates"},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{34, 0}}),
       rated + "shear" + inTerms + "possitive strain rates"},
      {"TVK_THERMOPLASTIC", 2, 1, 14, {},
       thermo + "only supports solid, plane stress, and generalized plane strain elements."},
      {"TVK_THERMOPLASTIC", 3, 3, 13, {}, thermo + "requires the " + shown, "14"},
      {"TVK_THERMOPLASTIC", 3, 3, 14, {},
       thermo + "requires the specification of uniaxial tension or compression data."},
      {"TVK_THERMOPLASTIC", 3, 3, 14, with(plastic(), {{16, -1}}),
       "Coefficients f3 and f5 for the thermoplastic material cannot be negative"},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, std::vector<double>(21, 1.0), "The properties of material %S end before its tables do."},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{1, 0}}), "Property %I of material %S must be greater than zero.",
       "1"},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{2, .5}}),
       "Poisson's ratio of material %S, property 2, must lie between -1 and 0.5: it is 5.00000E-01."},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{20, -2}}),
       notLess + "-2.00000E+00.", "20"},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{25, 0}}), "The tension curve of material %S must be specified "
       "using increasing plastic strain values and yield stresses greater than zero."},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{11, 0}, {12, 2}, {22, 0}}), "The compression curve of material "
       "%S must be specified using increasing plastic strain values and yield stresses greater than zero."},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{13, 0}, {14, 0}, {21, 2}}), "The rate factors of material %S "
       "must be greater than zero, and given in terms of increasing positive strain rates."},
      {"TVK_MOLDED_PLASTIC", 3, 1, 14, with(plastic(), {{3, .3}}),
       "The yield ratios of material %S do not give a closed surface."},
      {"TVK_MOLDED_PLASTIC", 3, 3, 14, with(plastic(), {{18, .4}, {19, .1}, {32, .05}, {33, 5}}), "The shear failure "
       "strains of material %S must be greater than zero for every state of stress: kS, property 18, or f, property 19, "
       "is too large for their ratio: they are 4.00000E-01 and 1.00000E-01."},
      {"TVK_HONEYCOMB", 3, 3, 0, {}, "The honeycomb user material requires the specification of %I material in the "
       "*USER MATERIAL option for material %S.", "18"},
      {"TVK_HONEYCOMB", 3, 3, 0, std::vector<double>(18), "The honeycomb user material requires the "
       "specification of %I state variables. Check the definition of *DEPVAR for material %S.", "1"},
      {"TVK_HONEYCOMB", 3, 3, 2, std::vector<double>(18, .2), "The honeycomb user material requires the "
       "specification of %I state variables when a tensile strain for element deletion is defined in the model. Check the definition "
       "of *DEPVAR for material %S.", "3"},
      {"TVK_RATE_SENSITIVE_FOAM", 3, 3, 1, {}, "The rate sensitive foam user material requires the specification of %I "
       "state variables. Check the definition of  *DEPVAR in the input file.", "2"},
      {"TVK_RATE_SENSITIVE_FOAM", 3, 3, 7, {1, 0, .1}, std::string("The rate sensitive foam user material requires the "
       "specification of %I state variables when beta damping is specified. ") + kDepvar, "8"},
      {"TVK_HONEYCOMB", 2, 1, 0, {}, "The honeycomb" + threeD},
      {"TVK_HONEYCOMB", 3, 3, 1, with(kCells, {{18, 2}}), "The properties of material %S end before its tables do."},
      {"TVK_HONEYCOMB", 3, 3, 1, with(kCells, {{12, 0}}), "Material %S needs a crush curve for component 11."},
      {"TVK_HONEYCOMB", 3, 3, 1, with(kCells, {{22, 0}}), "The crush curves of material %S must be finite and specified "
       "using increasing values of 1 - J."},
      {"TVK_HONEYCOMB", 3, 3, 1, with(kCells, {{24, 0}}), "The strength factors of material %S must be positive, for "
       "positive and increasing strain rates."},
      {"TVK_HONEYCOMB", 3, 3, 1, with(kCells, {{9, 0}}), "Property %I of material %S must be greater than zero.", "9"},
      {"TVK_HONEYCOMB", 3, 3, 1, with(kCells, {{4, 1}}), "Property %I of material %S must be greater than 0.00000E+00 "
       "and less than 1.00000E+00: it is 1.00000E+00.", "4"},
      {"TVK_VISCOUS_FOAM", 1, 1, 0, {}, "The viscous foam" + threeD},
      {"TVK_VISCOUS_FOAM", 3, 1, 5, {}, "The viscous foam user material requires the " + shown, "6"},
      {"TVK_VISCOUS_FOAM", 3, 1, 6, {}, "The viscous foam" + needs, "10"},
      {"TVK_VISCOUS_FOAM", 3, 1, 6, with(kViscous, {{4, 1}}), "An exponent alpha of material %S, property 2 or 5, is "
       "zero."},
      {"TVK_VISCOUS_FOAM", 3, 1, 6, with(kViscous, {{3, -.5}}), "Beta of a term of material %S, property %I, must be "
       "greater than -1/3: it is -5.00000E-01.", "3"},
      {"TVK_RATE_SENSITIVE_FOAM", 1, 0, 0, {}, "The rate sensitive foam" + threeD},
      {"TVK_FU_CHANG_ISO_FOAM", 3, 3, 6, {}, "The Fu-Chang isotropic foam user material requires the " + shown, "7"},
      {"TVK_FU_CHANG_ANISO_FOAM", 3, 3, 11, {}, "The Fu-Chang anisotropic foam user material requires the " + shown, "12"},
      {"TVK_FU_CHANG_ANISO_FOAM", 3, 3, 12, {}, "The Fu-Chang anisotropic foam" + needs, "11"},
      {"TVK_RATE_SENSITIVE_FOAM", 3, 3, 2, with(kSensitive, {{9, 3}}), "The properties of material %S end before its "
       "tables do."},
      {"TVK_FU_CHANG_ISO_FOAM", 3, 1, 7, with(kFuChang, {{6, 0}}), "Material %S needs a stress-strain curve of at least "
       "one row for each strain rate."},
      {"TVK_FU_CHANG_ISO_FOAM", 3, 1, 7, with(kFuChang, {{12, -1}}), foam + "specified using increasing strain values."},
      {"TVK_FU_CHANG_ISO_FOAM", 3, 1, 7, with(kFuChang, {{11, 2e5}}), foam + "finite and either begin with zero strain "
       "and zero stress or begin in tension and pass through zero stress at zero strain."},
      {"TVK_RATE_SENSITIVE_FOAM", 3, 3, 2, with(kSensitive, {{11, -1}}), foam + "finite and begin with zero strain and "
       "zero stress."},
      {"TVK_FU_CHANG_ANISO_FOAM", 3, 3, 12, with(kBlock, {{21, -1}, {20, -1e5}}), foam + "finite and begin with zero "
       "strain and zero stress."},
      {"TVK_FU_CHANG_ISO_FOAM", 3, 3, 7, {4e5, 0, 1, 1, 0, 2, 1, 2, 1, 1, -1, -1, 1, 1, 0, 0}, "The strain rates of the "
       "curves of material %S must be positive and increasing."},
      {"TVK_FU_CHANG_ISO_FOAM", 3, 3, 7, {4e5, 0, 1, 1, 0, 2, 1, 2, 2, 1, -1, -1, 1, 1, 0, 0}, "Either all or none of "
       "the stress-strain curves of one family of material %S must begin in tension."},
      {"TVK_RATE_SENSITIVE_FOAM", 3, 3, 2, with(kSensitive, {{1, 0}}), "Property %I of material %S must be greater than "
       "zero.", "1"},
      {"TVK_RATE_SENSITIVE_FOAM", 3, 3, 2, with(kSensitive, {{4, 1.5}}), "Property %I of material %S must lie between "
       "0.00000E+00 and 1.00000E+00: it is 1.50000E+00.", "4"},
      {"TVK_RATE_SENSITIVE_FOAM", 3, 3, 2, with(kSensitive, {{6, -1}}), "Property %I of material %S must be finite and "
       "not less than 0.00000E+00: it is -1.00000E+00.", "6"}};
  // clang-format on
  for (const auto& c : cases) {
    Call call{c.name, c.ndir, c.nshr, c.states, c.props};
    EXPECT_EQ(call.run(), "Error: " + call.filled(c.text, c.number) + "|");
    EXPECT_TRUE(call.untouched && Call::ended());
  }
}

TEST(UserMaterialChecks, WarningsOfPlasticsInSolids) {
  const std::string
      ratios = "Warning: The orthotropic plasticity option is only supported for elements with plane stress state. "
               "All yield ratios will be assumed to be equal to one.|",
      k = "Warning: The orientation-dependent orthotropic ductile failure criterion is not supported for 3D solid "
          "elements. The values of coefficients k1 and k2 will be ignored.|";
  Call call{"TVK_THERMOPLASTIC", 3, 3, 14, with(plastic(), {{5, 1.2}, {10, .1}})};
  EXPECT_EQ(call.run(), "") << "once, in the first call";
  call.time = 0;
  EXPECT_EQ(call.run(), ratios + k);
  EXPECT_FALSE(call.untouched || Call::ended());
  call.nshr = 1;
  EXPECT_EQ(call.run(), "") << "plane stress";
  call.info = 2;
  EXPECT_EQ(call.run(), ratios + k) << "generalised plane strain";
}

} // namespace
