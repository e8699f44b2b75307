// For each CASE a table of attributes that must not compile and, with RIGHT, the nearest one that
// must.
#include "Zel/Types/AttributeTable.h"

#ifdef RIGHT
#define WRONG_OR_RIGHT(wrong, right) right
#else
#define WRONG_OR_RIGHT(wrong, right) wrong
#endif

struct Record {
  Halvo::U32 id() const { return 1; }
  Halvo::U32 hits() const { return hits_; }
  void hitsIs(Halvo::U32 hits) { hits_ = hits; }
  bool isLarge(const Halvo::U32& than) const { return hits_ > than; }

 private:
  Halvo::U32 hits_ = 0;
};
const Zel::TypeDescriptor& typeDescriptor(Zel::TypeTag<Record>) noexcept;

struct Undescribed {};
struct Other {
  Undescribed what() const { return {}; }
};
const Zel::TypeDescriptor& typeDescriptor(Zel::TypeTag<Other>) noexcept;

using Class = Record;
#if CASE == 1
constexpr auto table =
    Zel::attributeTable<2, 3>(WRONG_OR_RIGHT(ZEL_KEY(ident), ZEL_KEY(id)), ZEL_READ_WRITE(hits));
#elif CASE == 2
constexpr auto table = Zel::attributeTable<2, 3>(
    ZEL_KEY(id), WRONG_OR_RIGHT(ZEL_READ_WRITE(id), ZEL_READ_WRITE(hits)));
#elif CASE == 3
constexpr auto table =
    Zel::attributeTable<2, WRONG_OR_RIGHT(4, 3)>(ZEL_KEY(id), ZEL_READ_WRITE(hits));
#elif CASE == 4
constexpr auto table =
    Zel::attributeTable<2, 2>(WRONG_OR_RIGHT(ZEL_OPERATION(isLrge), ZEL_OPERATION(isLarge)));
#elif CASE == 5
constexpr auto table =
    Zel::attributeTable<2, 2>(WRONG_OR_RIGHT(ZEL_QUEUE(hits), ZEL_READ_ONLY(hits)));
#elif CASE == 6
namespace other {
using Class = WRONG_OR_RIGHT(Other, Record);
constexpr auto table = Zel::attributeTable<2, 2>(WRONG_OR_RIGHT(ZEL_KEY(what), ZEL_KEY(id)));
}  // namespace other
#endif
