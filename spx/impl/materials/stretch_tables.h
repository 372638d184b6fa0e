// Constants of rubber and foam in the principal stretches, as lists for the tables of kernels and as terms.
#pragma once

#include "spx/impl/materials/stretch_terms.h"

#define SA_RUBBER3(X) X(mu1) X(alpha1) X(mu2) X(alpha2) X(mu3) X(alpha3)
#define SA_RUBBER6(X) SA_RUBBER3(X) X(mu4) X(alpha4) X(mu5) X(alpha5) X(mu6) X(alpha6)
#define SA_RUBBER3_VOLUME(X) SA_RUBBER3(X) X(rD1) X(rD2) X(rD3)
#define SA_RUBBER6_VOLUME(X) SA_RUBBER6(X) X(rD1) X(rD2) X(rD3) X(rD4) X(rD5) X(rD6)
#define SA_FOAM3(X) SA_RUBBER3(X) X(beta1) X(beta2) X(beta3)
#define SA_FOAM6(X) SA_RUBBER6(X) X(beta1) X(beta2) X(beta3) X(beta4) X(beta5) X(beta6)

#define SA_MU3                                                                                                         \
  {mu1, mu2, mu3}, { alpha1, alpha2, alpha3 }
#define SA_MU6                                                                                                         \
  {mu1, mu2, mu3, mu4, mu5, mu6}, { alpha1, alpha2, alpha3, alpha4, alpha5, alpha6 }
#define SA_RUBBER3_TERMS (RubberTerms<3>{SA_MU3})
#define SA_RUBBER6_TERMS (RubberTerms<6>{SA_MU6})
#define SA_RUBBER3_SOLID (RubberTerms<3>{SA_MU3, {rD1, rD2, rD3}})
#define SA_RUBBER6_SOLID (RubberTerms<6>{SA_MU6, {rD1, rD2, rD3, rD4, rD5, rD6}})
#define SA_FOAM3_TERMS (FoamTerms<3>{SA_MU3, {beta1, beta2, beta3}})
#define SA_FOAM6_TERMS (FoamTerms<6>{SA_MU6, {beta1, beta2, beta3, beta4, beta5, beta6}})
