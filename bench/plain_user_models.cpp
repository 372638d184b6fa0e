#include "plain_user.h"

namespace plain {

std::vector<UserRow> nativeUserRows() { return userRows(); }

} // namespace plain
