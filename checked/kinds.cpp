#include "report.h"

namespace sa::checked {

const char* word(Kind kind) {
  static const char* const kWords[] = {"null pointer",
                                       "unreadable memory",
                                       "unwritable memory",
                                       "misaligned address",
                                       "count",
                                       "code",
                                       "index",
                                       "leading dimension",
                                       "cursor",
                                       "place",
                                       "list out of range",
                                       "list repeats",
                                       "set out of order",
                                       "map out of range",
                                       "overlap",
                                       "mask",
                                       "flag",
                                       "stretch",
                                       "length of text",
                                       "end of text",
                                       "material table",
                                       "output not written",
                                       "input changed",
                                       "written beyond outputs",
                                       "not finite",
                                       "missing routine"};
  return kWords[static_cast<std::size_t>(kind)];
}

} // namespace sa::checked
