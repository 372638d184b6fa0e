// The solver's own vector loops over bricks, between the calls of the library's kernels.
//
// A block is worked on in pieces: what the loops from the coordinates to the stretch, and from the stress to the forces, need of
// a piece stays in the first level of the cache.  The arrays of a piece are rows of one value of each brick, a vector of 512 bits,
// ld = kPieceLength apart, and one piece lies behind the other: (ld, 8, 3) holds the brick fastest, then the node, then the
// direction, as the library's operators take them.
// Arrays that the materials read or write hold a whole block: component k of a brick at k * stride from the first.
#pragma once

#include <cstdint>

namespace sharedanalysis::solver {

// Bricks of a block and of a piece at most.
inline constexpr int kBlockLength = 128, kPieceLength = 8;

// Hourglass modes of the coordinates: sums over the nodes with the signs of pattern k, (ld, 4, 3) with the brick fastest, then the
// pattern, then the direction.
//
// The amplitude of a pattern is the sum of gamma times the coordinates, gamma_k = Gamma_k - sum over X, Y, Z of H0_k B0
// (D. P. Flanagan, T. Belytschko, Int. J. Numer. Meth. Engng 17 (1981) 679).  B0 times the coordinates is F, so the amplitudes
// are h_k - F H0_k and their forces need no gamma: twelve numbers a brick instead of 32.
void hourglassModes(int n, const double* x, double* h);

// F = sum over the nodes of x (x) B0, component (i,j) at 3i + j; and b = F F' in S33 order.
void deformationGradient(int n, int stride, const double* x, const double* B0, double* F, double* b);

// B, vol and hgstiff of SPX_OPE_C3D8ROPER2 to the same bits, without its gamma, and the hourglass modes h of the coordinates.
// False when a brick is masked, has no volume or is far from the size of anything: the operator is to be asked then.
bool brickGradient(int n, const double* x, const double* mask, double* B, double* h, double* vol, double* hgstiff);

struct ViscosityInput {
  int n;
  const double *velocity, *B;     // (ld, 8, 3)
  const double *vol, *hgstiff;    // current volume and 2 V B.B
  const double *mass, *hourglass; // of the brick; stiffness of its hourglass springs
  const double *bound, *bulk, *mask;
  const double* viscosity;  // by which stress follows the rate, Pa s; null without it and without damping
  double linear, quadratic; // coefficients of the bulk viscosity
  double damping;           // of the material, Pa s
  double lastIncrement;     // s, that ends now
};

// Bulk viscosity as a mean stress, its dissipation over the last increment, and the largest stable increment of the bricks
// that take part (infinity when there are none).
// `stress` holds the viscous stress of the increment before on entry; `energy` is summed up.
double viscosityAndIncrement(const ViscosityInput& in, double* stress, double* energy);

// Equivalent rate of the deviatoric deformation, sqrt(2/3 d:d), and the power of the stress on it.
void deviatoricRate(int n, int stride, const double* velocity, const double* B, const double* stress, double* rate,
                    double* power);

struct ForceInput {
  int n, stride;
  const double *h, *B0, *H0;             // hourglass modes; reference gradient and hourglass modes
  const double* F;                       // deformation gradient
  const double *B, *vol, *viscousStress; // current gradient and volume
  const double* stress;                  // Cauchy, S33
  const double *V0, *hourglass, *mask;
};

// Nodal forces of the bricks, (ld, 8, 3).
void nodalForces(const ForceInput& in, double* force);

// Adds them to the records of f, (3, records), whose numbers of the corners are (8, n): brick by brick.
void assemble(int n, const double* force, const int32_t* records, double* f);

// Half of k q.q over the four hourglass patterns and three directions.
void hourglassEnergy(int n, const double* h, const double* H0, const double* F, const double* hourglass,
                     double* energy);

// v += (gravity - f / m) * duration for nodes first .. end - 1; f starts at node fFirst, all are (3, nodes) but the masses.
void kick(int64_t first, int64_t end, const double* f, int64_t fFirst, const double* rMass, const double (&gravity)[3],
          double duration, double* v);

// x += v * duration for nodes first .. end - 1.
void drift(int64_t first, int64_t end, const double* v, double duration, double* x);

} // namespace sharedanalysis::solver
