// Built-in user materials: which name reaches which implementation, and what each refuses in which words.
#include "spx.h"
#include "tests/support/files.h"
#include "tests/support/recording_diagnostics.h"
#include "tests/support/recording_host.h"
#include "tests/support/user_material.h"

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

  std::string run() {
    resetRecordingHost();
    const double ones[9] = {1, 1, 1, 0, 0, 0, 0, 0, 0};
    const std::vector<double> zeros(200, 0.0);
    std::vector<double> stress(6, -7), state(200, -7), energy(2, -7);
    std::string padded = name;
    padded.resize(80, ' ');
    callBuiltIn(info, n, ndir, nshr, states, 0, static_cast<int>(props.size()), 0, time, time, ones, padded, nullptr,
                ones, props, ones, zeros, nullptr, zeros, ones, nullptr, nullptr, zeros, zeros, zeros, zeros, zeros,
                ones, ones, nullptr, stress, state, &energy[0], &energy[1]);
    untouched = true;
    for (const auto* values : {&stress, &state, &energy})
      untouched = untouched && std::all_of(values->begin(), values->end(), [](double x) { return x == -7; });
    std::string all;
    for (const RecordedStatus& s : recordingHost().statuses)
      if (s.type == "Error" || s.type == "Warning")
        all += s.type + ": " + s.firstString.substr(0, s.firstString.find_last_not_of(' ') + 1) + "|";
    return all;
  }
  // A text with this call's name put in.
  std::string filled(const std::string& text) const {
    const std::size_t begin = name.find_first_not_of(' ');
    const std::string shown = begin == std::string::npos ? "        " : name.substr(begin);
    return std::regex_replace(text, std::regex("%S"), shown);
  }
  static bool ended() {
    const auto& calls = recordingHost().calls;
    return std::find(calls.begin(), calls.end(), "DMPC_TERMINATECOMM 1") != calls.end();
  }
};

const std::vector<double> kAlloy = {60e9, .3, 60e9, .3, .075, 520e6, 600e6, 300e6, 200e6, 0, 300, 0, 0, -1};
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
const std::vector<double> kWoven = {2, 2, 0, 0, 0, 90, 1e6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1e7, .1, 0, 0, 1e7, .1};

struct Sound {
  const char* key;
  int ndir, nshr;
  std::vector<double> props;
  const char* unread = ""; // the rate of a curve that has no other beside it; what only the other plastic has
};
const std::vector<Sound>& soundCalls() {
  static const std::vector<Sound> calls = {{"TVK_VISCOUS_FOAM", 3, 3, kViscous},
                                           {"TVK_RATE_SENSITIVE_FOAM", 3, 3, kSensitive, " 8 "},
                                           {"TVK_FU_CHANG_ISO_FOAM", 3, 1, kFuChang, " 7 "},
                                           {"TVK_FU_CHANG_ANISO_FOAM", 3, 3, kBlock, " 12 18 "},
                                           {"TVK_HONEYCOMB", 3, 3, kCells},
                                           {"TVK_SUPER_ELASTIC_N3D", 3, 3, kAlloy},
                                           {"TVK_SUPER_ELASTIC_N2D", 3, 1, kAlloy},
                                           {"TVK_SUPER_ELASTIC_N1D", 1, 0, kAlloy},
                                           {"TVK_SUPER_ELASTIC_N2D_EXPORT", 3, 1, kAlloy},
                                           {"TVK_THERMOPLASTIC", 3, 3, plastic()},
                                           {"TVK_MOLDED_PLASTIC", 3, 1, plastic(), " 15 16 "},
                                           {"TVK_FABRIC", 3, 1, kWoven},
                                           {"TVK_PLY_FABRIC", 3, 1, kPly},
                                           {"TVK_JH2", 3, 3, kCeramics[2].props()},
                                           {"TVK_JHB", 3, 3, siliconCarbide(), " 20 "}, // without a change of phase
                                           {"TVK_HJC_CONCRETE", 3, 3, concrete()}};
  return calls;
}

