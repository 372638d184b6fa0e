// The step classes of the host, of which the library asks the keyword.
#pragma once

#include "host_service.h"

// X(class) for each step class.
#define SA_HOST_STEPS(X)                                                                                               \
  X(kprC_StaticStep)                                                                                                   \
  X(kprC_ImplicitDynamicsStep)                                                                                         \
  X(kprC_SubspaceDynamicsStep)                                                                                         \
  X(kprC_ExplicitDynamicsStep)                                                                                         \
  X(kprC_ViscoStep)                                                                                                    \
  X(kprC_HeatTransferStep)                                                                                             \
  X(kprC_MassDiffusionStep)                                                                                            \
  X(kprC_FrequencyStep)                                                                                                \
  X(kprC_BuckleStep)                                                                                                   \
  X(kprC_StaticRiksStep)                                                                                               \
  X(kprC_GeostaticStep)                                                                                                \
  X(kprC_SoilsStep)                                                                                                    \
  X(kprC_CoupledTempDisplacementStep)                                                                                  \
  X(kprC_TempDisplacementDynamicsStep)                                                                                 \
  X(kprC_CoupledThermalElectricStep)                                                                                   \
  X(kprC_StaticLinearPerturbationStep)                                                                                 \
  X(kprC_SteadyStateDirectStep)                                                                                        \
  X(kprC_ResponseSpectrumStep)                                                                                         \
  X(kprC_ModalDynamicsStep)                                                                                            \
  X(kprC_SteadyStateModalStep)                                                                                         \
  X(kprC_RandomResponseStep)                                                                                           \
  X(kprC_AnnealStep)

// constructorCmd(): the keyword that starts such a step, zero-terminated and valid as long as the process.  Any thread.
#define SA_HOST_DECLARE_STEP(step)                                                                                     \
  class SA_HOST_SERVICE step {                                                                                         \
  public:                                                                                                              \
    static const char* constructorCmd();                                                                               \
  };
SA_HOST_STEPS(SA_HOST_DECLARE_STEP)
#undef SA_HOST_DECLARE_STEP
