// Where every exported routine of the checking library leads.
#pragma once

namespace sa::checked {

// number: of the routine in the table.  result: where a routine with a result puts it.
void run(unsigned number, const void* const* arguments, void* result, const void* place);

} // namespace sa::checked
