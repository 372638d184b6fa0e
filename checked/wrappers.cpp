// Every exported routine under its own name.
#include "checked.h"

#pragma GCC visibility push(default)
#include "acd.h"
#include "glo.h"
#include "spx.h"

#include <wrappers.inc>
#pragma GCC visibility pop