TEST(UserMaterialDispatch, EachKeyAndAnySuffixReachesItsImplementation) {
  for (const Sound& c : soundCalls())
    for (const char* suffix : {"", "_1", "X Y"}) {
      Call call{std::string(c.key) + suffix, c.ndir, c.nshr, 100, c.props};
      EXPECT_EQ(call.run(), "") << call.name;
      EXPECT_FALSE(call.untouched || Call::ended()) << call.name;
      call.n = 0;
      call.run();
      EXPECT_TRUE(call.untouched);
    }
  // nothing that is read may be infinite or no number
  for (const Sound& c : soundCalls())
    for (std::size_t k = 0; k < c.props.size(); ++k)
      for (const double bad : {kNaN, kInf, -kInf}) {
        Call call{c.key, c.ndir, c.nshr, 100, c.props};
        call.props[k] = bad;
        const std::string_view unread = c.unread; // by number, between blanks
        const bool isUnread = unread.find(" " + std::to_string(k + 1) + " ") != unread.npos;
        EXPECT_NE(call.run() == "", !isUnread) << call.name << k + 1 << " is " << bad;
      }
}

TEST(UserMaterialDispatch, UnknownNamesEndTheAnalysis) {
  for (const char* name : {"STEEL", "TVK_JH", "TVK_FOAM", "tvk_jh2", " TVK_JH2", "TVK_XPL_FABRIC_INITENER", ""}) {
    Call call{name, 3, 3, 100, kCeramics[2].props()};
    EXPECT_EQ(call.run(), call.filled("Error: Material %S is not supported as a built-in user material|"));
    EXPECT_TRUE(call.untouched);
    EXPECT_TRUE(Call::ended());
  }
}

// A sound call of the material whose key the name begins with, changed by a list of these: components "3+1", "7 states",
// "18 of .2" for so many properties of one value, "from 15: 0 .1 1 .1" for the last ones, "2 = 0" for one of them.
Call changed(const std::string& name, const std::string& changes) {
  Call call{name, 3, 3, 100, {}};
  for (const Sound& sound : soundCalls())
    if (name.starts_with(sound.key)) call = {name, sound.ndir, sound.nshr, 100, sound.props};
  const std::regex form("(\\d+)( states|\\+| of | = |)(.*)");
  std::smatch m;
  for (const std::string& change : partsOf(changes, ", "))
    if (change.starts_with("from ")) {
      call.props.resize(std::stoul(change.substr(5)) - 1);
      for (const std::string& x : partsOf(change.substr(change.find(':') + 1), " ")) call.props.push_back(std::stod(x));
    } else if (std::regex_match(change, m, form)) {
      const int number = std::stoi(m[1]);
      if (m[2] == "+") call.ndir = number, call.nshr = std::stoi(m[3]);
      if (m[2] == " states") call.states = number;
      if (m[2] == " of ") call.props.assign(number, std::stod(m[3]));
      if (m[2] == " = ") call.props.at(number - 1) = std::stod(m[3]);
    }
  return call;
}

