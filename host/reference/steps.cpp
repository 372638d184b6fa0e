// The keywords that start steps.
#include "kprC_Step.h"

#define SA_DEFINE_STEP(step, keyword)                                                                                  \
  const char* step::constructorCmd() { return keyword; }

SA_DEFINE_STEP(kprC_StaticStep, "*STATIC")
SA_DEFINE_STEP(kprC_ImplicitDynamicsStep, "*DYNAMIC")
SA_DEFINE_STEP(kprC_SubspaceDynamicsStep, "*DYNAMIC, SUBSPACE")
SA_DEFINE_STEP(kprC_ExplicitDynamicsStep, "*DYNAMIC, EXPLICIT")
SA_DEFINE_STEP(kprC_ViscoStep, "*VISCO")
SA_DEFINE_STEP(kprC_HeatTransferStep, "*HEAT TRANSFER")
SA_DEFINE_STEP(kprC_MassDiffusionStep, "*MASS DIFFUSION")
SA_DEFINE_STEP(kprC_FrequencyStep, "*FREQUENCY")
SA_DEFINE_STEP(kprC_BuckleStep, "*BUCKLE")
SA_DEFINE_STEP(kprC_StaticRiksStep, "*STATIC, RIKS")
SA_DEFINE_STEP(kprC_GeostaticStep, "*GEOSTATIC")
SA_DEFINE_STEP(kprC_SoilsStep, "*SOILS")
SA_DEFINE_STEP(kprC_CoupledTempDisplacementStep, "*COUPLED TEMPERATURE-DISPLACEMENT")
SA_DEFINE_STEP(kprC_TempDisplacementDynamicsStep, "*DYNAMIC TEMPERATURE-DISPLACEMENT, EXPLICIT")
SA_DEFINE_STEP(kprC_CoupledThermalElectricStep, "*COUPLED THERMAL-ELECTRICAL")
SA_DEFINE_STEP(kprC_StaticLinearPerturbationStep, "*STATIC, PERTURBATION")
SA_DEFINE_STEP(kprC_SteadyStateDirectStep, "*STEADY STATE DYNAMICS, DIRECT")
SA_DEFINE_STEP(kprC_ResponseSpectrumStep, "*RESPONSE SPECTRUM")
SA_DEFINE_STEP(kprC_ModalDynamicsStep, "*MODAL DYNAMIC")
SA_DEFINE_STEP(kprC_SteadyStateModalStep, "*STEADY STATE DYNAMICS")
SA_DEFINE_STEP(kprC_RandomResponseStep, "*RANDOM RESPONSE")
SA_DEFINE_STEP(kprC_AnnealStep, "*ANNEAL")
