// How the lines of a table of materials become routines: a list of constants as parameters, as arguments and as the values of
// point i.
#pragma once

#define SA_AS_PARAMETER(c) const double *c,
#define SA_AS_VALUE(c) c[i],
#define SA_MODEL(Model, CONSTANTS) [=](int i) SA_POINT { return Model{CONSTANTS(SA_AS_VALUE)}; }
