// The codes of diagnostics that the reference host knows: constants for solvers and the table behind dia_MetadataTable.
//
// One line a code.  Errors have bit 30 set; family, group and number make the other bits as dia_Codes.h has them.  A code with
// several texts has one for each variation: code + 0, code + 1 and so on.
#pragma once

#include <cstdint>

// clang-format off
// X(name, Error or Warning, family, group, number, ints, reals, strings, nodes, elements, status channel, texts...)
#define SA_HOST_GENERAL_CODES(X) \
  /* general: the program and its user */ \
  X(InternalError,            Error,   1, 1,  1,  0, 0, 1, 0, 0,  true,  "An internal error has occurred") \
  X(Killed,                   Error,   1, 1,  2,  0, 0, 0, 0, 0,  true,  "The analysis was ended by a kill request") \
  X(UserError,                Error,   1, 2,  1,  3, 3, 1, 0, 0,  true,  "%S (%I, %I, %I; %R, %R, %R)", "%S") \
  X(UserWarning,              Warning, 1, 2,  2,  3, 3, 1, 0, 0,  true,  "%S (%I, %I, %I; %R, %R, %R)", "%S") \
  /* general: time integration */ \
  X(StableIncrementCollapsed, Error,   1, 3,  1,  0, 2, 0, 0, 1,  true,  "The stable time increment %R fell below %R; element %E governs it") \
  X(NotFinite,                Error,   1, 3,  2,  0, 0, 1, 1, 0,  true,  "The %S of node %N is not finite") \
  X(EnergyErrorLarge,         Warning, 1, 3,  3,  0, 2, 0, 0, 0,  true,  "The energy error is %R of the total energy, more than %R") \
  X(TimeIncrementTooSmall,    Error,   1, 3,  4,  0, 2, 0, 0, 0,  true,  "The time increment required, %R, is less than the minimum %R") \
  X(TooManyAttempts,          Error,   1, 3,  5,  1, 0, 0, 0, 0,  true,  "The increment did not converge in %I attempts") \
  X(TooManyIncrements,        Error,   1, 3,  6,  1, 0, 0, 0, 0,  true,  "The step is not complete after %I increments") \
  /* general: equations */ \
  X(ZeroPivot,                Warning, 1, 4,  1,  1, 1, 0, 1, 0,  false, "Zero pivot at node %N, degree of freedom %I: %R", "Numerical singularity at node %N, degree of freedom %I: ratio %R", "Overconstraint at node %N, degree of freedom %I: %R") \
  X(NegativeEigenvalues,      Warning, 1, 4,  2,  1, 0, 0, 0, 0,  false, "The system matrix has %I negative eigenvalues") \
  X(ResidualTooLarge,         Warning, 1, 4,  3,  1, 2, 0, 1, 0,  false, "The residual at node %N, degree of freedom %I, is %R; %R is allowed") \
  X(NotConverged,             Error,   1, 4,  4,  1, 1, 0, 0, 0,  true,  "Equilibrium was not reached in %I iterations; the largest residual is %R") \
  X(MassMissing,              Error,   1, 4,  5,  0, 0, 0, 1, 0,  true,  "Node %N has no mass") \
  X(RigidBodyInertia,         Error,   1, 4,  6,  0, 0, 1, 1, 0,  true,  "Rigid body %S with reference node %N has no mass", "Rigid body %S with reference node %N has no rotary inertia") \
  X(RigidBodyConstraint,      Warning, 1, 4,  7,  0, 0, 1, 1, 0,  false, "Node %N of rigid body %S has a boundary condition that the motion of the body overrides") \
  /* elements */ \
  X(ExcessiveDistortion,      Error,   2, 1,  1,  0, 0, 0, 0, 1,  true,  "Element %E is distorted excessively") \
  X(ExcessiveRotation,        Error,   2, 1,  2,  0, 0, 0, 0, 1,  true,  "Element %E rotates excessively in one increment") \
  X(NegativeVolumeAtStart,    Error,   2, 1,  3,  0, 1, 0, 0, 1,  true,  "The volume of element %E is %R at the start") \
  X(DistortedAtStart,         Warning, 2, 1,  4,  0, 2, 0, 0, 1,  false, "Element %E is distorted at the start: angle %R, aspect ratio %R") \
  X(WaveSpeedExceeded,        Warning, 2, 1,  5,  0, 1, 0, 0, 1,  false, "The deformation of element %E is %R times as fast as the wave speed of its material") \
  X(HourglassEnergyLarge,     Warning, 2, 1,  6,  0, 1, 0, 0, 0,  false, "The hourglass energy is %R of the internal energy") \
  X(ElementDeleted,           Warning, 2, 1,  7,  0, 0, 0, 0, 1,  false, "Element %E has failed and was removed") \
  X(MaterialNotConverged,     Warning, 2, 2,  1,  1, 0, 1, 0, 1,  false, "The integration of material %S did not converge at element %E, point %I") \
  X(MaterialUnstable,         Warning, 2, 2,  2,  0, 2, 1, 0, 0,  false, "Material %S is unstable for strains from %R to %R")

#define SA_HOST_CONTACT_CODES(X) \
  X(InitialOverclosure,       Warning, 3, 1,  1,  0, 1, 2, 1, 0,  false, "Node %N of surface %S is inside surface %S by %R at the start") \
  X(Overclosure,              Warning, 3, 1,  2,  0, 1, 2, 1, 0,  false, "Node %N of surface %S is inside surface %S by %R", "Node %N of surface %S is inside surface %S by %R, more than the tolerance") \
  X(OverclosureUnresolved,    Error,   3, 1,  3,  0, 1, 2, 1, 0,  true,  "Node %N of surface %S cannot be moved out of surface %S: overclosure %R") \
  X(SeparationForce,          Warning, 3, 1,  4,  0, 1, 2, 1, 0,  false, "Node %N of surface %S is held to surface %S by the force %R") \
  X(ContactChanges,           Warning, 3, 1,  5,  2, 0, 0, 0, 0,  false, "%I points have closed and %I have opened") \
  X(SlideDistance,            Warning, 3, 1,  6,  0, 2, 1, 1, 0,  false, "Node %N of surface %S has slid by %R; %R was expected") \
  X(RigidSurfaceNormal,       Warning, 3, 1,  7,  0, 0, 1, 1, 0,  false, "Node %N is behind rigid surface %S")
// clang-format on

namespace sharedanalysis::host::codes {

enum Severity : int32_t { Warning = 0, Error = 0x40000000 };

constexpr int32_t codeOf(Severity severity, int32_t family, int32_t group, int32_t number) {
  return severity | family << 24 | group << 16 | number << 5;
}

#define SA_HOST_CODE(name, severity, family, group, number, ...)                                                       \
  constexpr int32_t name = codeOf(severity, family, group, number);
SA_HOST_GENERAL_CODES(SA_HOST_CODE)
SA_HOST_CONTACT_CODES(SA_HOST_CODE)
#undef SA_HOST_CODE

} // namespace sharedanalysis::host::codes