// Of several faults the first in order is told.
TEST(UserMaterialChecks, MessagesToTheLetterAndInOrder) {
  for (const Row& row : tableOf(R"(
JH2 -> 7 = 0, 8 = -1 => Property 7 of material %S must be greater than zero.
JH2 -> 11 = 7e9 => HEL of material %S, property 10, must be greater than its PHEL, property 11.
JH2 -> 1+0, 0 states, 0 of 0 => Subroutine VUMAT for Johnson-Holmquist ceramic materials only supports 3D and plane
    strain elements.
JH2 -> 3+1, 3 states, 0 of 0 => Subroutine VUMAT for Johnson-Holmquist ceramic materials requires the specification of
    4 state variables. Check the definition of *DEPVAR in the input file.
JH2 -> 3+1, 0 of 0 => Subroutine VUMAT for Johnson-Holmquist ceramic materials requires the specification of 18
    material properties. Check the *USER MATERIAL option for material %S.
JHB -> 19 = 16e9 => Subroutine VUMAT for the Johnson-Holmquist-Beissel ceramic material requires the specification of
    24 material properties. Check the *USER MATERIAL option for material %S.
JHB -> from 1: 1 -1 1 2 1 0 0 0 1 1 1 1 0 1 0 0 0 0 => Pi of material %S, property 2, must be greater than -T, T its
    property 10.
JHB -> 1+1, 0 states, 0 of 0 => Subroutine VUMAT for the Johnson-Holmquist-Beissel ceramic material only supports 3D
    and plane strain elements.
JHB -> 3 states, 0 of 0 => Subroutine VUMAT for the Johnson-Holmquist-Beissel ceramic material requires the
    specification of 4 state variables. Check the definition of *DEPVAR in the input file.
JHB -> 4 states, from 19: 16e9 .36 300e9 200e9 0 .2 => Subroutine VUMAT for the Johnson-Holmquist-Beissel ceramic
    material requires the specification of 5 state variables. Check the definition of *DEPVAR in the input file.
JHB -> from 19: -1 .36 300e9 200e9 0 .2 => Property 19 of material %S must be greater than zero.
JHB -> from 19: 16e9 .36 300e9 200e9 0 .2, 15 = -1e12 => K1 mu + K2 mu^2 + K3 mu^3 of material %S, properties 14 to
    16, never reaches its P1, property 19.
JHB -> from 19: 16e9 .05 300e9 200e9 0 .2 => mu2 of material %S, property 20, must be greater than the compression at
    which it reaches its P1, property 19.
JHB -> from 19: 16e9 .22 300e9 200e9 0 .2 => The pressure of the dense phase of material %S at mu2, property 20, must
    be greater than its P1, property 19.
HJC_CONCRETE -> 11 = 8e8 => Pl of material %S, property 13, must be greater than its Pc, property 11.
HJC_CONCRETE -> 18 = -5e12, 19 = 0 => K1 m + K2 m^2 + K3 m^3 of material %S, properties 17 to 19, never reaches its
    Pl, property 13.
HJC_CONCRETE -> 12 = .2 => The compression at which material %S reaches its Pl, property 13, must be greater than its
    muc, property 12.
HJC_CONCRETE -> 14 = nan => Property 14 of material %S must be greater than zero.
HJC_CONCRETE -> 2+1, 0 states, 0 of 0 => Subroutine VUMAT for  the Holmquist-Johnson-Cook (HJC) concrete material only
    supports 3D and plane strain elements.
HJC_CONCRETE -> 4 states, 0 of 0 => Subroutine VUMAT for the Holmquist-Johnson-Cook (HJC) concrete material requires
    the specification of 5 state variables. Check the definition of *DEPVAR in the input file.
SUPER_ELASTIC_N3D -> 4 = .5 => Poisson's ratios of material %S, properties 2 and 4, must lie between -1 and 0.5.
SUPER_ELASTIC_N3D -> 7 = 500e6 => The start of the transformation to martensite of material %S, property 6, must not
    be greater than its finish, property 7: they are 5.20000E+08 and 5.00000E+08.
SUPER_ELASTIC_N3D -> 8 = 650e6 => The start of the transformation to austenite of material %S, property 8, must not be
    greater than the finish of that to martensite, property 7: they are 6.50000E+08 and 6.00000E+08.
SUPER_ELASTIC_N3D -> 14 = .2 => The volume change of material %S, property 14, must be less than 1.5 times its
    transformation strain, property 5: they are 2.00000E-01 and 7.50000E-02.
SUPER_ELASTIC_N2D -> 9 = 310e6 => The finish of the transformation to austenite of material %S, property 9, must not
    be greater than its start, property 8: they are 3.10000E+08 and 3.00000E+08.
SUPER_ELASTIC_N1D -> 8 = 550e6, 9 = 530e6 => The finish of the transformation to austenite of material %S, property 9,
    must not be greater than the start of that to martensite, property 6: they are 5.30000E+08 and 5.20000E+08.
SUPER_ELASTIC_N1D_A_EXP 2 -> 7 = 520e6, 13 = 1, 14 = 1 => The exponential law of material %S needs a start of the
    transformation to martensite, property 6, below its finish, property 7: they are 5.20000E+08 and 5.20000E+08.
SUPER_ELASTIC_N3D_EXP -> => Property 13 of material %S must be greater than zero.
SUPER_ELASTIC -> 3+3, 0 states, 0 of 0 => The material name used with the VUMAT for superelastic materials must start
    with one of the strings TVK_SUPER_ELASTIC_N1D, TVK_SUPER_ELASTIC_N2D, or TVK_SUPER_ELASTIC_N3D
SUPER_ELASTIC_N2D -> 3+3, 0 states, 0 of 0 => The elements of material %S do not have the stress components that its
    name asks for: TVK_SUPER_ELASTIC_N1D needs one direct component, TVK_SUPER_ELASTIC_N2D needs plane stress
    elements, and TVK_SUPER_ELASTIC_N3D needs solid or plane strain elements.
SUPER_ELASTIC_N1D -> 0 states, 15 of 1.0 => Subroutine VUMAT for superelastic materials should be used with 14
    material  properties.
SUPER_ELASTIC_N3D -> 3+1, 7 states => Subroutine VUMAT for superelastic materials requires the specification of 8
    state variables. Check the definition of *DEPVAR in the input file.
PLY_FABRIC -> 8 = 0, 9 = -1 => Property 8 of material %S must be greater than zero.
PLY_FABRIC -> 3 = -1.1 => nu12 nu21 of material %S must be less than 1: nu12 is property 3, nu21 = nu12 E2/E1.
PLY_FABRIC -> 19 = 1 => The largest damages of material %S, properties 15 and 19, must be less than 1.
PLY_FABRIC -> 18 = 1.5 => The hardening exponent of material %S, property 18, must not be greater than 1.
PLY_FABRIC -> 20 = 3 => The deletion of material %S, property 20, must be 0, 1 or 2.
PLY_FABRIC -> 3+3, 0 states, 0 of 0 => Subroutine VUMAT for fabric reinforced composite materials only supports plane
    stress elements.
PLY_FABRIC -> 15 states, 0 of 0 => Subroutine VUMAT for fabric reinforced composite materials requires the
    specification of 16 state variables. Check the definition of *DEPVAR in the input file.
PLY_FABRIC -> 20 of 0 => Subroutine VUMAT for fabric reinforced composite materials requires the specification of 21
    material properties. Check the *USER MATERIAL option for material %S.
FABRIC -> 9 = -1 => Property 9 of material %S must be finite and not less than 0.00000E+00: it is -1.00000E+00.
FABRIC -> 12 = 2 => The stiffness in compression of material %S, property 12, must not be greater than 1.
FABRIC -> 5 = -90 => The fibers of material %S must cross: their angles, properties 5 and 6, are the same.
FABRIC -> 3+3, 0 states, 0 of 0 => Subroutine VUMAT for fabric material is implemented only for plane stress elements
    (ndir=3 and nshr=1)
FABRIC -> 7 states, 0 of 0 => Subroutine VUMAT for fabric material requires the specification of 8 state variables.
    Check the definition of *DEPVAR in the input file.
FABRIC_INITENER -> 8 states, 0 of 0 => Subroutine VUMAT for fabric material requires the specification of 12 state
    variables when used in combination with option to ramp initial stresses. Check the definition of *DEPVAR in the
    input file.
FABRIC -> 13 of 0 => Subroutine VUMAT for fabric material requires the specification of 14 material properties. Check
    the *USER MATERIAL option for material %S.
FABRIC -> from 15: 0 .1 1 .1 => The loading stress-strain curve for fiber 1 of material %S must be specified using
    increasing strain values
FABRIC -> from 15: 0 .1 0 .1 1 0, 1 = 1 => The loading stress-strain curve for fiber 2 of material %S must be
    specified using increasing strain values
FABRIC -> from 15: 0 .1 0 .1 0 .3 1 0, 1 = 1, 2 = 1, 3 = 2 => The unloading stress-strain curve for fiber 1 of
    material %S must be specified using increasing strain values
FABRIC -> from 15: 0 .1 0 .1 0 nan, 1 = 1, 2 = 0, 4 = 2 => The unloading stress-strain curve for fiber 2 of material
    %S must be specified using increasing strain values
FABRIC -> from 15: 0 .1, 1 = 1e9, 4 = 2 => The properties of material %S end before its tables do.
FABRIC -> from 15:, 1 = -1 => The properties of material %S end before its tables do.
FABRIC -> from 15: 0 0 1 .1 1 0 2 .1 => The loading stress-strain curve for fiber 2 of material %S must start at zero
    stress and strain, with a second row or more behind
FABRIC -> from 15: 0 0 1 .1 0 0 1 .1 0 0, 3 = 1 => The unloading stress-strain curve for fiber 1 of material %S must
    start at zero stress and strain, with a second row or more behind
FABRIC -> from 15: 0 0 1 .1 0 0 1 .1 0 0 0 1, 4 = 2 => The unloading stress-strain curve for fiber 2 of material %S
    must be specified using increasing stress values
MOLDED_PLASTIC -> 3+3, 4 = 0, 26 = 0 => The yield ratios must be greater than zero.
MOLDED_PLASTIC -> 3+3, 27 = 0, 28 = -1 => The values of the ductile failure strains, eps_T+ and eps_T-, must be
    greater than zero
MOLDED_PLASTIC -> 3+3, 28 = 20 => Rate-dependent ductile failure properties must be specified in terms of increasing
    strain rates
MOLDED_PLASTIC -> 3+3, 28 = -1, 31 = -2 => Rate-dependent ductile failure properties must be specified in terms of
    increasing strain rates
MOLDED_PLASTIC -> 3+3, 28 = -1 => Rate-dependent ductile failure properties must be specified in terms of possitive
    strain rates
MOLDED_PLASTIC -> 3+3, 33 = 0 => The values of the shear failure strains, eps_S+ and eps_S-, must be greater than zero
MOLDED_PLASTIC -> 3+3, 37 = 1 => Rate-dependent shear failure properties must be specified in terms of increasing
    strain rates
MOLDED_PLASTIC -> 3+3, 34 = 0 => Rate-dependent shear failure properties must be specified in terms of possitive
    strain rates
MOLDED_PLASTIC -> 3+3, 1 = 0 => Property 1 of material %S must be greater than zero.
MOLDED_PLASTIC -> 3+3, 2 = .5 => Poisson's ratio of material %S, property 2, must lie between -1 and 0.5: it is
    5.00000E-01.
MOLDED_PLASTIC -> 3+3, 20 = -2 => Property 20 of material %S must be finite and not less than 0.00000E+00: it is
    -2.00000E+00.
MOLDED_PLASTIC -> 3+3, 25 = 0 => The tension curve of material %S must be specified using increasing plastic strain
    values and yield stresses greater than zero.
MOLDED_PLASTIC -> 3+3, 11 = 0, 12 = 2, 22 = 0 => The compression curve of material %S must be specified using
    increasing plastic strain values and yield stresses greater than zero.
MOLDED_PLASTIC -> 3+3, 13 = 0, 14 = 0, 21 = 2 => The rate factors of material %S must be greater than zero, and given
    in terms of increasing positive strain rates.
MOLDED_PLASTIC -> 3+3, 18 = .4, 19 = .1, 32 = .05, 33 = 5 => The shear failure strains of material %S must be greater
    than zero for every state of stress: kS, property 18, or f, property 19, is too large for their ratio: they are
    4.00000E-01 and 1.00000E-01.
MOLDED_PLASTIC -> 3 = .3 => The yield ratios of material %S do not give a closed surface.
MOLDED_PLASTIC -> 1+0, 0 states, 0 of 0 => Subroutine VUMAT for molded plastic materials only supports solid, plane
    stress, and generalized plane strain elements.
MOLDED_PLASTIC -> 13 states, 0 of 0 => Subroutine VUMAT for molded plastic materials requires the specification of 14
    state variables. Check the definition of *DEPVAR in the input file.
MOLDED_PLASTIC -> 0 of 0 => Subroutine VUMAT for molded plastic materials requires the specification of uniaxial
    tension or compression data.
MOLDED_PLASTIC -> 3+3, 21 of 1.0 => The properties of material %S end before its tables do.
THERMOPLASTIC -> 16 = -1 => Coefficients f3 and f5 for the thermoplastic material cannot be negative
THERMOPLASTIC -> 2+1, 0 states, 0 of 0 => Subroutine VUMAT for thermoplastic materials only supports solid, plane
    stress, and generalized plane strain elements.
THERMOPLASTIC -> 13 states, 0 of 0 => Subroutine VUMAT for thermoplastic materials requires the specification of 14
    state variables. Check the definition of *DEPVAR in the input file.
THERMOPLASTIC -> 0 of 0 => Subroutine VUMAT for thermoplastic materials requires the specification of uniaxial tension
    or compression data.
HONEYCOMB -> 18 = 2 => The properties of material %S end before its tables do.
HONEYCOMB -> 12 = 0 => Material %S needs a crush curve for component 11.
HONEYCOMB -> 22 = 0 => The crush curves of material %S must be finite and specified using increasing values of 1 - J.
HONEYCOMB -> 24 = 0 => The strength factors of material %S must be positive, for positive and increasing strain rates.
HONEYCOMB -> 9 = 0 => Property 9 of material %S must be greater than zero.
HONEYCOMB -> 4 = 1 => Property 4 of material %S must be greater than 0.00000E+00 and less than 1.00000E+00: it is
    1.00000E+00.
HONEYCOMB -> 0 of 0 => The honeycomb user material requires the specification of 18 material in the *USER MATERIAL
    option for material %S.
HONEYCOMB -> 0 states, 18 of 0 => The honeycomb user material requires the specification of 1 state variables. Check
    the definition of *DEPVAR for material %S.
HONEYCOMB -> 2 states, 18 of .2 => The honeycomb user material requires the specification of 3 state variables when a
    tensile strain for element deletion is defined in the model. Check the definition of *DEPVAR for material %S.
HONEYCOMB -> 2+1, 0 states, 0 of 0 => The honeycomb user material only supports 3D, plane strain and axisymmetric
    elements.
VISCOUS_FOAM -> 3+1, 4 = 1 => An exponent alpha of material %S, property 2 or 5, is zero.
VISCOUS_FOAM -> 3+1, 3 = -.5 => Beta of a term of material %S, property 3, must be greater than -1/3: it is
    -5.00000E-01.
VISCOUS_FOAM -> 1+1, 0 states, 0 of 0 => The viscous foam user material only supports 3D, plane strain and
    axisymmetric elements.
VISCOUS_FOAM -> 3+1, 5 states, 0 of 0 => The viscous foam user material requires the specification of 6 state
    variables. Check the definition of *DEPVAR in the input file.
VISCOUS_FOAM -> 3+1, 0 of 0 => The viscous foam user material requires the specification of 10 material properties in
    the *USER MATERIAL option for material %S.
RATE_SENSITIVE_FOAM -> 9 = 3 => The properties of material %S end before its tables do.
RATE_SENSITIVE_FOAM -> 11 = -1 => The stress-strain curves of material %S must be finite and begin with zero strain
    and zero stress.
RATE_SENSITIVE_FOAM -> 1 = 0 => Property 1 of material %S must be greater than zero.
RATE_SENSITIVE_FOAM -> 4 = 1.5 => Property 4 of material %S must lie between 0.00000E+00 and 1.00000E+00: it is
    1.50000E+00.
RATE_SENSITIVE_FOAM -> 6 = -1 => Property 6 of material %S must be finite and not less than 0.00000E+00: it is
    -1.00000E+00.
RATE_SENSITIVE_FOAM -> 1 states, 0 of 0 => The rate sensitive foam user material requires the specification of 2 state
    variables. Check the definition of  *DEPVAR in the input file.
RATE_SENSITIVE_FOAM -> 7 states, from 1: 1 0 .1 => The rate sensitive foam user material requires the specification of
    8 state variables when beta damping is specified. Check the definition of *DEPVAR in the input file.
RATE_SENSITIVE_FOAM -> 1+0, 0 states, 0 of 0 => The rate sensitive foam user material only supports 3D, plane strain
    and axisymmetric elements.
FU_CHANG_ISO_FOAM -> 6 = 0 => Material %S needs a stress-strain curve of at least one row for each strain rate.
FU_CHANG_ISO_FOAM -> 12 = -1 => The stress-strain curves of material %S must be specified using increasing strain
    values.
FU_CHANG_ISO_FOAM -> 11 = 2e5 => The stress-strain curves of material %S must be finite and either begin with zero
    strain and zero stress or begin in tension and pass through zero stress at zero strain.
FU_CHANG_ISO_FOAM -> 3+3, 6 states, 0 of 0 => The Fu-Chang isotropic foam user material requires the specification of
    7 state variables. Check the definition of *DEPVAR in the input file.
FU_CHANG_ISO_FOAM -> 3+3, from 1: 4e5 0 1 1 0 2 1 2 1 1 -1 -1 1 1 0 0 => The strain rates of the curves of material %S
    must be positive and increasing.
FU_CHANG_ISO_FOAM -> 3+3, from 1: 4e5 0 1 1 0 2 1 2 2 1 -1 -1 1 1 0 0 => Either all or none of the stress-strain
    curves of one family of material %S must begin in tension.
FU_CHANG_ANISO_FOAM -> 21 = -1, 20 = -1e5 => The stress-strain curves of material %S must be finite and begin with
    zero strain and zero stress.
FU_CHANG_ANISO_FOAM -> 11 states, 0 of 0 => The Fu-Chang anisotropic foam user material requires the specification of
    12 state variables. Check the definition of *DEPVAR in the input file.
FU_CHANG_ANISO_FOAM -> 0 of 0 => The Fu-Chang anisotropic foam user material requires the specification of 11 material
    properties in the *USER MATERIAL option for material %S.)")) {
    Call call = changed("TVK_" + row[0], row[1]);
    EXPECT_EQ(call.run(), "Error: " + call.filled(row[2]) + "|") << row[1];
    EXPECT_TRUE(call.untouched && Call::ended());
  }
}

TEST(UserMaterialChecks, WarningsOfPlasticsInSolids) {
  const std::string
      ratios = "Warning: The orthotropic plasticity option is only supported for elements with plane stress state. "
               "All yield ratios will be assumed to be equal to one.|",
      k = "Warning: The orientation-dependent orthotropic ductile failure criterion is not supported for 3D solid "
          "elements. The values of coefficients k1 and k2 will be ignored.|";
  Call call = changed("TVK_THERMOPLASTIC", "5 = 1.2, 10 = .1");
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
