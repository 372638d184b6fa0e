// The entry of the built-in user materials: a name selects an implementation.
#include "spx.h"
#include "spx/impl/user/frame.h"

#include <array>

namespace sa::user {
namespace {

struct Entry {
  std::string_view key;
  decltype(&SPX_USR_BUILTINVUMAT) implementation;
};

// In the order of comparison; a name matches by its beginning.
constexpr std::array<Entry, 13> kEntries = {{{"TVK_VISCOUS_FOAM", SPX_USR_VISCOUSFOAM},
                                             {"TVK_RATE_SENSITIVE_FOAM", SPX_USR_RATESENSFOAM},
                                             {"TVK_FU_CHANG_ISO_FOAM", SPX_USR_FUCHANGISOFOAM},
                                             {"TVK_FU_CHANG_ANISO_FOAM", SPX_USR_FUCHANGANISOFOAM},
                                             {"TVK_HONEYCOMB", SPX_USR_HONEYCOMB},
                                             {"TVK_SUPER_ELASTIC", SPX_USR_SUPERELASTIC},
                                             {"TVK_THERMOPLASTIC", SPX_USR_THERMOPLASTIC},
                                             {"TVK_MOLDED_PLASTIC", SPX_USR_MOLDEDPLASTIC},
                                             {"TVK_FABRIC", SPX_USR_FABRIC},
                                             {"TVK_PLY_FABRIC", SPX_USR_PLYFABRIC},
                                             {"TVK_JH2", SPX_USR_JH2},
                                             {"TVK_JHB", SPX_USR_JHB},
                                             {"TVK_HJC_CONCRETE", SPX_USR_HJCCONCRETE}}};

// The last letter tells nearly all of them apart without a comparison of texts, of which a short block would notice a dozen.
bool isNamed(std::string_view name, std::string_view key) {
  return name.size() >= key.size() && name[key.size() - 1] == key.back() && name.starts_with(key);
}

} // namespace
} // namespace sa::user

SA_EXPORT void SPX_USR_BUILTINVUMAT SA_USER_PARAMETERS {
  const sa::OwnArithmetic arithmetic;
  const std::string_view name = sa::user::nameOf(materialName, materialNameLength);
  for (const sa::user::Entry& entry : sa::user::kEntries)
    if (sa::user::isNamed(name, entry.key)) return entry.implementation SA_ARGUMENTS_SPX_USR_BUILTINVUMAT;
  sa::user::refuse(SA_USER_BLOCK, "Material %S is not supported as a built-in user material");
}
