// The superelastic alloy by the exponential law.
#include "spx/impl/user/superelastic_run.h"

namespace sa::user::alloy {

SA_FEWER_CLONES
static void exponentialClones(const Block& block, const Superelastic& model) { run(block, ExponentialLaw(model)); }

void runExponential(const Block& block, const Superelastic& model) { exponentialClones(block, model); }

} // namespace sa::user::alloy
